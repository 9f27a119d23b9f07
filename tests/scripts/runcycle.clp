; The run cycle, taken breadth first with salience evaluated again after
; every firing (the host's options are in runcycle.args).
(deftemplate job (slot n))
(defglobal ?*urgent* = 0)
(defrule work (job (n ?n&~9)) => (printout t "work " ?n crlf))
(defrule rush (declare (salience ?*urgent*)) (job (n 3)) => (printout t "rush" crlf))
(defrule raise (declare (salience 5)) (job (n 2)) => (bind ?*urgent* 10))
(defrule stop (job (n 9)) => (printout t "halting" crlf) (halt) (printout t "after halt" crlf))
(defrule later (declare (salience -10)) (job (n 9)) => (printout t "after the halt" crlf))
(watch facts)
(watch activations)
(watch rules)
(reset)
(assert (job (n 1)))
(assert (job (n 2)))
(assert (job (n 3)))
(agenda)
; A fired activation leaves the agenda with a line of its own; raise lifts
; rush above the rest, and every firing places the others anew. The third
; firing stops the run and leaves two activations waiting.
(run 3)
(agenda)
; A retraction withdraws its activation before the fact's own line.
(retract 3)
(unwatch all)
(run)
; halt lets the rule finish its actions, and the firing counts; the next
; run goes on.
(assert (job (n 9)))
(run)
(agenda)
(run)
; return pops the focus: the rest of that module's agenda waits, and the
; run goes on with the module below.
(reset)
(assert (job (n 1)))
(defmodule SIDE)
(deftemplate task (slot t))
(defrule SIDE::leave (declare (salience 10) (auto-focus TRUE)) (task (t ?t))
  => (printout t "leaving " ?t crlf) (return) (printout t "not printed" crlf))
(defrule SIDE::stay (task (t ?t)) => (printout t "stay " ?t crlf))
(watch focus)
(watch rules)
(assert (task (t x)))
(run)
(list-focus-stack)
(agenda *)
