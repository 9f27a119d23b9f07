; Seating: guests are placed around a table so that neighbours alternate sex
; and share a hobby, by a depth-first search through the rules below; the
; guests come from a generated file loaded after this one (seating_gen.py).
;
; This engine orders activations by salience and by the moment they reach
; the agenda, never by the age of their facts, and a join meets the stored
; seatings in the order of its memory's buckets. So nothing makes the newest
; seating's activations come first; find_seating ends in a test that keeps
; to the newest seating (id one below the count), which gives the search its
; depth-first order while every join does the same work. The rules that
; must wait for their siblings (path_done for make_path, all_done for
; print_results) come first in the file: activations made by one fact
; arrive in the order their rules were defined, and the last on top fires
; first.

(deftemplate guest (slot name) (slot sex) (slot hobby))
(deftemplate last_seat (slot seat))
(deftemplate seating (slot seat1) (slot name1) (slot name2) (slot seat2) (slot id) (slot pid) (slot path_done))
(deftemplate context (slot state))
(deftemplate path (slot id) (slot name) (slot seat))
(deftemplate chosen (slot id) (slot name) (slot hobby))
(deftemplate count (slot c))

(defrule assign_first_seat
  ?f1 <- (context (state start))
  (guest (name ?n))
  ?f3 <- (count (c ?c))
  =>
  (assert (seating (seat1 1) (name1 ?n) (name2 ?n) (seat2 1) (id ?c) (pid 0) (path_done yes)))
  (assert (path (id ?c) (name ?n) (seat 1)))
  (modify ?f3 (c (+ ?c 1)))
  (printout t "seat 1 " ?n " " ?n " 1 " ?c " 0 1" crlf)
  (modify ?f1 (state assign_seats)))

(defrule find_seating
  ?f1 <- (context (state assign_seats))
  (seating (seat1 ?seat1) (seat2 ?seat2) (name2 ?n2) (id ?id) (pid ?pid) (path_done yes))
  (guest (name ?n2) (sex ?s1) (hobby ?h1))
  (guest (name ?g2) (sex ~?s1) (hobby ?h1))
  ?f5 <- (count (c ?c))
  (not (path (id ?id) (name ?g2)))
  (not (chosen (id ?id) (name ?g2) (hobby ?h1)))
  ; Only the newest seating grows: see the note at the top.
  (test (= ?id (- ?c 1)))
  =>
  (assert (seating (seat1 ?seat2) (name1 ?n2) (name2 ?g2) (seat2 (+ ?seat2 1)) (id ?c) (pid ?id) (path_done no)))
  (assert (path (id ?c) (name ?g2) (seat (+ ?seat2 1))))
  (assert (chosen (id ?id) (name ?g2) (hobby ?h1)))
  (modify ?f5 (c (+ ?c 1)))
  (printout t "seat " ?seat2 " " ?n2 " " ?g2 crlf)
  (modify ?f1 (state make_path)))

(defrule path_done
  ?f1 <- (context (state make_path))
  ?f2 <- (seating (path_done no))
  =>
  (modify ?f2 (path_done yes))
  (modify ?f1 (state check_done)))

(defrule make_path
  (context (state make_path))
  (seating (id ?id) (pid ?pid) (path_done no))
  (path (id ?pid) (name ?n1) (seat ?s))
  (not (path (id ?id) (name ?n1)))
  =>
  (assert (path (id ?id) (name ?n1) (seat ?s))))

(defrule are_we_done
  ?f1 <- (context (state check_done))
  (last_seat (seat ?l_seat))
  (seating (seat2 ?l_seat))
  =>
  (printout t crlf "Yes, we are done!!" crlf)
  (modify ?f1 (state print_results)))

(defrule continue
  (declare (salience -1))
  ?f1 <- (context (state check_done))
  =>
  (modify ?f1 (state assign_seats)))

(defrule all_done
  (context (state print_results))
  =>
  (halt))

(defrule print_results
  (context (state print_results))
  (seating (id ?id) (seat2 ?s2))
  (last_seat (seat ?s2))
  ?f4 <- (path (id ?id) (name ?n) (seat ?s))
  =>
  (retract ?f4)
  (printout t ?n " " ?s crlf))
