; The loan desk: applications pass through checking, scoring and deciding,
; each a module of its own.
;
;   ./build/release/tavo examples/loans.clp
;
; MAIN holds the templates that every phase shares and a control rule that
; puts the phases on the focus stack in the order they run. A phase's rules
; fire only while the phase has the focus; when its agenda is empty the
; focus passes to the next one down the stack. A fraud alarm in the
; CHECK phase puts the application on hold, and the AUDIT module, whose
; rule has auto-focus, steps in as soon as an application is held, ahead
; of whatever phase was running.

(defmodule MAIN (export ?ALL))

(deftemplate application
  (slot id (type SYMBOL))
  (slot applicant (type STRING))
  (slot income (type INTEGER))
  (slot amount (type INTEGER))
  (slot years-employed (type INTEGER))
  (slot state (type SYMBOL) (default new)))

(deftemplate score
  (slot id (type SYMBOL))
  (slot points (type INTEGER)))

(deftemplate flag
  (slot id (type SYMBOL))
  (slot reason (type STRING)))

(deffacts applications
  (application (id a1) (applicant "Ada") (income 52000) (amount 90000) (years-employed 6))
  (application (id a2) (applicant "Ben") (income 18000) (amount 120000) (years-employed 1))
  (application (id a3) (applicant "Cy") (income 0) (amount 5000) (years-employed 0))
  (application (id a4) (applicant "Dee") (income 31000) (amount 40000) (years-employed 3)))

(defrule MAIN::open-the-desk
  =>
  (focus CHECK SCORE DECIDE)
  (printout t "Phases on the focus stack: " (get-focus-stack) crlf))

; CHECK: complete and plausible applications go on to scoring.

(defmodule CHECK (import MAIN ?ALL))

(defrule CHECK::no-income
  (declare (salience 10))
  ?a <- (application (id ?id) (income 0) (state new))
  =>
  (assert (flag (id ?id) (reason "no income declared")))
  (modify ?a (state held)))

(defrule CHECK::plausible
  ?a <- (application (id ?id) (applicant ?who) (state new))
  =>
  (printout t "CHECK   " ?who " is complete" crlf)
  (modify ?a (state checked)))

; SCORE: points for income against the amount, and for steady work.

(defmodule SCORE (import MAIN ?ALL))

(defrule SCORE::points
  ?a <- (application (id ?id) (applicant ?who) (income ?i) (amount ?m) (years-employed ?y)
                     (state checked))
  =>
  (bind ?points (+ (integer (/ (* 100 ?i) ?m)) (* 5 (min ?y 8))))
  (printout t "SCORE   " ?who " scores " ?points crlf)
  (assert (score (id ?id) (points ?points)))
  (modify ?a (state scored)))

; DECIDE: the score decides; one rule per outcome.

(defmodule DECIDE (import MAIN ?ALL))

(defrule DECIDE::approve
  ?a <- (application (id ?id) (applicant ?who) (state scored))
  (score (id ?id) (points ?p&:(>= ?p 60)))
  =>
  (printout t "DECIDE  " ?who ": approved" crlf)
  (modify ?a (state approved)))

(defrule DECIDE::refuse
  ?a <- (application (id ?id) (applicant ?who) (state scored))
  (score (id ?id) (points ?p&:(< ?p 60)))
  =>
  (printout t "DECIDE  " ?who ": refused" crlf)
  (modify ?a (state refused)))

; AUDIT: steps in whenever an application is held.

(defmodule AUDIT (import MAIN deftemplate application flag))

(defrule AUDIT::review
  (declare (auto-focus TRUE))
  (application (id ?id) (applicant ?who) (state held))
  (flag (id ?id) (reason ?why))
  =>
  (printout t "AUDIT   " ?who " held: " ?why " (focus was " (get-focus-stack) ")" crlf))

(reset)
(run)
(printout t crlf "Final states:" crlf)
(facts MAIN)
