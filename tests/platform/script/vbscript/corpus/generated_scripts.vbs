' The shapes of the conversion scripts a job generates: a field copied through
' Left(…, n) keeps Null and turns other values into their German text, and a
' Function header without parentheses
Class Record
  Private values
  Private Sub Class_Initialize
    Set values = CreateObject("Scripting.Dictionary")
  End Sub
  Public Default Property Get Fields(name)
    Fields = values(name)
  End Property
  Public Property Let Fields(name, value)
    values(name) = value
  End Property
End Class
Dim Source, Destination
Set Source = New Record
Set Destination = New Record
Source.Fields("Null") = Null
Source.Fields("Zahl") = 1234.5
Source.Fields("Datum") = #12/31/2002#
Source.Fields("Bool") = True
Source.Fields("Lang") = String(60, "x")

Function txConvertMain
  Destination.Fields("Null") = Left(Source.Fields("Null"),50)
  Destination.Fields("Zahl") = Left(Source.Fields("Zahl"),50)
  Destination.Fields("Datum") = Left(Source.Fields("Datum"),50)
  Destination.Fields("Bool") = Left(Source.Fields("Bool"),50)
  Destination.Fields("Lang") = Left(Source.Fields("Lang"),50)
End Function
txConvertMain
Dim name
For Each name In Array("Null", "Zahl", "Datum", "Bool", "Lang")
  Print name, TypeName(Destination.Fields(name)), "[" & Destination.Fields(name) & "]"
Next
