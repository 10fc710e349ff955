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
