' Forms Windows' VBScript accepts that a stricter reading would refuse
Sub OneLine() Print "eine Zeile" End Sub
OneLine

Sub EndOnLastLine()
  Print "Ende auf der letzten Zeile" End Sub
EndOnLastLine

Class Narrow
  Dim x End Class
Dim n
Set n = New Narrow
n.x = 5
Print "Klasse", n.x

If False Then
  Function Hidden()
    Hidden = "definiert, obwohl nie ausgeführt"
  End Function
End If
Print Hidden()

Function Twice()
  Twice = "erste"
End Function
Function Twice()
  Twice = "zweite"
End Function
Print Twice()

Function Numbers()
  Numbers = Array(10, 20, 30)
End Function
Dim y
y = (Numbers)(1)
Print "Klammern", y

Dim Property
Property = "Property als Name"
Print Property
