; A first knowledge base: globals, deffunctions and output.
(defglobal ?*greeting* = "Hello" ?*audience* = world)

(deffunction greet (?who)
   "Greets one audience"
   (printout t ?*greeting* ", " ?who "!" crlf))

(deffunction factorial (?n)
   "n! by recursion"
   (if (<= ?n 1) then 1 else (* ?n (factorial (- ?n 1)))))

(deffunction table ($?numbers)
   (foreach ?n ?numbers
      (printout t (str-format "%3d! = %d" ?n (factorial ?n)) crlf)))

(greet ?*audience*)
(table 1 5 10)
(factorial 12)
