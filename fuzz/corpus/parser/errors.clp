; Errors go to standard error with their lines; the run goes on.
"a string at top level"
1
(defglobal ?x = 1)
2
(deffunction f (?x y) ?x)
3
(unknown-function 1)
4
?*missing*
5
