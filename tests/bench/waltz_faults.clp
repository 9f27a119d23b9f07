; The line-labelling rules (bench/rules/waltz.clp, loaded first) on
; drawings they cannot settle, each of which must be reported.

; A block standing on a slab, the slab's back edge passing behind it: the
; block may rest on the slab (its bottom edges concave) or float above it
; (occluding), and nothing in the lines tells which.
(deffacts MAIN::drawing
  (point (id 1) (x 0) (y 0)) (point (id 2) (x 11) (y 0)) (point (id 3) (x 11) (y 2))
  (point (id 4) (x 0) (y 2)) (point (id 5) (x 15) (y 4)) (point (id 6) (x 15) (y 6))
  (point (id 7) (x 4) (y 6))
  (point (id 11) (x 6) (y 3)) (point (id 12) (x 10) (y 3)) (point (id 13) (x 12) (y 5))
  (point (id 14) (x 12) (y 9)) (point (id 15) (x 8) (y 9)) (point (id 16) (x 6) (y 7))
  (point (id 17) (x 10) (y 7)) (point (id 18) (x 6) (y 6)) (point (id 19) (x 12) (y 6))
  (line (from 1) (to 2)) (line (from 2) (to 3)) (line (from 3) (to 4)) (line (from 4) (to 1))
  (line (from 2) (to 5)) (line (from 5) (to 6)) (line (from 3) (to 6)) (line (from 4) (to 7))
  (line (from 7) (to 18)) (line (from 19) (to 6))
  (line (from 11) (to 12)) (line (from 12) (to 13)) (line (from 13) (to 19)) (line (from 19) (to 14))
  (line (from 14) (to 15)) (line (from 15) (to 16)) (line (from 16) (to 18)) (line (from 18) (to 11))
  (line (from 12) (to 17)) (line (from 16) (to 17)) (line (from 17) (to 14)))
(reset)
(run)

; A square with both diagonals: four lines meet in the middle, which no
; trihedral corner shows, and then no corner of the square can be labelled.
(deffacts MAIN::drawing
  (point (id 1) (x 0) (y 0)) (point (id 2) (x 4) (y 0)) (point (id 3) (x 4) (y 4))
  (point (id 4) (x 0) (y 4)) (point (id 5) (x 2) (y 2))
  (line (from 1) (to 2)) (line (from 2) (to 3)) (line (from 3) (to 4)) (line (from 4) (to 1))
  (line (from 1) (to 5)) (line (from 2) (to 5)) (line (from 3) (to 5)) (line (from 4) (to 5)))
(reset)
(run)

; A rectangle crossed by a line from side to side: both T junctions would
; need the background to occlude the rectangle.
(deffacts MAIN::drawing
  (point (id 1) (x 0) (y 0)) (point (id 2) (x 6) (y 0)) (point (id 3) (x 6) (y 2))
  (point (id 4) (x 6) (y 4)) (point (id 5) (x 0) (y 4)) (point (id 6) (x 0) (y 2))
  (line (from 1) (to 2)) (line (from 2) (to 3)) (line (from 3) (to 4)) (line (from 4) (to 5))
  (line (from 5) (to 6)) (line (from 6) (to 1)) (line (from 6) (to 3)))
(reset)
(run)

; A labelled triangle with one end of a line changed: the check finds the
; two ends disagreeing.
(deffacts MAIN::drawing
  (point (id 1) (x 0) (y 0)) (point (id 2) (x 4) (y 0)) (point (id 3) (x 2) (y 3))
  (line (from 1) (to 2)) (line (from 2) (to 3)) (line (from 3) (to 1)))
(reset)
(run)
(assert (edge (from 1) (to 2) (angle 0.0) (label +)))
(focus CHECK)
(run)
