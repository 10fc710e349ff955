Dim a(3), b()
Print UBound(a), IsArray(b)
ReDim b(2)
b(0) = "eins" : b(2) = "drei"
ReDim Preserve b(4)
Print UBound(b), b(0), b(2), IsEmpty(b(4))
ReDim b(1)
Print IsEmpty(b(0))
Dim m(2, 3)
m(2, 3) = 23
Print UBound(m, 1), UBound(m, 2), m(2, 3)
Dim c : c = a
a(0) = "nur in a"
Print IsEmpty(c(0)), a(0)
a(1) = 1
Erase a
Print UBound(a), IsEmpty(a(1))
ReDim d(2)
d(2) = "implizit"
Print d(2)
Dim nested : nested = Array(Array(1, 2), Array(3, 4))
Print nested(1)(0)
Print a(5)
