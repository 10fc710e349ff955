' On Error Resume Next with an error in a block's header: the statement goes on
' into the block
On Error Resume Next
Dim n, x
If 1 / 0 Then
  Print "If: Then-Zweig", Err.Number
Else
  Print "If: Else-Zweig"
End If
Err.Clear
n = 0
Do While 1 / 0
  n = n + 1
  Print "Do While: Schleife", n, Err.Number
  If n = 2 Then Exit Do
Loop
Err.Clear
n = 0
Do
  n = n + 1
Loop While 1 / 0
Print "Loop While: nach", n, Err.Number
Err.Clear
For Each x In Empty
  Print "For Each In Empty: Rumpf", Err.Number
Next
Err.Clear
For n = 1 To 1 / 0
  Print "For: Rumpf", Err.Number
Next
Err.Clear
Select Case 1 / 0
  Case 1
    Print "Select: erster Case", Err.Number
  Case Else
    Print "Select: Case Else"
End Select
