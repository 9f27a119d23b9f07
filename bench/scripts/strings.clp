; String functions in a deffunction loop of 100,000 passes.
(deffunction string-loop (?n)
  (bind ?total 0)
  (bind ?i 0)
  (while (< ?i ?n) do
    (bind ?s (str-cat "item-" ?i "-value"))
    (bind ?t (upcase (sub-string 1 8 ?s)))
    (bind ?total (+ ?total (str-length ?t)))
    (bind ?i (+ ?i 1)))
  ?total)
(printout t (string-loop 100000) crlf)
