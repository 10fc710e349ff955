' Arrays of fixed size, Private members and user classes named like built-in
' objects
On Error Resume Next
Dim fixed(3), open1()
ReDim fixed(5)
Print "ReDim fest", Err.Number, Err.Description
Err.Clear
Dim n, x
n = 0
For Each x In open1
  n = n + 1
Next
Print "For Each über Dim a()", n, Err.Number
Err.Clear
Sub EraseLocal()
  Dim local(2)
  local(1) = "x"
  Erase local
  Print "Erase fest lokal", UBound(local), "[" & local(1) & "]"
End Sub
EraseLocal

Class Secretive
  Private hidden
  Public shown
  Private Sub Class_Initialize
    hidden = 1
  End Sub
End Class
Dim s
Set s = New Secretive
n = s.hidden
Print "Private lesen", Err.Number
Err.Clear
s.hidden = 2
Print "Private schreiben", Err.Number
Err.Clear

' A class may be named RegExp, but New RegExp makes the built-in one (Wine's
' lang.vbs, run against Windows)
Class RegExp
  Public Pattern
  Public Function Test(text)
    Test = "eigene Klasse"
  End Function
End Class
Dim r
Set r = New RegExp
Print r.Test("a"), TypeName(r)

Dim re
Set re = CreateObject("VBScript.RegExp")
