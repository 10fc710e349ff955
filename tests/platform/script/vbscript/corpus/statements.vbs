Const Greeting = "Hallo", Limit = -3
Public shared : shared = "öffentlich"
Private hidden : hidden = "privat"
Let x = 5 : Rem comment after a colon
Print Greeting, Limit, shared, hidden, x
If x = 5 Then Print "a" : Print "b" Else Print "c" : Print "d"
If x <> 5 Then Print "nie" Else Print "sonst" : Print "auch"
Print vbCrLf = Chr(13) & Chr(10), Len(vbTab), vbTextCompare, vbString, vbYesNo, vbObjectError
Print Eval("Greeting & "" Welt"""), Eval("x * 2 = 10")
Execute "x = x + 1 : Print ""ausgeführt"", x"
Function Add(a, b) : Add = a + b : End Function
Dim f : Set f = GetRef("Add")
Print f(2, 3)
Dim i, j, s
For i = 1 To 3
  j = 0
  Do
    j = j + 1
    While True
      Exit Do
    Wend
  Loop
  s = s & i & j
Next
Print s
Dim d : Set d = CreateObject("Scripting.Dictionary")
With d
  .Add "k", "v"
  .Item("n") = 1
  With CreateObject("Scripting.Dictionary")
    .Add "innen", 1
    Print .Count, d.Count
  End With
  Print .Count, .Item("k"), d("n")
End With
Dim fixed(1) : fixed(0) = "x" : Erase fixed : Print UBound(fixed), IsEmpty(fixed(0))
Print Call_It
Function Call_It : Call_It = "ohne Klammern gerufen" : End Function
Sub Show(a, b)
  Print a & "|" & b
End Sub
Show "eins", _
     "zwei"
Call Show("drei", "vier")
Show ("fünf"), "sechs"
Print Len("äöü"), Mid("Straße", 5, 2), UCase("straße")
Print #2024-02-29#, TypeName(#10:30:00 PM#), Hour(#10:30:00 PM#)
Print 5 Mod 0
