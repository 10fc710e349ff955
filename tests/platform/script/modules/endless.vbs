Function spin()
  Dim n
  Do
    n = n + 1
  Loop
End Function
