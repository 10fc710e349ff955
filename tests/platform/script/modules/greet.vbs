Function Greet(name, n)
  Greet = "Hallo " & name & " " & (n * 2)
End Function
