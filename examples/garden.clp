; A small garden: types say what a value may be, templates say what a fact
; holds, and fact sets give the facts that every reset starts from.
;
;   ./build/release/tavo examples/garden.clp

(deftype season extends (type SYMBOL) (allowed-symbols spring summer autumn winter))
(deftype depth-cm extends (type INTEGER) (range 0 60))

(deftemplate plant "a plant we can sow"
  (slot name (type SYMBOL))
  (slot sow (type season) (default spring))
  (slot depth (type depth-cm) (default 1))
  (multislot companions))

(deftemplate bed "a bed in the garden"
  (slot id (type INTEGER))
  (slot sun (allowed-values full partial shade) (default full))
  (slot area (type NUMBER) (range 0.5 20) (default 1.0)))

(defglobal ?*beds* = 2)

(deffacts vegetables "what grows here"
  (plant (name carrot) (depth 2) (companions onion leek))
  (plant (name bean) (sow summer) (depth 4) (companions carrot))
  (plant (name garlic) (sow autumn) (depth 5)))

(deffacts beds "the beds, as many as ?*beds* says"
  (bed (id 1) (area 4.5))
  (bed (id ?*beds*) (sun partial)))

(reset)
(printout t "The garden after a reset:" crlf)
(facts)

; A value outside its type is refused where the fact is read, with the
; type's reason on standard error; the fact list stays as it was.
(assert (plant (name tomato) (sow winter) (depth 100)))
(facts 5 5)
