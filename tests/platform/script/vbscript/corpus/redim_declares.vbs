' Under Option Explicit, ReDim of a name not declared otherwise declares it
Option Explicit
ReDim outer(1)
outer(1) = "außen"
Print outer(1)
Sub Inner()
  ReDim list(2)
  list(2) = "innen"
  Print list(2), UBound(list)
End Sub
Inner
