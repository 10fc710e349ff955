' The math functions' answers to Null and the subtypes they return. Expected
' values from Wine's VBScript tests (api.vbs), which run against Windows'
' VBScript.
' Null: Abs, Fix and Int give Null, Sgn raises 94
T "Abs(Null)"
T "Fix(Null)"
T "Int(Null)"
T "Sgn(Null)"
' Subtypes: Booleans become Integers, except that Round keeps them
T "Abs(True)"
T "Fix(True)"
T "Int(True)"
T "Round(True)"
T "Round(False)"
T "Sgn(-32769)"
T "Abs(-32769)"
T "Abs(CByte(1))"
T "Abs(""-1"")"
T "Int(CCur(-0.99))"
T "Round(""2"")"
' Ranges: 5
T "Sqr(-2)"
T "Sqr(True)"
T "Log(0)"
T "Log(True)"
T "RGB(-1, 30, 59)"
T "RGB(1, 256, 273)"
T "Abs(""strings"")"
