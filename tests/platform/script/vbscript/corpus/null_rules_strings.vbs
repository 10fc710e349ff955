' The string functions' answers to Null, and their error numbers for wrong
' arguments. Expected values from Wine's VBScript tests (api.vbs), which run
' against Windows' VBScript.
' A Null text gives Null; a Null count, start or compare mode raises 94.
T "Len(Null)"
T "UCase(Null)"
T "Right(Null, 1)"
T "Left(Null, 1)"
T "InStr(""abcd"", Null)"
T "InStr(2, Null, ""abcd"")"
T "InStr(Null, ""abcd"", ""abcd"", 0)"
T "InStr(2, ""abcd"", ""abcd"", Null)"
T "Right(""test"", Null)"
T "Space(Null)"
T "CStr(Null)"
T "Asc(Null)"
' InStrRev differs from InStr: a Null text raises 94 too
T "InStrRev(""abcd"", Null, 2, 0)"
T "InStrRev(Null, ""abcd"", 2, 0)"
T "InStrRev(""abcd"", ""abcd"", Null, 0)"
' Mid: a Null length raises 94 before the start is checked; a bad start
' raises 5 even for a Null text
T "Mid(""test"", 0, Null)"
T "Mid(""test"", ""a"", Null)"
T "Mid(""test"", Null, -1)"
T "Mid(""test"", ""a"", 1)"
T "Mid(Null, -1, -1)"
T "Mid(""test"", Empty, 1)"
T "Mid(Null, 1, 1)"
' Each argument of Replace and Split: Null raises 94
T "Replace(Null, ""x"", ""y"", 1, 1, 0)"
T "Replace(""xx"", ""x"", ""y"", 1, Null, 0)"
T "Replace(""xx"", ""x"", ""y"", 1, 1, 8)"
T "Replace(""xx"", ""x"", ""y"", 0)"
T "Split(Null, ""-"", -1, 0)"
T "Split(""a-b"", ""-"", -1, Null)"
T "Split(""a-b"", ""-"", -42, 0)"
' Ranges: 5
T "Right(Null, -1)"
T "InStr(-20, ""abcd"", ""abcd"", 1)"
T "InStrRev(""abcd"", ""abcd"", 2, 10)"
T "Asc("""")"
T "Asc(Empty)"
T "Chr(256)"
T "Chr(-32769)"
T "String(3, """")"
T "Space(""-1"")"
T "StrComp(""a"", ""a"", 0, 1)"
' Fractions round half to even, and the compare mode too
T "InStr(2.6, ""abcd"", ""bc"")"
T "InStr(3, ""abcdefgh"", ""FG"", 1.4)"
T "InStrRev(""abcd"", ""bc"", 2.6)"
T "Space(4.5) & ""|"""
T "Left(""123456"", 2.5)"
T "Chr(119.5)"
' Join: Empty elements join as "", a Null element raises 13, as does a list of
' two dimensions
T "Join(Array(1, Empty), ""-"")"
T "Join(Array(1, Null))"
T "Join(Array(Array(1, 2), Array(3, 4)))"
T "Join(Array(), Null)"
