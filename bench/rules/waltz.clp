; Line labelling: a line drawing of blocks, points and the lines between
; them, is read as a scene of trihedral solids. Every line becomes two
; directed edges, every point a junction classified by the angles between
; its edges as L, fork, arrow or T; each junction is offered the labellings
; that such a corner can show, the outline of the drawing is fixed as
; occluding, and a labelling of a junction is dropped as soon as a
; neighbour has no labelling that agrees with it on their common line. When
; nothing more can be dropped, every junction left with one labelling
; labels its edges, a check compares the two ends of every line, and a
; summary counts junctions and labels. The drawing comes from a generated
; file loaded after this one (waltz_gen.py).
;
; Labels of an edge, seen from the junction it leaves:
;   +    convex edge         -    concave edge
;   out  occluding edge, its arrow pointing away from the junction
;   in   occluding edge, its arrow pointing at the junction
; Walking along an arrow, the occluding surface is on the right. So a line
; labelled out at one end is in at the other, and + and - are the same at
; both ends.
;
; Bearings are in degrees, counterclockwise from the x axis. The edges of a
; junction are listed counterclockwise (e1, e2, e3):
;   L      e2 less than 180 degrees on from e1
;   arrow  the turn from e3 back to e1 is more than 180 degrees: e1 and e3
;          are the barbs, e2 the shaft
;   T      the turn from e3 back to e1 is a straight angle: e1 and e3 are
;          the bar, e2 the stem
;   fork   every turn less than 180 degrees; e1 has the smallest bearing
;
; The phases are modules, put on the focus stack by MAIN's start rule: each
; runs to quiescence before the next. Counts go through store and fetch.

(defmodule MAIN (export ?ALL))

(deftemplate point (slot id) (slot x) (slot y))
(deftemplate line (slot from) (slot to))
(deftemplate edge (slot from) (slot to) (slot angle) (slot label (default none)))
(deftemplate junction (slot at) (slot type) (slot e1) (slot e2) (slot e3 (default none)))
; One labelling that a junction of a type can show, edge by edge.
(deftemplate labelling (slot type) (slot id) (slot l1) (slot l2) (slot l3 (default none)))
; A labelling still open to a junction, and its label for one edge.
(deftemplate choice (slot at) (slot id))
(deftemplate option (slot at) (slot choice) (slot to) (slot label))
(deftemplate offer (slot at) (slot choice) (slot to) (slot label))
(deftemplate dead (slot at) (slot choice))
; An edge of the drawing's outline, walked clockwise.
(deftemplate outer (slot from) (slot to))
(deftemplate propagated)
; What a label reads as from the other end of its line, and what it counts as.
(deftemplate meaning (slot label) (slot converse) (slot kind))

(deffacts MAIN::labels
  (meaning (label +) (converse +) (kind convex))
  (meaning (label -) (converse -) (kind concave))
  (meaning (label in) (converse out) (kind occluding))
  (meaning (label out) (converse in) (kind occluding))
  (meaning (label none) (converse none) (kind unlabelled)))

; The corners a trihedral solid can show, in the edge order above.
(deffacts MAIN::catalogue
  ; L: both lines outline, the solid inside the corner or outside it; an
  ; outline line beside a convex edge, the solid outside the corner; beside
  ; a concave one, the solid inside the corner and resting on another
  (labelling (type L) (id 1) (l1 in) (l2 out))
  (labelling (type L) (id 2) (l1 out) (l2 in))
  (labelling (type L) (id 3) (l1 +) (l2 in))
  (labelling (type L) (id 4) (l1 out) (l2 +))
  (labelling (type L) (id 5) (l1 -) (l2 out))
  (labelling (type L) (id 6) (l1 in) (l2 -))
  ; fork: a corner seen from outside or from inside, or a concave edge
  ; between two outline lines
  (labelling (type fork) (id 7) (l1 +) (l2 +) (l3 +))
  (labelling (type fork) (id 8) (l1 -) (l2 -) (l3 -))
  (labelling (type fork) (id 9) (l1 -) (l2 out) (l3 in))
  (labelling (type fork) (id 10) (l1 in) (l2 -) (l3 out))
  (labelling (type fork) (id 11) (l1 out) (l2 in) (l3 -))
  ; arrow: a convex corner on the outline, convex barbs around a concave
  ; shaft, or concave barbs around a convex one
  (labelling (type arrow) (id 12) (l1 in) (l2 +) (l3 out))
  (labelling (type arrow) (id 13) (l1 +) (l2 -) (l3 +))
  (labelling (type arrow) (id 14) (l1 -) (l2 +) (l3 -))
  ; T: the bar occludes whatever the stem is
  (labelling (type T) (id 15) (l1 out) (l2 +) (l3 in))
  (labelling (type T) (id 16) (l1 out) (l2 -) (l3 in))
  (labelling (type T) (id 17) (l1 out) (l2 in) (l3 in))
  (labelling (type T) (id 18) (l1 out) (l2 out) (l3 in)))

; Two bearings closer than this are taken as one (degrees).
(defglobal ?*slack* = 0.001)

; A deffunction runs in a scope below its caller's, and bind changes the
; nearest binding of its name up that chain, a firing rule's variables
; included; so these functions bind nothing but their own parameters.

; A bearing brought into 0 up to 360.
(deffunction whole-turn (?angle)
  (if (< ?angle 0) then (+ ?angle 360) else ?angle))

; The bearing of the second point seen from the first.
(deffunction bearing (?x1 ?y1 ?x2 ?y2)
  (whole-turn (rad-deg (atan2 (- ?x2 ?x1) (- ?y2 ?y1)))))

; The counterclockwise turn from one bearing to another, from 0 up to 360.
(deffunction left-turn (?from ?to)
  (whole-turn (- ?to ?from)))

; The clockwise turn from one bearing to another, more than 0 and up to
; 360: turning back onto the same bearing is a whole turn.
(deffunction right-turn (?from ?to)
  (- 360 (left-turn ?from ?to)))

(deffunction count-of (?key)
  (if (integerp (fetch ?key)) then (fetch ?key) else 0))

(deffunction tally (?key)
  (store ?key (+ (count-of ?key) 1)))

(defrule MAIN::start
  =>
  (clear-storage)
  (focus LINES JUNCTIONS BOUNDARY PROPAGATE LABEL CHECK REPORT))

; LINES: each line becomes an edge from each of its ends, with its bearing.

(defmodule LINES (import MAIN ?ALL))

(defrule LINES::split
  (line (from ?a) (to ?b))
  (point (id ?a) (x ?xa) (y ?ya))
  (point (id ?b) (x ?xb) (y ?yb))
  =>
  (assert (edge (from ?a) (to ?b) (angle (bearing ?xa ?ya ?xb ?yb)))
          (edge (from ?b) (to ?a) (angle (bearing ?xb ?yb ?xa ?ya)))))

; JUNCTIONS: the type of each point from the turns between its edges, and
; the labellings of that type offered to it.

(defmodule JUNCTIONS (import MAIN ?ALL))

(defrule JUNCTIONS::ell
  (edge (from ?p) (to ?a) (angle ?ta))
  (edge (from ?p) (to ?b&~?a) (angle ?tb))
  (not (edge (from ?p) (to ~?a&~?b)))
  (test (< (left-turn ?ta ?tb) (- 180 ?*slack*)))
  =>
  (assert (junction (at ?p) (type L) (e1 ?a) (e2 ?b))))

(defrule JUNCTIONS::arrow
  (edge (from ?p) (to ?a) (angle ?ta))
  (edge (from ?p) (to ?b&~?a) (angle ?tb))
  (edge (from ?p) (to ?c&~?a&~?b) (angle ?tc))
  (not (edge (from ?p) (to ~?a&~?b&~?c)))
  (test (< (+ (left-turn ?ta ?tb) (left-turn ?tb ?tc)) 360))
  (test (> (left-turn ?tc ?ta) (+ 180 ?*slack*)))
  =>
  (assert (junction (at ?p) (type arrow) (e1 ?a) (e2 ?b) (e3 ?c))))

(defrule JUNCTIONS::tee
  (edge (from ?p) (to ?a) (angle ?ta))
  (edge (from ?p) (to ?b&~?a) (angle ?tb))
  (edge (from ?p) (to ?c&~?a&~?b) (angle ?tc))
  (not (edge (from ?p) (to ~?a&~?b&~?c)))
  (test (< (+ (left-turn ?ta ?tb) (left-turn ?tb ?tc)) 360))
  (test (<= (abs (- (left-turn ?tc ?ta) 180)) ?*slack*))
  =>
  (assert (junction (at ?p) (type T) (e1 ?a) (e2 ?b) (e3 ?c))))

(defrule JUNCTIONS::fork
  (edge (from ?p) (to ?a) (angle ?ta))
  (edge (from ?p) (to ?b&~?a) (angle ?tb&:(> ?tb ?ta)))
  (edge (from ?p) (to ?c&~?a&~?b) (angle ?tc&:(> ?tc ?ta)))
  (not (edge (from ?p) (to ~?a&~?b&~?c)))
  (test (< (+ (left-turn ?ta ?tb) (left-turn ?tb ?tc)) 360))
  (test (< (max (left-turn ?ta ?tb) (left-turn ?tb ?tc) (left-turn ?tc ?ta)) (- 180 ?*slack*)))
  =>
  (assert (junction (at ?p) (type fork) (e1 ?a) (e2 ?b) (e3 ?c))))

(defrule JUNCTIONS::offer-two
  (junction (at ?p) (type L) (e1 ?a) (e2 ?b))
  (labelling (type L) (id ?i) (l1 ?x) (l2 ?y))
  =>
  (assert (choice (at ?p) (id ?i))
          (option (at ?p) (choice ?i) (to ?a) (label ?x))
          (option (at ?p) (choice ?i) (to ?b) (label ?y))))

(defrule JUNCTIONS::offer-three
  (junction (at ?p) (type ?t&~L) (e1 ?a) (e2 ?b) (e3 ?c))
  (labelling (type ?t) (id ?i) (l1 ?x) (l2 ?y) (l3 ?z))
  =>
  (assert (choice (at ?p) (id ?i))
          (option (at ?p) (choice ?i) (to ?a) (label ?x))
          (option (at ?p) (choice ?i) (to ?b) (label ?y))
          (option (at ?p) (choice ?i) (to ?c) (label ?z))))

; BOUNDARY: the outline, walked clockwise from the lowest of the leftmost
; points. The drawing stays on the right, so at each point the walk takes
; the edge that turns least clockwise from the way it came in, which is the
; sharpest turn to the left; from the first point it leaves as if it had
; come in from the west.

(defmodule BOUNDARY (import MAIN ?ALL))

(defrule BOUNDARY::start
  (point (id ?s) (x ?x) (y ?y))
  (not (point (x ?x2&:(< ?x2 ?x))))
  (not (point (x ?x) (y ?y2&:(< ?y2 ?y))))
  (edge (from ?s) (to ?k) (angle ?t))
  (not (edge (from ?s) (angle ?u&:(< (right-turn 180 ?u) (right-turn 180 ?t)))))
  =>
  (assert (outer (from ?s) (to ?k))))

(defrule BOUNDARY::follow
  (outer (from ?p) (to ?j))
  (edge (from ?j) (to ?p) (angle ?back))
  (edge (from ?j) (to ?k) (angle ?t))
  (not (edge (from ?j) (angle ?u&:(< (right-turn ?back ?u) (right-turn ?back ?t)))))
  (not (outer (from ?j) (to ?k)))
  =>
  (assert (outer (from ?j) (to ?k))))

; PROPAGATE: the outline occludes the background, so its edges point
; clockwise; a labelling that disagrees, or that gives a line a label that
; no labelling left at the line's other end offers, is dropped. Dropping
; goes first, so that a labelling is found wanting once.
;
; A pattern under not counts only the facts that come to match it after
; the partial match it blocks has formed: facts that were there before
; block it at once but are not counted, so the retraction of one of them
; lets it through while others still match. So the facts that support an
; option, its offers, are made here from the options, after every option
; is in place, and each option counts all of its supporters. The other
; negations meet facts that no rule retracts while their module can still
; fire, or wait for them to settle (LABEL).

(defmodule PROPAGATE (import MAIN ?ALL))

(defrule PROPAGATE::offer
  (declare (salience 20))
  (option (at ?a) (choice ?c) (to ?b) (label ?l))
  =>
  (assert (offer (at ?a) (choice ?c) (to ?b) (label ?l))))

(defrule PROPAGATE::outline-leaves
  (outer (from ?a) (to ?b))
  (option (at ?a) (choice ?c) (to ?b) (label ~out))
  =>
  (assert (dead (at ?a) (choice ?c))))

(defrule PROPAGATE::outline-arrives
  (outer (from ?a) (to ?b))
  (option (at ?b) (choice ?c) (to ?a) (label ~in))
  =>
  (assert (dead (at ?b) (choice ?c))))

(defrule PROPAGATE::unsupported
  (option (at ?a) (choice ?c) (to ?b) (label ?l))
  (meaning (label ?l) (converse ?m))
  (not (offer (at ?b) (to ?a) (label ?m)))
  =>
  (assert (dead (at ?a) (choice ?c))))

(defrule PROPAGATE::drop-option
  (declare (salience 10))
  (dead (at ?a) (choice ?c))
  ?o <- (option (at ?a) (choice ?c))
  =>
  (retract ?o))

(defrule PROPAGATE::drop-offer
  (declare (salience 10))
  (dead (at ?a) (choice ?c))
  ?o <- (offer (at ?a) (choice ?c))
  =>
  (retract ?o))

(defrule PROPAGATE::drop-choice
  (declare (salience 10))
  (dead (at ?a) (choice ?c))
  ?o <- (choice (at ?a) (id ?c))
  =>
  (retract ?o))

(defrule PROPAGATE::done
  (declare (salience -10))
  =>
  (assert (propagated)))

; LABEL: a junction left with one labelling labels its edges; one with
; none or with several is reported. The rules wait for the end of
; propagation, so that their negations meet the choices as they stay.

(defmodule LABEL (import MAIN ?ALL))

(defrule LABEL::settle
  (propagated)
  (choice (at ?a) (id ?c))
  (not (choice (at ?a) (id ~?c)))
  (option (at ?a) (choice ?c) (to ?b) (label ?l))
  ?e <- (edge (from ?a) (to ?b) (label none))
  =>
  (modify ?e (label ?l)))

(defrule LABEL::impossible
  (propagated)
  (junction (at ?a) (type ?t))
  (not (choice (at ?a)))
  =>
  (tally problems)
  (printout t "No labelling fits the " ?t " junction at point " ?a crlf))

(defrule LABEL::ambiguous
  (propagated)
  (junction (at ?a) (type ?t))
  (choice (at ?a) (id ?low))
  (not (choice (at ?a) (id ?i&:(< ?i ?low))))
  (choice (at ?a) (id ?high&:(> ?high ?low)))
  (not (choice (at ?a) (id ?j&:(> ?j ?high))))
  =>
  (tally problems)
  (printout t "The " ?t " junction at point " ?a " keeps labellings " ?low " to " ?high crlf))

; CHECK: the two ends of every line must agree, and every point must be a
; junction of a known type.

(defmodule CHECK (import MAIN ?ALL))

(defrule CHECK::disagree
  (edge (from ?a) (to ?b&:(> ?b ?a)) (label ?l&~none))
  (edge (from ?b) (to ?a) (label ?m&~none))
  (meaning (label ?l) (converse ~?m))
  =>
  (tally problems)
  (printout t "Line " ?a "-" ?b " is " ?l " at " ?a " but " ?m " at " ?b crlf))

(defrule CHECK::no-type
  (point (id ?p))
  (not (junction (at ?p)))
  =>
  (tally problems)
  (printout t "Point " ?p " is no L, fork, arrow or T junction" crlf))

; REPORT: counts of junctions by type, of lines by label (each line once,
; by the label at its lower-numbered end), and of the outline.

(defmodule REPORT (import MAIN ?ALL))

(defrule REPORT::junction
  (junction (type ?t))
  =>
  (tally ?t))

(defrule REPORT::line
  (edge (from ?a) (to ?b&:(> ?b ?a)) (label ?l))
  (meaning (label ?l) (kind ?k))
  =>
  (tally ?k))

(defrule REPORT::outline
  (outer)
  =>
  (tally outline))

(defrule REPORT::summary
  (declare (salience -10))
  =>
  (printout t "Junctions: " (count-of L) " L, " (count-of fork) " fork, "
              (count-of arrow) " arrow, " (count-of T) " T" crlf)
  (printout t "Lines: " (count-of convex) " convex (+), " (count-of concave) " concave (-), "
              (count-of occluding) " occluding (arrows), " (count-of unlabelled) " unlabelled" crlf)
  (printout t "Outline: " (count-of outline) " lines" crlf)
  (printout t "Problems: " (count-of problems) crlf))
