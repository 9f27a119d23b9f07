; A salience that asserts a fact while an assertion is still on its way
; through the network: the join meets the new fact a second time, and the
; memory below must not keep the same pair twice ("all" fires once for each
; b). The terminal node refuses nothing, so "seen" meets the new pair twice.
(deffunction add-b () (assert (b 1 new)) 0)
(defrule seen (declare (salience (add-b))) (a ?x) (b ?x ?y) => (printout t "seen " ?x " " ?y crlf))
(defrule all (a ?x) (b ?x ?y) (c ?x) => (printout t "all " ?x " " ?y crlf))
(reset)
(assert (b 1 old))
(assert (a 1))
(assert (c 1))
(run)
