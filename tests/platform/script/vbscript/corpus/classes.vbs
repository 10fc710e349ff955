Class Person
  Private mName
  Public Age
  Dim Tags(2)

  Private Sub Class_Initialize()
    mName = "niemand"
    Age = 0
    Print "init"
  End Sub

  Private Sub Class_Terminate()
    Print "terminate " & mName
  End Sub

  Public Property Get Name()
    Name = mName
  End Property

  Public Property Let Name(value)
    If value = "" Then Err.Raise 5
    mName = value
  End Property

  Public Function Greet(greeting)
    Greet = greeting & ", " & Name & " (" & Me.Age & ")"
  End Function

  Public Sub Birthday()
    Age = Age + 1
  End Sub
End Class

Class Box
  Private mItem
  Public Property Set Item(obj)
    Set mItem = obj
  End Property
  Public Property Get Item()
    Set Item = mItem
  End Property
  Public Default Property Get Value()
    Value = "Box-Wert"
  End Property
End Class

Dim p
Set p = New Person
Print p.Name
p.Name = "Anna"
p.Age = 30
p.Birthday
Print p.Greet("Hallo")
p.Tags(1) = "x"
Print p.Tags(1), TypeName(p), IsObject(p), VarType(p) = vbObject
Dim b : Set b = New Box
Set b.Item = p
Print b.Item.Name, b, "[" & b & "]"
With p
  .Age = 40
  Print .Greet("Hi"), .Name
End With
Dim q : Set q = p
Print q Is p, q Is Nothing, Nothing Is Nothing
Set q = Nothing
Set b = Nothing
Print "vor dem Ende"
Set p = Nothing
Print "danach"
Set p = New Person
p.Name = ""
