; Guess the animal: think of one of the animals below, answer the questions
; yes or no, and the program names it.
;
;   ./build/release/tavo examples/animal.clp
;
; Each animal is described by the traits it has; every trait it does not
; list, it lacks. The program keeps the animals that fit the answers so far
; and asks, in a fixed order, only the questions that still split them: a
; question that every remaining animal would answer alike is skipped. When
; one animal is left, it guesses.
;
; Salience orders the work of a round:
;    50  the traits and the count of the animals, once after a reset
;    40  tidying up what an answer or a finished round left behind
;    35  starting a round
;    30  the candidates of a round, and what an answer rules out
;    20  telling what an answer did
;    10  the guess
;     0  skipping a question that would not split the animals left
;    -1  asking it
;   -10  giving up when the questions run out

(deftemplate animal "an animal the program knows"
  (slot name (type SYMBOL))
  (multislot traits))

(deftemplate trait "a yes/no question about an animal"
  (slot name (type SYMBOL))
  (slot order (type INTEGER))
  (slot question (type STRING)))

(deffacts animals
  (animal (name bat)      (traits hair flies night))
  (animal (name hedgehog) (traits hair night))
  (animal (name horse)    (traits hair hooves))
  (animal (name zebra)    (traits hair hooves stripes))
  (animal (name giraffe)  (traits hair hooves long-neck))
  (animal (name tiger)    (traits hair meat stripes))
  (animal (name sparrow)  (traits feathers flies))
  (animal (name owl)      (traits feathers flies meat night))
  (animal (name swan)     (traits feathers flies water long-neck))
  (animal (name penguin)  (traits feathers water meat))
  (animal (name shark)    (traits water meat)))

(deffacts questions
  (trait (name hair)      (order 1) (question "Does it have hair or fur?"))
  (trait (name feathers)  (order 2) (question "Does it have feathers?"))
  (trait (name flies)     (order 3) (question "Can it fly?"))
  (trait (name water)     (order 4) (question "Does it live in the water?"))
  (trait (name meat)      (order 5) (question "Does it eat meat?"))
  (trait (name hooves)    (order 6) (question "Does it have hooves?"))
  (trait (name stripes)   (order 7) (question "Does it have stripes?"))
  (trait (name long-neck) (order 8) (question "Does it have a long neck?"))
  (trait (name night)     (order 9) (question "Is it awake mostly at night?")))

(deffacts game
  (start-round))

(defglobal ?*known* = 0 ?*round* = 0)

(deffunction article (?name)
  "a or an, as the name's first letter asks"
  (if (str-index (sub-string 1 1 ?name) "aeiou") then "an" else "a"))

(deffunction ask-yes-no (?question)
  "Asks until the answer is yes or no (y and n will do); gives yes or no"
  (printout t ?question " (yes/no)" crlf)
  (bind ?answer (read))
  (while TRUE do
    (if (eq ?answer EOF) then
      (printout t "No more answers: the game ends." crlf)
      (halt)
      (return no))
    (bind ?answer (lowcase ?answer))
    (if (or (eq ?answer yes) (eq ?answer y)) then (return yes))
    (if (or (eq ?answer no) (eq ?answer n)) then (return no))
    (printout t "Please answer yes or no." crlf)
    (bind ?answer (read))))

;;; What each animal has and lacks

(defrule list-traits "an animal has each trait it lists"
  (declare (salience 50))
  (animal (name ?a) (traits $? ?t $?))
  =>
  (assert (has ?a ?t)))

(defrule count-animals
  (declare (salience 50))
  (animal)
  =>
  (bind ?*known* (+ ?*known* 1)))

;;; A round

(defrule start-round
  (declare (salience 35))
  ?s <- (start-round)
  =>
  (retract ?s)
  (bind ?*round* (+ ?*round* 1))
  (printout t crlf "Round " ?*round* ": think of one of these animals: "
            "bat, hedgehog, horse, zebra, giraffe, tiger, sparrow, owl, swan, penguin, shark." crlf)
  (assert (playing) (left ?*known*) (next-trait 1)))

(defrule candidate "at the start of a round every animal is possible"
  (declare (salience 30))
  (playing)
  (animal (name ?a))
  =>
  (assert (candidate ?a)))

(defrule trait-present
  (declare (salience 30))
  (candidate ?a)
  (trait (name ?t))
  (has ?a ?t)
  =>
  (assert (trait-of ?a ?t yes)))

(defrule trait-absent
  (declare (salience 30))
  (candidate ?a)
  (trait (name ?t))
  (not (has ?a ?t))
  =>
  (assert (trait-of ?a ?t no)))

(defrule rule-out "an animal that disagrees with an answer is out"
  (declare (salience 30))
  (answer ?i ?v)
  (trait (name ?t) (order ?i))
  (trait-of ?a ?t ~?v)
  ?c <- (candidate ?a)
  ?l <- (left ?n)
  =>
  (retract ?c ?l)
  (assert (left (- ?n 1))))

(defrule tell "says how many animals the answer left"
  (declare (salience 20))
  ?r <- (report ?v)
  (left ?n)
  =>
  (retract ?r)
  (printout t "  -> " ?v "; " ?n (if (= ?n 1) then " animal fits." else " animals fit.") crlf))

;;; Questions

(defrule ask "asks about the next trait unless a skip rule took it"
  (declare (salience -1))
  ?n <- (next-trait ?i)
  (trait (order ?i) (question ?q))
  =>
  (retract ?n)
  (bind ?answer (ask-yes-no ?q))
  (assert (answer ?i ?answer) (report ?answer) (next-trait (+ ?i 1))))

(defrule skip-when-all-lack "nobody left has the trait: nothing to ask"
  (playing)
  (trait (name ?t) (order ?i))
  (not (trait-of ? ?t yes))
  ?n <- (next-trait ?i)
  =>
  (retract ?n)
  (assert (next-trait (+ ?i 1))))

(defrule skip-when-all-have "everybody left has the trait: nothing to ask"
  (playing)
  (trait (name ?t) (order ?i))
  (not (trait-of ? ?t no))
  ?n <- (next-trait ?i)
  =>
  (retract ?n)
  (assert (next-trait (+ ?i 1))))

;;; The end of a round

(defrule guess "one animal left: name it"
  (declare (salience 10))
  ?p <- (playing)
  ?n <- (next-trait ?)
  ?l <- (left 1)
  (candidate ?a)
  =>
  (retract ?p ?n ?l)
  (if (eq (ask-yes-no (str-cat "Is it " (article ?a) " " ?a "?")) yes)
   then (printout t "I guessed it!" crlf)
   else (printout t "You win: I do not know your animal." crlf))
  (if (eq (ask-yes-no "Shall we play again?") yes)
   then (assert (start-round))
   else (printout t "Thank you for playing." crlf)))

(defrule no-candidate "no animal fits the answers"
  (declare (salience 10))
  ?p <- (playing)
  ?n <- (next-trait ?)
  ?l <- (left 0)
  =>
  (retract ?p ?n ?l)
  (printout t "None of my animals fits those answers." crlf))

(defrule out-of-questions "two animals that no trait tells apart"
  (declare (salience -10))
  ?p <- (playing)
  ?n <- (next-trait ?i)
  (not (trait (order ?i)))
  ?l <- (left ?)
  =>
  (retract ?p ?n ?l)
  (printout t "I have no question left that tells your animal apart." crlf))

(defrule tidy-candidate
  (declare (salience 40))
  ?c <- (candidate ?)
  (not (playing))
  =>
  (retract ?c))

(defrule tidy-trait
  (declare (salience 40))
  ?f <- (trait-of ?a ? ?)
  (not (candidate ?a))
  =>
  (retract ?f))

(defrule tidy-answer
  (declare (salience 40))
  ?f <- (answer ? ?)
  (not (playing))
  =>
  (retract ?f))

(reset)
(run)
