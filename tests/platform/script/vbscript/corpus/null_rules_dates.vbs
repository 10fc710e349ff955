' The date and format functions' answers to Null. Expected values from Wine's
' VBScript tests (api.vbs), which run against Windows' VBScript.
' A Null date gives Null ...
T "Year(Null)"
T "Weekday(Null, vbSunday)"
T "DateAdd(""q"", 1, Null)"
' ... a Null part, interval or switch raises 94 ...
T "DateSerial(2000, Null, 1)"
T "TimeSerial(10, 1, Null)"
T "DateAdd(Null, 1, #1/1/2000#)"
T "DateAdd(""q"", Null, #1/1/2000#)"
T "Weekday(#1/1/2000#, Null)"
T "Weekday(Null, Null)"
T "MonthName(Null)"
T "MonthName(""a"", Null)"
' ... and a bad first day of the week is checked before a Null date
T "Weekday(Null, -1)"
T "Weekday(Null, ""a"")"
' The Format functions take no Null value (13), nor Null switches (94)
T "FormatNumber(Null)"
T "FormatCurrency(Null)"
T "FormatPercent(Null)"
T "FormatDateTime(Null)"
T "FormatNumber(0.1, 0, 0, 0, Null)"
T "FormatCurrency(1000, Null)"
T "FormatDateTime(0.1, Null)"
' Ranges: 5
T "DateSerial(10000, 1, 1)"
T "DateAdd(""k"", 1, #1/1/2000#)"
T "Weekday(#1/1/2000#, 10)"
' Two-digit years, and parts beyond their range carried over
T "DateSerial(50, 2, 1)"
T "DateSerial(2000, 14, 2)"
T "TimeSerial(50, 2, 1)"
T "DateAdd(""ww"", -1, #1/1/2000#)"
T "DateAdd(""y"", 1, #12/31/2000#)"
