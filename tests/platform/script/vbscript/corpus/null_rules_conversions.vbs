' The conversions' answers to Null and to texts that are no numbers, and the
' limits where they overflow. Expected values from Wine's VBScript tests
' (api.vbs), which run against Windows' VBScript.
T "CInt(Null)"
T "CDate(Null)"
T "CBool(Null)"
T "CInt("""")"
T "CBool("""")"
T "CDbl(""TRUE"")"
T "CLng(""#TRue#"")"
T "CByte(""-1"")"
T "CByte(""258"")"
T "CInt(32767.49)"
T "CInt(32767.5)"
T "CInt(-32768.5)"
T "CInt(-32768.51)"
T "CCur(0.000149)"
' Hex and Oct: Null gives Null, a text that is no number 13, beyond Long 6;
' negatives that fit an Integer are shown in 16 bits
T "Hex(Null)"
T "Hex(""test"")"
T "Hex(2147483647.5)"
T "Hex(-1)"
T "Hex(-32768)"
T "Hex(-2147483647.5)"
T "Oct(Null)"
T "Oct(-32768)"
T "Oct(-2147483648.51)"
' The bounds of no array: 13, Null included
T "LBound(Null)"
T "UBound(Empty)"
T "IsNumeric(Null)"
' The Boolean texts of Write # count as Booleans wherever a Boolean is
' expected (Wine's lang.vbs: If "#TRUE#" takes the Then branch)
If "#TRUE#" Then Print "If ""#TRUE#"": Then"
If "#false#" Then Print "Then" Else Print "If ""#false#"": Else"
' Not negates such a text as a Boolean (lang.vbs: Not "#FALSE#" is True); a
' text that reads as a number stays a number, any other is 13
T "Not ""#FALSE#"""
T "Not ""Wahr"""
T "Not ""1"""
T "Not ""abc"""
