; Joins: 50,000 facts each of a and b and 100 of c, asserted from a
; deffunction loop, then one run. The join rule matches every a with its b
; and its c (50,000 activations); the negated rule matches every a without a
; b of group 0 under its id (49,500).
(deftemplate a (slot id) (slot g))
(deftemplate b (slot id) (slot g))
(deftemplate c (slot g))

(defrule join (a (id ?i) (g ?g)) (b (id ?i)) (c (g ?g)) =>)
(defrule unmatched (a (id ?i)) (not (b (id ?i) (g 0))) =>)

(deffunction load (?n)
  (bind ?i 0)
  (while (< ?i ?n)
    (assert (a (id ?i) (g (mod ?i 100))))
    (assert (b (id ?i) (g (mod ?i 100))))
    (bind ?i (+ ?i 1)))
  (bind ?g 0)
  (while (< ?g 100)
    (assert (c (g ?g)))
    (bind ?g (+ ?g 1))))

(reset)
(load 50000)
(printout t (run) " rules fired" crlf)
