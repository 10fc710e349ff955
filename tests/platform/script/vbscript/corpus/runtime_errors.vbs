' The run-time errors a script meets, with their numbers and texts
On Error Resume Next
Sub Try(code)
  On Error Resume Next
  Execute code
  Print Err.Number & " " & Err.Description
End Sub
Class Empty1
End Class
Dim o, n, a(1)
Try "n = ""abc"" * 2"
Try "Set o = 5"
Try "o.Name = 1"
Try "Set o = Nothing : o.Name = 1"
Try "Set o = New Empty1 : n = o.Missing"
Try "n = a(2)"
Try "n = Left()"
Try "n = Unbekannt(1)"
Try "Set o = New NoSuchClass"
Try "For Each n In 5 : Next"
Try "n = CLng(Null)"
Try "n = 1 / 0"
Try "n = 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767 * 32767"
Try "Err.Raise 6"
Try "n = CreateObject(""Keine.Klasse"")"
Try "x = 1 +"
Try "Option Explicit : Print undefiniert"
Try "Dim s : s = Space(2) : s(1) = 2"
Try "Err.Raise 9999"
