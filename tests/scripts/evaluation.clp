; Deffunctions called while rules are matched: a function evaluates its
; arguments in a scope of its own, and there the variables of the patterns
; still read the facts under test, also through calls nested in calls.
(deffunction positive (?a) (> ?a 0))
(deffunction sum-positive (?a ?b) (positive (+ ?a ?b)))
(defrule in-pattern (n ?x&:(positive ?x)) => (printout t "pattern " ?x " " (positive ?x) crlf))
(defrule in-test (n ?x) (test (sum-positive ?x 2)) => (printout t "test " ?x crlf))
(defrule in-join (n ?x) (m ?y&:(sum-positive ?x ?y)) => (printout t "join " ?x " " ?y crlf))
(defrule in-negation (m ?y) (not (n ?x&:(positive (- ?x ?y)))) => (printout t "none above " ?y crlf))
(assert (n 1) (n -1) (n -3) (m 2) (m 0))
(run)
; A multifield passed to a rest parameter is one item: the list itself.
(deffunction count ($?items) (bind ?k 0) (foreach ?i ?items (bind ?k (+ ?k 1))) ?k)
(deftemplate bag (multislot items))
(defrule counted (bag (items $?i&:(= (count ?i) 1))) => (printout t (count ?i) " " (count ?i end) " " (count) crlf))
(assert (bag (items a b c)))
(run)
