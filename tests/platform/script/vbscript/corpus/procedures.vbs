' Functions, Subs, ByRef and ByVal
Function Twice(n)
  Twice = n * 2
End Function

Sub Bump(ByRef n)
  n = n + 1
End Sub

Sub Keep(ByVal n)
  n = n + 100
End Sub

Sub Implicit(n)
  n = "geändert"
End Sub

Dim v : v = 1
Bump v
Print v
Keep v
Print v
Bump (v)
Print v
Call Bump(v)
Print v
Implicit v
Print v
Print Twice(21), Twice(Twice(2))

Dim arr(2)
arr(1) = 5
Bump arr(1)
Print arr(1)

Function Fact(n)
  If n <= 1 Then
    Fact = 1
  Else
    Fact = n * Fact(n - 1)
  End If
End Function
Print Fact(10)

Function Early(x)
  Early = "vorher"
  If x Then Exit Function
  Early = "nachher"
End Function
Print Early(True), Early(False)

Sub NoArgs
  Print "ohne Klammern"
End Sub
NoArgs
Call NoArgs()
Print LaterDefined(3)
Function LaterDefined(x) : LaterDefined = x + 1 : End Function
