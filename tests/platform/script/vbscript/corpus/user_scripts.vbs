' What users write in conversion scripts
Option Explicit

' String clean-up
Function CleanName(s)
  Dim t
  t = Trim(Replace(s, "  ", " "))
  If Len(t) = 0 Then
    CleanName = Null
  Else
    CleanName = UCase(Left(t, 1)) & LCase(Mid(t, 2))
  End If
End Function
Print CleanName("  mÜLLER  "), IsNull(CleanName("   ")), CleanName("a")

' Date conversion from text
Function ToIsoDate(text)
  Dim d
  If IsDate(text) Then
    d = CDate(text)
    ToIsoDate = Year(d) & "-" & Right("0" & Month(d), 2) & "-" & Right("0" & Day(d), 2)
  Else
    ToIsoDate = ""
  End If
End Function
Print ToIsoDate("24.12.2023"), "[" & ToIsoDate("kein Datum") & "]"
Print DateAdd("d", 1, #12/31/2023#) = #1/1/2024#, DateDiff("d", #1/1/2024#, #3/1/2024#)

' Lookups through a dictionary
Dim countries
Set countries = CreateObject("Scripting.Dictionary")
countries.Add "DE", "Deutschland"
countries.Add "AT", "Österreich"
countries("CH") = "Schweiz"
Function Country(code)
  If countries.Exists(UCase(code)) Then
    Country = countries(UCase(code))
  Else
    Country = "unbekannt"
  End If
End Function
Print Country("de"), Country("ch"), Country("xx"), countries.Count
Dim key, list
For Each key In countries.Keys
  list = list & key & "=" & countries.Item(key) & ";"
Next
Print list

' A failing call inside On Error Resume Next
Function Risky(x)
  Risky = 100 / x
End Function
Function Safe(x)
  On Error Resume Next
  Safe = Risky(x)
  If Err.Number <> 0 Then
    Safe = "Fehler " & Err.Number & ": " & Err.Description
    Err.Clear
  End If
End Function
Print Safe(4), Safe(0)

' Numbers as text, the German way
Dim amount : amount = 1234.5
Print CStr(amount), amount & " EUR", CDbl("2,5") * 2
Print FormatNumber(amount, 2)
