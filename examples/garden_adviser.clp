; The garden adviser: which vegetable suits your plot? It reasons backward.
;
;   ./build/release/tavo examples/garden_adviser.clp
;
; The rules that recommend a crop need facts about the plot: its sun, its
; soil, the room there is. None of them is asserted up front. Each of those
; templates chains backward, so a rule that waits for such a fact asks for
; it with a goal fact (need-sun, need-soil, need-room), and the rules on
; the goals put the question to the user. Only what some rule still needs
; is asked: once a crop is found the questions stop.

(deftemplate crop (slot name (type SYMBOL)))
(deftemplate sun (slot hours (type INTEGER)))
(deftemplate soil (slot kind (type SYMBOL)))
(deftemplate room (slot square-metres (type INTEGER)))
(deftemplate advice (slot crop (type SYMBOL)))

(do-backward-chaining sun soil room)

(deffunction ask-number (?question)
  (printout t ?question " ")
  (read))

(deffunction ask-choice (?question ?a ?b ?c)
  (printout t ?question " (" ?a ", " ?b " or " ?c ") ")
  (bind ?answer (read))
  (while (and (neq ?answer ?a) (neq ?answer ?b) (neq ?answer ?c) (neq ?answer EOF))
    (printout t "One of " ?a ", " ?b " or " ?c ", please: ")
    (bind ?answer (read)))
  ?answer)

; Answering the goals: each question is asked once, when a rule needs it
; and no advice has been given yet; the sun before the soil before the room
; when several are wanted.

(defrule ask-sun
  (declare (salience 3))
  (need-sun)
  (not (advice))
  =>
  (assert (sun (hours (ask-number "How many hours of sun does the plot get a day?")))))

(defrule ask-soil
  (declare (salience 2))
  (need-soil)
  (not (advice))
  =>
  (assert (soil (kind (ask-choice "What is the soil like?" clay sand loam)))))

(defrule ask-room
  (declare (salience 1))
  (need-room)
  (not (advice))
  =>
  (assert (room (square-metres (ask-number "How many square metres are free?")))))

; Recommending: each crop's rule waits for the answers it needs, and the
; first whose conditions hold gives the advice, ahead of any question still
; open; beans, the last resort, wait for every answer. A pattern on a template
; that chains backward takes no function calls, since a goal could not be
; filled from one: the conditions on the answers stand in tests behind the
; patterns.

(defrule lettuce "shade suits leaves"
  (declare (salience 5))
  (not (advice))
  (sun (hours ?h))
  (test (< ?h 4))
  =>
  (assert (advice (crop lettuce))))

(defrule tomatoes "full sun on good soil"
  (declare (salience 5))
  (not (advice))
  (sun (hours ?h))
  (test (>= ?h 6))
  (soil (kind loam))
  =>
  (assert (advice (crop tomatoes))))

(defrule potatoes "some sun, light soil and space"
  (declare (salience 5))
  (not (advice))
  (sun (hours ?h))
  (test (>= ?h 4))
  (soil (kind sand))
  (room (square-metres ?m))
  (test (>= ?m 10))
  =>
  (assert (advice (crop potatoes))))

(defrule radishes "some sun and little room"
  (declare (salience 5))
  (not (advice))
  (sun (hours ?h))
  (test (>= ?h 4))
  (room (square-metres ?m))
  (test (< ?m 10))
  =>
  (assert (advice (crop radishes))))

(defrule beans "what grows anywhere"
  (declare (salience -10))
  (not (advice))
  (sun)
  (soil)
  (room)
  =>
  (assert (advice (crop beans))))

(defrule give-advice
  (declare (salience 10))
  (advice (crop ?c))
  =>
  (printout t "Grow " ?c "." crlf))

(reset)
(run)
(printout t crlf "The goals the rules asked for, and the answers:" crlf)
(facts)
