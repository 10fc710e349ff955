' Built-ins called as statements, and Randomize used as a value. Expected
' numbers from Wine's VBScript tests (api.vbs), which run against Windows'
' VBScript: the conversions CByte, CCur, CDate, CDbl, CInt, CLng and CSng
' raise 458 once they have converted; their own errors come first; other
' functions (Abs, Right, Chr) run as statements without complaint.
Sub Try(code)
  On Error Resume Next
  Execute code
  Print code, "->", Err.Number
End Sub
Try "Call CInt(1)"
Try "CInt 1"
Try "Call CByte(1)"
Try "Call CCur(""-1"")"
Try "Call CDate(1)"
Try "Call CDbl(1)"
Try "Call CLng(1)"
Try "Call CSng(1)"
Try "Call CInt(32767.5)"
Try "Call CByte("""")"
Try "Call CDate(Null)"
Try "Call CInt()"
Try "Call Abs(-4)"
Try "Call Right(Null, 0)"
Try "Call Chr(65)"
Try "Call Sqr(-2)"
' As a value they convert
Try "x = CInt(1)"
Try "Print CLng(""7"") + 1"
' Randomize is a statement: its value raises 13
Try "x = Randomize(0)"
Try "Randomize 5"
Try "Randomize"
