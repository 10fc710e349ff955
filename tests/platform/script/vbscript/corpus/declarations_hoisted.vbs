' Const, Dim and ReDim belong to their whole scope, wherever they stand
If False Then Const Hidden = "Konstante aus einem nie ausgeführten If"
Print Hidden

Sub UsesLaterDim()
  x = 5
  Print "Dim weiter unten", x
  Dim x
End Sub
UsesLaterDim

Sub ReDimDeclares()
  ReDim list(2)
  list(2) = "ReDim deklariert"
  Print list(2), UBound(list)
End Sub
ReDimDeclares

Sub DimInLoop()
  Dim i
  For i = 1 To 3
    Dim inLoop
    inLoop = inLoop & i
  Next
  Print "Dim in der Schleife", inLoop
End Sub
DimInLoop
