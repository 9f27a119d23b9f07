; Fuzzy: 20,000 crisp temperature readings of 200 zones are matched against
; fuzzy terms with hedges; each match has a strength, which cuts the risk
; that the firing asserts, and every new risk of a zone merges with the one
; the zone already has. So the run matches, correlates and merges fuzzy
; facts by the thousand.
(deftype temp extends (type FUZZY) (range 0 100)
  (values (term cold ((0 1) (40 0))) (term warm ((20 0) (50 1) (80 0))) (term hot ((60 0) (100 1)))))
(deftype risk extends (type FUZZY) (range 0 10)
  (values (term small ((0 1) (5 0))) (term large ((5 0) (10 1)))))
(deftemplate reading (slot id) (slot zone) (slot t (type temp)))
(deftemplate danger (slot zone) (slot level (type risk)))

(defrule overheating (reading (zone ?z) (t very hot)) => (assert (danger (zone ?z) (level large))))
(defrule comfortable (reading (zone ?z) (t somewhat warm)) => (assert (danger (zone ?z) (level small))))
(defrule freezing (reading (zone ?z) (t extremely cold)) => (assert (danger (zone ?z) (level somewhat large))))

(deffunction load (?n)
  (bind ?i 0)
  (while (< ?i ?n)
    (assert (reading (id ?i) (zone (mod ?i 200)) (t (mod (* ?i 37) 101))))
    (bind ?i (+ ?i 1))))

(reset)
(load 20000)
(printout t (run) " rules fired" crlf)
