; Top-level values, globals and deffunctions, without any package.
42
-7
2.5
an-atom
(defglobal ?*limit* = 10 ?*name* = widget)
?*limit*
?*name*
(deffunction identity (?x) ?x)
(identity 3)
(identity ?*name*)
(deffunction rest ($?items) "the arguments as a list" $?items)
(rest a b c)
(deffunction second (?a ?b) "takes two" ?b)
(second 1 (identity 2))
; a call made before its function exists binds when it runs
(deffunction early () (late))
(deffunction late () done)
(early)
