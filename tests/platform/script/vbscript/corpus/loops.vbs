Dim i, s
s = ""
For i = 1 To 5 : s = s & i : Next
Print s, i
s = ""
For i = 10 To 1 Step -3 : s = s & i & " " : Next
Print s
s = ""
For i = 0 To 1 Step 0.25 : s = s & i & ";" : Next
Print s
For i = 1 To 0 : Print "nie" : Next
For i = 1 To 10
  If i = 3 Then Exit For
Next
Print i
i = 0
Do While i < 3 : i = i + 1 : Loop
Print i
Do Until i = 0 : i = i - 1 : Loop
Print i
Do : i = i + 1 : Loop While i < 5
Print i
Do : i = i + 1 : Loop Until i >= 7
Print i
Do
  i = i + 1
  If i > 9 Then Exit Do
Loop
Print i
While i > 0 : i = i - 4 : Wend
Print i
Dim a : a = Array("x", "y", "z") : s = ""
For Each e In a : s = s & e : Next
Print s
Dim m(1, 2)
m(0, 0) = "a" : m(1, 0) = "b" : m(0, 1) = "c" : m(1, 2) = "f"
s = ""
For Each e In m : s = s & "[" & e & "]" : Next
Print s
Select Case "b"
  Case "a" : Print "A"
  Case "x", "b" : Print "B"
  Case Else : Print "sonst"
End Select
Select Case 7
  Case 1, 2
    Print "klein"
  Case Else
    Print "anders"
End Select
Select Case Null
  Case Null : Print "Null passt"
  Case Else : Print "Null passt nie"
End Select
