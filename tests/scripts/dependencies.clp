; Constructs redefined and removed while facts, fact sets and rules rest on
; them: what depends on them is rebuilt against the new definition, or goes.
(deftemplate item (slot name) (slot qty (default 1)))
(deffacts stock (item (name a) (qty 2)) (note kept))
(defrule show (item (name ?n) (qty ?q)) => (printout t "show " ?n " " ?q crlf))
(defrule maker (make ?n) => (assert (item (name ?n))))
(reset)
(assert (item (name b)))
(facts)
(agenda)

; One slot more: the facts come back with new ids and the new slot's
; default, the rules are compiled again and find their matches anew.
(deftemplate item (slot name) (slot qty (default 1)) (slot colour (default red)))
(facts)
(agenda)
(assert (make c))
(run)
(facts)
; The fact set reads its entry against the new template at the next reset.
(reset)
(facts)

; A type under a template: the template is rebuilt on the new type, and
; so are its facts.
(deftype size extends (type INTEGER) (range 0 100))
(deftemplate box (slot size (type size) (default 10)))
(defrule big (box (size ?s&:(> ?s 50))) => (printout t "big box " ?s crlf))
(assert (box (size 70)) (box))
(deftype size extends (type INTEGER) (range 0 1000))
(facts)
(run)
(assert (box (size 700)))
(run)

; A slot removed that a fact names: the fact's text no longer reads, and
; what was not restored before it is lost.
(deftemplate item (slot name))
(facts)
(rules)

; Removal. A template with facts, a fact-set entry and rules on it: the
; facts and the matching rules go, the entry asserts nothing any more, and
; a rule that only makes such a fact in an action stays.
(deftemplate part (slot id))
(deffacts parts (part (id p1)) (note also-kept))
(defrule list-part (part (id ?i)) => (printout t "part " ?i crlf))
(defrule make-part (want ?i) => (assert (part (id ?i))))
(reset)
(assert (part (id p2)))
(undeftemplate part)
(undeftemplate part)
(facts)
(rules)
(reset)
(facts)
(ppdeffacts parts)

; The other constructs, present and absent.
(deftype tiny extends (type INTEGER) (range 0 9))
(deftemplate cell (slot v (type tiny)))
(assert (cell (v 1)))
(undeftype tiny)
(undeftype tiny)
(list-deftemplates)
(facts)
(undeffacts parts)
(undeffacts parts)
(undefrule big)
(undefrule big)

; A rule that removes itself while it fires, and a function that removes
; itself while it runs.
(defrule once (go) => (printout t "once, then gone" crlf) (undefrule once) (printout t "still running" crlf))
(deffunction vanish () (undeffunction vanish) (printout t "vanish ran to its end" crlf) done)
(assert (go))
(run)
(rules)
(vanish)
(vanish)
