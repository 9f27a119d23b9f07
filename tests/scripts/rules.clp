; Rules from text, matched and fired: conditional elements, connectives,
; fact functions in actions, duplicates, late rules, redefinition, errors.
(deftemplate person (slot name) (slot age) (multislot kids))
(deftemplate pet (slot owner) (slot kind))

(defrule greet "no patterns: the initial fact" => (printout t "hello" crlf))
(defrule adult (declare (salience 10))
  ?p <- (person (name ?n) (age ?a&:(>= ?a 18)))
  => (printout t ?n " is an adult, " ?p crlf))
(defrule dog-or-cat (pet (owner ?o) (kind dog|cat)) => (printout t ?o " has a dog or a cat" crlf))
(defrule not-a-fish (pet (owner ?o) (kind ~fish&~bird)) => (printout t ?o " has no fish or bird" crlf))
(defrule petless (person (name ?n)) (not (pet (owner ?n))) => (printout t ?n " has no pet" crlf))
(defrule first-kid (person (name ?n) (kids ?first $?rest)) => (printout t ?n "'s first is " ?first ", then " ?rest crlf))
(defrule older (person (name ?a) (age ?x)) (person (name ?b) (age ?y&=(+ ?x 1))) => (printout t ?b " is one older than " ?a crlf))
(defrule tested (person (name ?n) (age ?a)) (test (> ?a 60)) => (printout t ?n " is over sixty" crlf))
(reset)
(assert (person (name Ann) (age 30) (kids Bo Cy)))
(assert (person (name Dan) (age 31)))
(assert (person (name Eve) (age 65)))
(assert (pet (owner Ann) (kind dog)))
(assert (pet (owner Dan) (kind fish)))
(run)

; A duplicate is refused while duplication is off, and allowed after (TRUE refuses).
(assert (pet (owner Dan) (kind fish)))
(set-fact-duplication FALSE)
(assert (pet (owner Dan) (kind fish)))
(set-fact-duplication TRUE)
; A duplicate that changes nothing is refused too.
(duplicate 5 (kind fish))
(get-fact-duplication)
(get-slot-value 4 kind)
(assert-string "(pet (owner Quin) (kind cat))")
(retract-string "(pet (owner Quin) (kind cat))")

; modify withdraws the old fact's activations and matches anew.
(defrule grow ?p <- (person (name Dan) (age ?a&:(< ?a 33))) => (modify ?p (age (+ ?a 1))))
(run)
(facts)

; A retraction withdraws a pending activation.
(defrule never (pet (owner Eve)) => (printout t "never printed" crlf))
(bind ?bird (assert (pet (owner Eve) (kind bird))))
(retract ?bird)
(run)

; A rule of the same name replaces the old one.
(defrule greet (person (name Eve)) => (printout t "hello Eve" crlf))
(run)

; A rule added after the facts activates at once.
(defrule late (pet (owner ?o) (kind dog)) => (printout t "late: " ?o crlf) (duplicate 4 (owner Zed)))
(run)
(facts)

; exists, and a double negation alike: the second join has no tests, so
; any output of the first blocks every left token; with one left token
; that reads "there is one".
(clear)
(deftemplate owner (slot name))
(deftemplate pet (slot owner) (slot kind))
(defrule has-any (owner (name ?n)) (exists (pet (owner ?n))) => (printout t ?n " has pets" crlf))
(defrule has-dog (owner (name ?n)) (not (not (pet (owner ?n) (kind dog)))) => (printout t ?n " has a dog" crlf))
(reset)
(assert (owner (name Ann)))
(run)
(assert (pet (owner Ann) (kind cat)))
(run)
(assert (pet (owner Ann) (kind dog)))
(assert (pet (owner Ann) (kind rat)))
(run)

; Disabled by any value but TRUE.
(defrule off (declare (enabled 1)) (owner) => (printout t "off" crlf))
(run)

; Errors, each with its line.
(defrule bad1 (pet (kind 3 4)) =>)
(defrule bad2 (pet (owner ~?zz)) =>)
(defrule bad3 ?x <- (not (pet)) =>)
(defrule bad4 (declare (priority 1)) =>)
(defrule bad5 (declare (salience 1.5)) =>)
(defrule bad6 (pet (nose 1)) =>)
(defrule bad7 (pet (owner = b)) =>)
(defrule bad8 (pet) -> (printout t "x"))
(defrule bad9 (and (pet) (owner)) =>)
(defrule ok ?t <- (test (> 2 1)) (not (test (> 1 2))) => (printout t "tests pass" crlf))
(run)
(retract 99)
(modify 99 (kind 1))

; What the watches show of the agenda and of firing.
(clear)
(deftemplate item (slot n))
(defrule seen (item (n ?n)) => (printout t "seen " ?n crlf))
(defrule once-after-clear => (printout t "the initial fact matches after a clear" crlf))
(defrule first-only (unique (item (n ?n))) (explicit (item (n ?m&~?n))) => (printout t "pair " ?n " " ?m crlf))
(watch activations)
(watch rules)
(reset)
(assert (item (n 1)))
(assert (item (n 2)))
(retract 1)
(run)
(unwatch all)
