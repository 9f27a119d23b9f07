; fuzzy types, fuzzy facts and fuzzy patterns: a match has a strength, and
; an equal fuzzy fact merges into the new one
(deftype temp extends (type FUZZY) (range 0 100) (units C)
  (values (term cold ((0 1) (50 0))) (term hot ((50 0) (100 1)))))
(deftemplate reading (slot room) (slot t (type temp)))
(defrule hot-room (reading (room ?r) (t hot)) => (printout t ?r " is hot" crlf))
(defrule very-hot-room (reading (room ?r) (t very hot)) => (printout t ?r " is very hot" crlf))
(defrule not-cold-room (reading (room ?r) (t not cold)) => (printout t ?r " is not cold" crlf))
; a crisp reading matches each term to the degree of its membership there
(assert (reading (room attic) (t 75)))
(agenda)
; a second reading of the same room merges with the first: the facts are
; equal but for their fuzzy slot, and the union takes the place of both
(watch facts)
(assert (reading (room attic) (t 25)))
(unwatch facts)
(agenda)
(run)
(facts)
; values read as their defuzzified numbers
(deftemplate setting (slot level (type temp)))
(assert (setting (level ((20 0) (30 1) (40 0)))))
(defrule show (setting (level ?l)) => (printout t "level " (+ ?l 0) crlf))
(run)
; mistakes in fuzzy text
(assert (reading (room cellar) (t warm)))
(defrule bad (reading (t very)) =>)
(deftype mixed extends (type FUZZY INTEGER))
(deftype odd extends (type FUZZY) (colour red))
