; The monkey and the bananas: a planner that works backwards from a goal.
;
;   ./build/release/tavo examples/monkey.clp
;
; A hungry monkey wakes on the couch by the door. Bananas hang from the
; ceiling in the centre of the room, out of reach from the floor. By the
; window stands a chest the monkey could climb, but a crate lies on it.
;
; The monkey wants to eat the bananas. Each goal it cannot reach at once
; sets up the goals that stand in the way: to eat the bananas it has to
; hold them; to hold them it has to stand on the chest below them; to push
; the chest it has to clear it and stand beside it; and so on. Whenever a
; goal can be met, the monkey acts. The newest goal is always pursued first.
;
; Salience orders the work:
;    30  describing the room, once (32 and 31 come first)
;    20  dropping goals that are already met
;    10  acting
;     0  setting up sub-goals

(deftemplate monkey
  (slot at (type SYMBOL))
  (slot on (type SYMBOL) (default floor))
  (slot holding (type SYMBOL) (default nothing)))

(deftemplate thing "an object in the room; on is floor, ceiling or another thing"
  (slot name (type SYMBOL))
  (slot at (type SYMBOL))
  (slot on (type SYMBOL) (default floor))
  (slot climbable (allowed-values yes no) (default no)))

(deftemplate goal "something the monkey wants done"
  (slot action (allowed-values eat hold move unload climb climb-down walk))
  (slot object (type SYMBOL) (default none))
  (slot to (type SYMBOL) (default none))
  (slot depth (type INTEGER) (default 0)))

(deffacts room
  (monkey (at door) (on couch))
  (thing (name couch) (at door))
  (thing (name bananas) (at centre) (on ceiling))
  (thing (name chest) (at window) (climbable yes))
  (thing (name crate) (at window) (on chest))
  (goal (action eat) (object bananas))
  (describe-room))

(defglobal ?*step* = 0)

(deffunction indent (?depth)
  "two blanks for each level of a goal"
  (bind ?text "")
  (while (> ?depth 0) do
    (bind ?text (str-cat ?text "  "))
    (bind ?depth (- ?depth 1)))
  ?text)

(deffunction describe (?action ?object ?to)
  (if (eq ?action eat) then (return (str-cat "eat the " ?object)))
  (if (eq ?action hold) then (return (str-cat "get hold of the " ?object)))
  (if (eq ?action move) then (return (str-cat "push the " ?object " to the " ?to)))
  (if (eq ?action unload) then (return (str-cat "take the " ?object " off")))
  (if (eq ?action climb) then (return (str-cat "climb onto the " ?object)))
  (if (eq ?action climb-down) then (return "get down to the floor"))
  (str-cat "walk to the " ?to))

(deffunction new-goal (?depth ?action ?object ?to)
  "sets up a goal one level below the goal that needs it, and says so"
  (printout t (indent ?depth) "Goal: " (describe ?action ?object ?to) crlf)
  (assert (goal (action ?action) (object ?object) (to ?to) (depth ?depth))))

(deffunction act (?text)
  "does one step of the plan"
  (bind ?*step* (+ ?*step* 1))
  (printout t "Step " ?*step* ": the monkey " ?text "." crlf))

;;; The room as it is

(defrule describe-monkey
  (declare (salience 32))
  (describe-room)
  (monkey (at ?at) (on ?on))
  =>
  (printout t "The monkey is on the " ?on " at the " ?at "." crlf))

(defrule describe-thing
  (declare (salience 31))
  (describe-room)
  (thing (name ?name) (at ?at) (on ?on))
  =>
  (printout t "On the " ?on " at the " ?at ": the " ?name "." crlf))

(defrule describe-goal
  (declare (salience 30))
  ?d <- (describe-room)
  (goal (action ?action) (object ?object) (to ?to) (depth 0))
  =>
  (retract ?d)
  (printout t crlf "Goal: " (describe ?action ?object ?to) crlf))

;;; Eating

(defrule eat
  (declare (salience 10))
  ?g <- (goal (action eat) (object ?x))
  ?m <- (monkey (holding ?x))
  ?t <- (thing (name ?x))
  =>
  (retract ?g ?t)
  (modify ?m (holding nothing))
  (act (str-cat "eats the " ?x))
  (printout t "Done in " ?*step* " steps." crlf))

(defrule want-to-hold
  (goal (action eat) (object ?x) (depth ?d))
  (monkey (holding ~?x))
  (not (goal (action hold) (object ?x)))
  =>
  (new-goal (+ ?d 1) hold ?x none))

;;; Holding something

(defrule holding "the goal of holding something is met"
  (declare (salience 20))
  ?g <- (goal (action hold) (object ?x))
  (monkey (holding ?x))
  =>
  (retract ?g))

(defrule grab-from-above
  (declare (salience 10))
  ?g <- (goal (action hold) (object ?x))
  ?t <- (thing (name ?x) (at ?at) (on ceiling))
  ?m <- (monkey (at ?at) (on ?stand&~floor) (holding nothing))
  (thing (name ?stand) (at ?at) (climbable yes))
  =>
  (retract ?g)
  (modify ?t (on monkey))
  (modify ?m (holding ?x))
  (act (str-cat "reaches up from the " ?stand " and grabs the " ?x)))

(defrule fetch-something-to-climb "no climbable thing stands below"
  (goal (action hold) (object ?x) (depth ?d))
  (thing (name ?x) (at ?at) (on ceiling))
  (thing (name ?stand) (at ~?at) (climbable yes))
  (not (goal (action move) (object ?stand)))
  =>
  (new-goal (+ ?d 1) move ?stand ?at))

(defrule climb-to-reach "a climbable thing stands below: get on it"
  (goal (action hold) (object ?x) (depth ?d))
  (thing (name ?x) (at ?at) (on ceiling))
  (thing (name ?stand) (at ?at) (climbable yes))
  (monkey (on ~?stand))
  (not (goal (action climb) (object ?stand)))
  =>
  (new-goal (+ ?d 1) climb ?stand none))

;;; Pushing a thing somewhere

(defrule moved
  (declare (salience 20))
  ?g <- (goal (action move) (object ?x) (to ?to))
  (thing (name ?x) (at ?to))
  =>
  (retract ?g))

(defrule push
  (declare (salience 10))
  ?g <- (goal (action move) (object ?x) (to ?to))
  ?t <- (thing (name ?x) (at ?from&~?to) (on floor))
  ?m <- (monkey (at ?from) (on floor) (holding nothing))
  (not (thing (on ?x)))
  =>
  (retract ?g)
  (modify ?t (at ?to))
  (modify ?m (at ?to))
  (act (str-cat "pushes the " ?x " from the " ?from " to the " ?to)))

(defrule clear-before-pushing "nothing may ride on what is pushed"
  (goal (action move) (object ?x) (depth ?d))
  (thing (name ?load) (on ?x))
  (not (goal (action unload) (object ?load)))
  =>
  (new-goal (+ ?d 1) unload ?load none))

(defrule go-to-push
  (goal (action move) (object ?x) (to ?to) (depth ?d))
  (thing (name ?x) (at ?from&~?to))
  (monkey (at ~?from))
  (not (goal (action walk) (to ?from)))
  =>
  (new-goal (+ ?d 1) walk none ?from))

;;; Taking a thing off another

(defrule unloaded
  (declare (salience 20))
  ?g <- (goal (action unload) (object ?x))
  (thing (name ?x) (on floor))
  =>
  (retract ?g))

(defrule take-off
  (declare (salience 10))
  ?g <- (goal (action unload) (object ?x))
  ?t <- (thing (name ?x) (at ?at) (on ?base&~floor&~ceiling))
  (monkey (at ?at) (on floor) (holding nothing))
  =>
  (retract ?g)
  (modify ?t (on floor))
  (act (str-cat "lifts the " ?x " off the " ?base " and sets it on the floor")))

(defrule go-to-unload
  (goal (action unload) (object ?x) (depth ?d))
  (thing (name ?x) (at ?at))
  (monkey (at ~?at))
  (not (goal (action walk) (to ?at)))
  =>
  (new-goal (+ ?d 1) walk none ?at))

;;; Climbing

(defrule climbed
  (declare (salience 20))
  ?g <- (goal (action climb) (object ?x))
  (monkey (on ?x))
  =>
  (retract ?g))

(defrule climb
  (declare (salience 10))
  ?g <- (goal (action climb) (object ?x))
  (thing (name ?x) (at ?at))
  ?m <- (monkey (at ?at) (on floor))
  (not (thing (on ?x)))
  =>
  (retract ?g)
  (modify ?m (on ?x))
  (act (str-cat "climbs onto the " ?x)))

(defrule go-to-climb
  (goal (action climb) (object ?x) (depth ?d))
  (thing (name ?x) (at ?at))
  (monkey (at ~?at))
  (not (goal (action walk) (to ?at)))
  =>
  (new-goal (+ ?d 1) walk none ?at))

(defrule down-first "work on the floor starts with getting down"
  (goal (action unload|move|climb) (object ?x) (depth ?d))
  (monkey (on ?on&~floor&~?x))
  (not (goal (action climb-down)))
  =>
  (new-goal (+ ?d 1) climb-down none none))

;;; Getting down

(defrule down
  (declare (salience 20))
  ?g <- (goal (action climb-down))
  (monkey (on floor))
  =>
  (retract ?g))

(defrule climb-down
  (declare (salience 10))
  ?g <- (goal (action climb-down))
  ?m <- (monkey (on ?on&~floor))
  =>
  (retract ?g)
  (modify ?m (on floor))
  (act (str-cat "climbs down from the " ?on)))

;;; Walking

(defrule arrived
  (declare (salience 20))
  ?g <- (goal (action walk) (to ?to))
  (monkey (at ?to))
  =>
  (retract ?g))

(defrule walk
  (declare (salience 10))
  ?g <- (goal (action walk) (to ?to))
  ?m <- (monkey (at ?from&~?to) (on floor))
  =>
  (retract ?g)
  (modify ?m (at ?to))
  (act (str-cat "walks from the " ?from " to the " ?to)))

(defrule down-to-walk
  (goal (action walk) (depth ?d))
  (monkey (on ~floor))
  (not (goal (action climb-down)))
  =>
  (new-goal (+ ?d 1) climb-down none none))

(defrule stuck "goals remain, but no rule can act on them"
  (declare (salience -10))
  (goal (action ?action) (object ?object) (to ?to))
  =>
  (printout t "Stuck: the monkey cannot " (describe ?action ?object ?to) "." crlf))

(reset)
(run)
