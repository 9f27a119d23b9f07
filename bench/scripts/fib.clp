; Recursive deffunction calls: (fib 27) makes about 630,000 calls.
(deffunction fib (?n) (if (< ?n 2) then ?n else (+ (fib (- ?n 1)) (fib (- ?n 2)))))
(printout t (fib 27) crlf)
