Function Divide(a, b)
  Divide = a / b
End Function

On Error Resume Next
x = Divide(1, 0)
Print Err.Number, Err.Description, Err.Source
Err.Clear
Print Err.Number, "[" & Err.Description & "]"
y = CLng("abc")
Print Err.Number, Err.Description
Err.Raise 1000, "MeineQuelle", "Mein Fehler"
Print Err.Number, Err.Source, Err.Description
Err.Raise vbObjectError + 5
Print Err.Number - vbObjectError, Err.Description
If 1 / 0 = 5 Then
  Print "Then nach Fehler in der Bedingung"
End If
On Error GoTo 0
Print Err.Number
Sub Inner
  Dim z : z = 1 / 0
  Print "nie"
End Sub
Sub Outer
  On Error Resume Next
  Inner
  Print "Outer weiter", Err.Number
End Sub
Outer
Dim o
Print o.Name
