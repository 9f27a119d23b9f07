; backward chaining: a rule waiting for a fact of a backward-chaining
; template asks for it with a goal fact, asserted once the walk has ended
(deftemplate part (slot name) (slot kind) (slot price))
(deftemplate order (slot name) (slot qty))
(do-backward-chaining part)
(deftemplate need-nothing (slot x))
(defrule price-order
  (order (name ?n) (qty ?q))
  (part (name ?n) (kind ~used) (price ?p))
  =>
  (printout t ?q " x " ?n " cost " (* ?q ?p) crlf))
; the goal takes the order's name; kind has only a ~ test and price is
; bound in the pattern itself, so both stay nil
(defrule look-up
  (need-part (name ?n))
  =>
  (printout t "looking up " ?n crlf)
  (assert (part (name ?n) (kind new) (price 4))))
(watch facts)
(reset)
(assert (order (name bolt) (qty 3)))
(facts)
(run)
; the goal's rule fired and the part arrived: the waiting rule fired too
; and the look-up's companion (no part like the goal yet) holds it off now
(agenda)
; a left token that finds its part asks nothing
(assert (order (name bolt) (qty 5)))
(run)
; a retraction asks nothing; the same goal twice is one fact
(retract 1)
(assert (order (name nut) (qty 1)))
(assert (order (name nut) (qty 2)))
(unwatch facts)
(facts)
; explicit patterns never ask
(deftemplate query (slot name))
(defrule explicit-only (query (name ?n)) (explicit (part (name ?n) (kind spare))) =>)
(assert (query (name washer)))
(facts)
; goals of a multislot fill it from the pattern's items, by position
(deftemplate kit (multislot items) (slot label))
(do-backward-chaining kit)
(defrule wants-kit (query (name ?n)) (kit (items ?n spare) (label ?l)) =>)
; the goal asked as the rule joined the network waits for the next change
(facts)
(assert (query (name screw)))
(facts)
; a reset lets waiting goals go and asks again from its own facts
(defrule wants-more (query (name ?n)) (kit (items spare ?n)) =>)
(reset)
(facts)
; what may not be asked for
(do-backward-chaining not)
(defrule bad (order (name ?n)) (part (name ?n) (price ?p&:(> ?p 1))) =>)
(rules)
