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

' (f)(x) calls f with x, by reference; ((x)) passes a copy (Wine's lang.vbs, run
' against Windows: y = (seta0)(x), Call (((seta0))) ((x)))
Function First(a)
  First = a(0)
  a(0) = "geändert"
End Function
Dim y, z
z = Array("erste")
y = (First)(z)
Print "Klammern", y, z(0)
z = Array("erste")
Call (((First))) ((z))
Print z(0)
Call (((First))) (z)
Print z(0)
y = ((z))(0)
Print y

Dim Property
Property = "Property als Name"
Print Property
