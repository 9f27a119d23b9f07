; The leaf doctor: what ails the plant? A fuzzy diagnosis.
;
;   ./build/release/tavo examples/leaf_doctor.clp
;
; Each symptom is observed to a degree from 0 to 10: how yellow the leaves
; are, how spotted, how wilted. Several rules may point to the same cause,
; each with the strength of its symptoms. What each rule asserts is a
; belief in the cause, cut at that strength; beliefs in one cause merge
; into one fact, the union of the evidence. The report gives each cause's
; belief as a number from 0 to 1, and draws it.

(deftype degree extends (type FUZZY) (range 0 10)
  (values (term none ((0 1) (3 0)))
          (term some ((1 0) (5 1) (9 0)))
          (term much ((6 0) (10 1)))))

(deftype belief extends (type FUZZY) (range 0 1)
  (values (term unlikely ((0 1) (0.5 0)))
          (term likely ((0.5 0) (1 1)))))

(deftemplate symptoms (slot yellowing (type degree)) (slot spots (type degree)) (slot wilting (type degree)))
(deftemplate cause (slot name) (slot belief (type belief)))

(deffacts examination
  (symptoms (yellowing 7) (spots 4) (wilting 2)))

(defrule too-little-nitrogen
  (symptoms (yellowing much) (spots none))
  =>
  (assert (cause (name hunger) (belief likely))))

(defrule fungus-from-spots
  (symptoms (spots some))
  =>
  (assert (cause (name fungus) (belief likely))))

(defrule fungus-from-yellowing
  (symptoms (yellowing somewhat much) (wilting none))
  =>
  (assert (cause (name fungus) (belief somewhat likely))))

(defrule thirst
  (symptoms (wilting much))
  =>
  (assert (cause (name thirst) (belief very likely))))

(defrule rule-out-thirst
  (symptoms (wilting none))
  =>
  (assert (cause (name thirst) (belief unlikely))))

(defrule report
  (declare (salience -10))
  (cause (name ?n) (belief ?b))
  =>
  (printout t crlf ?n ": " (format nil "%.2f" (moment-defuzzify ?b)) crlf)
  (plot-fuzzy-value t "*" 0 1 ?b))

(reset)
(run)
