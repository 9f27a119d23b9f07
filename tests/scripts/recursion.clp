; Deep recursion works; runaway recursion is a clear error that try catches,
; and the engine carries on afterwards.
(deffunction depth (?n) (if (= ?n 0) then 0 else (+ 1 (depth (- ?n 1)))))
(printout t (depth 10000) crlf)
(printout t (depth 15000) crlf)
; Arguments are evaluated in the new frame, where the parameters before them
; are already bound: the sum goes first so that it reads the caller's ?n.
(deffunction count-down (?acc ?n)
  (if (< ?n 1) then ?acc else (count-down (+ ?acc ?n) (- ?n 1))))
(printout t (count-down 0 10000) crlf)
(deffunction forever (?n) (forever (+ ?n 1)))
(printout t (try (forever 0) catch (sub-string 1 22 ?__ERROR)) crlf)
(printout t (depth 100) crlf)
