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
