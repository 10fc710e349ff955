' Subtypes of constants and literals, and operator precedence, as Windows'
' VBScript gives them
T "VarType(vbOKOnly)"
T "VarType(vbSunday)"
T "VarType(vbMsgBoxHelpButton)"
T "VarType(vbMsgBoxSetForeground)"
T "VarType(vbObjectError)"
T "VarType(&h10)"
T "VarType(&h10&)"
T "&hFFFF"
T "&hFFFF&"
T "VarType(&hFFFF&)"
T "&h7FFF&"
' With the "&", 32 bits that fit an Integer are one (Wine's lang.vbs, run
' against Windows: VT_I2)
T "&hFFFFFFFF&"
T "&hFFFFFFFE&"
T "&o17"
' Round keeps a Boolean (Wine's api.vbs, run against Windows: VT_BOOL)
T "Round(True)"
T "CByte(True)"
T "CByte(False)"
T "CBool(""#TRUE#"")"
T "CBool(""#false#"")"
T "-3 ^ 2"
T "-2 ^ 3 ^ 2"
T "2 ^ -1"
T "- - 2 ^ 2"
Dim hi
hi = "!"
Print "x" &hi
T "CDate(""1"")"
T "CSng(0.001 * 0.001) = 0.000001"
T "CSng(1) / 3"
