' The Err object as Windows' VBScript fills it, and errors raised at run time
' that a stricter reading would raise when compiling
On Error Resume Next
Err.Raise &h8007000E&
Print Err.Number, Err.Description
Err.Clear
Err.Raise &h800A0009&
Print Err.Number, Err.Description
Err.Clear
Err.Raise 5, "Quelle", "Text", "hilfe.chm", 42
Print Err.Number, Err.Source, Err.Description, Err.HelpFile, Err.HelpContext
Err.Clear
Err.Raise
Print Err.Number, Err.Description
Err.Clear
Dim s
s = Left("a")
Print "Left mit einem Argument", Err.Number
Err.Clear
s = Join(Null)
Print "Join(Null)", Err.Number
Err.Clear
Dim o
Set o = Nothing
s = o.Name
Print "Element von Nothing", Err.Number, Err.Description
Err.Clear
With Nothing
End With
Print "With Nothing", Err.Number
' Err.Raise as Wine's VBScript tests (api.vbs, run against Windows) pin it:
' 0 and numbers above 65535 raise 5; what a Raise leaves out keeps the Err
' object's value, until Err.Clear
Err.Clear
Err.Raise 0
Print "Raise 0", Err.Number
Err.Raise &h10000&
Print "Raise &h10000&", Err.Number
Err.Raise -3000000000
Print "Raise -3000000000", Err.Number
Err.Raise &hFFFF
Print "Raise &hFFFF", Err.Number
Err.Raise 1, 2, "Text", "hilfe.chm", 7
Err.Raise 5
Print Err.Number, Err.Source, Err.Description, Err.HelpFile, Err.HelpContext
Err.Clear
Err.Raise 1, "Quelle"
Err.Raise &h8007000E&
Print Err.Number, Err.Source, Err.Description
Err.Clear
Err.Raise &h8007000E&
Print Err.Number, Err.Source, Err.Description, "[" & Err.HelpFile & "]", Err.HelpContext
' A run-time error empties what Raise set: the help file and context too
Err.Raise 1, 2, "Text", "hilfe.chm", 7
Err.Unbekannt
Print Err.Number, "[" & Err.HelpFile & "]", Err.HelpContext
' More system codes and their VB numbers, as Wine's VBScript tests (error.vbs)
' pin them against Windows
Err.Raise &h80020003&
Print "DISP_E_MEMBERNOTFOUND", Err.Number
Err.Raise &h80030002&
Print "STG_E_FILENOTFOUND", Err.Number
Err.Raise &h800706BA&
Print "RPC_S_SERVER_UNAVAILABLE", Err.Number
Err.Raise &h800A10AA&
Print "&h800A10AA&", Err.Number
Err.Raise &h80080008&
Print "unmapped", Hex(Err.Number)
' A ".member" outside any With compiles, and raises 505 where it runs (Wine's
' error.vbs)
Err.Clear
.Name = 1
Print ".Name = 1 ohne With", Err.Number, Err.Description
Err.Clear
s = .Name
Print "s = .Name ohne With", Err.Number
Err.Clear
.Run
Print ".Run ohne With", Err.Number
