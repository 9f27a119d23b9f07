; The pretty printers: each construct printed back as text, which is then
; read again and printed once more to show that it comes back the same.
(deftype percent "share of a whole" extends (type INTEGER FLOAT) (range 0 100) (units "per cent"))
(deftype heat extends (type FUZZY) (range 0 40) (units C)
  (values (term cool (z 10 20)) (term warm (s 15 30))))
(deftemplate reading "a sensor reading"
  (slot sensor (type SYMBOL) (allowed-symbols a b c) (default a))
  (slot value (type percent))
  (multislot history (cardinality ?VARIABLE 5)))
(deftemplate alarm (slot sensor))
(deffacts readings "start values"
  (reading (sensor b) (value 42) (history 1 2))
  (note "to be checked"))
(deffunction twice (?x) "doubles" (* 2 ?x))
(defglobal ?*limit* = 40)
(defrule high "too high" (declare (salience 5))
  ?r <- (reading (sensor ?s&~c) (value ?v&:(> ?v ?*limit*)))
  (not (alarm (sensor ?s)))
  (note)
  =>
  (assert (alarm (sensor ?s)))
  (printout t "alarm on " ?s crlf))
(ppdeftype percent)
(ppdeftype heat)
(ppdeftemplate reading)
(ppdeffacts readings)
(ppdeffunction twice)
(ppdeffunction abs)
(ppdefrule high)
; what was printed reads back to the same text
(defrule high-again
   "too high"
   (declare (salience 5))
   ?r <- (reading (sensor ?s&~c) (value ?v&:(> ?v ?*limit*)))
   (not (alarm (sensor ?s)))
   (note $?__var1)
   =>
   (assert (alarm (sensor ?s)))
   (printout t "alarm on " ?s crlf))
(ppdefrule high-again)
; the rules still work
(reset)
(run)
; modules, last: a new module becomes the current one
(defmodule REPORT "reports" (import MAIN deftemplate alarm) (export ?ALL))
(ppdefmodule REPORT)
(ppdefmodule MAIN)
; unknown names
(ppdefrule nothing)
(ppdeftemplate nothing)
(ppdeffacts nothing)
(ppdeffunction nothing)
(ppdeftype nothing)
(ppdefmodule nothing)
