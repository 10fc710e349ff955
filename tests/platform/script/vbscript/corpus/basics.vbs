' Statements and separators
Dim a, b : a = 1 : b = 2
Print a + b
Rem a comment
x = "lang" & _
    "e Zeile"
Print x
If a < b Then Print "kleiner" Else Print "größer"
If a > b Then
  Print "nein"
ElseIf a = 1 Then
  Print "elseif"
Else
  Print "else"
End If
Print &HFF, &HFFFF, &H10000, &O17, &17
Print 10 \ 3, 10 Mod 3, -7 \ 2, -7 Mod 2, 2 ^ 10, -2 ^ 2
Print 1 + 2 * 3, (1 + 2) * 3, 7 / 2
Print "a" + "b", "1" + 2, 1 & 2
Print TypeName(32767), TypeName(32768), TypeName(2147483648), TypeName(1.5)
Print TypeName(32767 + 1), TypeName(2147483647 + 1)
Print True And False, True Or False, True Xor True, Not True, 12 And 10, 12 Or 3
Print False Eqv False, True Imp False, Not 0
Print Null & "x", IsNull(Null + 1), IsNull(Null And True), Null And False, Null Or True
Print Empty + 1, Empty & "e", TypeName(Empty + Empty)
Print 1 = 1.0, "a" < "b", "a" = "A", 2 > 10
Print IsNull(Null = 1), Empty = 0, Empty = ""
Print #1/2/2003# = DateSerial(2003, 1, 2)
