' RegExp.Replace's replacement text, and the random number generator's first
' values
Dim re
Set re = New RegExp
re.Pattern = "(a)(b)"
re.Global = True
Print re.Replace("abab", "[$2$1$3$9]")
Print re.Replace("ab", True)
Print re.Replace("ab", 5)
Print re.Replace("ab", "$$ $0 $& $`")
Print Rnd(0)
Print Rnd(0)
Print Rnd
Print Rnd(0)
' Rnd and Randomize. The properties pinned by Wine's VBScript tests (api.vbs),
' which run against Windows' VBScript: the first Rnd(0) above is
' 327680 / 16777216; Rnd's value is a Single; a negative argument seeds and
' draws the same number each time; Randomize n mixes n into the generator's current state, so the same n
' twice in a row gives different numbers, and Rnd(-1) followed by Randomize n
' repeats a sequence. The values themselves follow VB's generator as
' Microsoft's article Q231847 gives it (seed * 1140671485 + 12820163 modulo
' 2^24, starting from 327680).
Print TypeName(Rnd(0))
Print Rnd(-2) = Rnd(-2), Rnd(-1) <> Rnd(-2)
Print Rnd(-1)
Dim x, y, i, s
Rnd -1
Randomize 123
x = Rnd()
Randomize 123
y = Rnd()
Print x <> y
Rnd -1
Randomize 123
Print Rnd() = x
' The sequence after Rnd(-1) and Randomize 10, to be repeated exactly
Rnd -1
Randomize 10
s = ""
For i = 1 To 5
  s = s & " " & Rnd
Next
Print s
Rnd -1
Randomize 10
Print Rnd
