' Exit Sub and Exit Property, Execute and ExecuteGlobal inside procedures,
' GetRef, ByRef through array elements and copies of properties, multi-dimensional
' ReDim Preserve and Erase of a fixed array
Sub Early(n)
  Print "vor", n
  If n > 1 Then Exit Sub
  Print "nach", n
End Sub
Early 1
Early 2
Class Konto
  Private mStand
  Public Property Get Stand
    Stand = mStand
    If IsEmpty(mStand) Then Stand = "leer" : Exit Property
    Stand = Stand & " EUR"
  End Property
  Public Property Let Stand(v)
    If v < 0 Then Exit Property
    mStand = v
  End Property
End Class
Dim k : Set k = New Konto
Print k.Stand
k.Stand = -5
Print k.Stand
k.Stand = 12
Print k.Stand
Sub Scopes
  Dim lokal : lokal = 1
  Execute "lokal = lokal + 1"
  ExecuteGlobal "Dim global1 : global1 = 10"
  ExecuteGlobal "Function Doppelt(x) : Doppelt = 2 * x : End Function"
  Print "lokal", lokal
End Sub
Scopes
Print "global", global1, Doppelt(global1)
Sub Mehr(ByRef x) : x = x & "+" : End Sub
Dim a(1) : a(0) = "a"
Mehr a(0)
Print a(0)
Mehr k.Stand
Print k.Stand
Dim f : Set f = GetRef("Doppelt")
Print f(21)
Dim m()
ReDim m(1, 2)
m(1, 2) = "x"
ReDim Preserve m(1, 4)
Print UBound(m, 1), UBound(m, 2), m(1, 2), IsEmpty(m(1, 4))
Dim fest(2) : fest(1) = 5
Erase fest
Print UBound(fest), IsEmpty(fest(1))
Erase m
Print IsArray(m)
Dim i, s
For i = 0 To 1 Step 0.25 : s = s & i & ";" : Next
Print s, i
