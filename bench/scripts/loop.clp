; Integer arithmetic and bind in a deffunction loop of 400,000 passes.
(deffunction sum-loop (?n)
  (bind ?s 0)
  (bind ?i 0)
  (while (< ?i ?n) do
    (bind ?s (+ ?s (* ?i 2)))
    (bind ?i (+ ?i 1)))
  ?s)
(printout t (sum-loop 400000) crlf)
