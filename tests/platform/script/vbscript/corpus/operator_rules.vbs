' Operators on mixed subtypes, Null and Empty, their precedence and literals
Sub T(code)
  On Error Resume Next
  Dim v
  v = Eval(code)
  If Err.Number <> 0 Then
    Print code, "->", "Fehler", Err.Number, Err.Description
  ElseIf IsArray(v) Then
    Print code, "->", "(" & Join(v, "|") & ")"
  Else
    Print code, "->", TypeName(v), "[" & v & "]"
  End If
End Sub
T "Null + 1"
T "Null & ""a"""
T "Empty + 1"
T """1"" + 1"
T """a"" + 1"
T """1"" + ""1"""
T "5 \ 2"
T "-7 \ 2"
T "-7 Mod 3"
T "5.5 Mod 2"
T "2 ^ 10"
T "2 ^ -1"
T "Null = Null"
T "Empty = 0"
T "Empty = """""
T "True And Null"
T "False And Null"
T "True Or Null"
T "Not Null"
T "1 Eqv 1"
T "True Imp Null"
T """abc"" < ""abd"""
T "1 / 0"
T "0 / 0"
T "5 \ 0"
T "5 Mod 0"
T "32767 + 1"
T "TypeName(32767 + 1)"
T "TypeName(2147483647 + 1)"
T "&HFFFF"
T "&H8000&"
T "TypeName(&HFFFF&)"
T "&O17"
T "-2 ^ 2"
T "1 + 2 * 3 ^ 2"
T "2 & 3 + 4"
T "Not 1 = 2"
T "#31.12.2024#"
