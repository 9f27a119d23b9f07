; Multifield functions. Positions count from 0; lists print as their items,
; each followed by a blank.
(create$)
(create$ a "b" 1 2.5)
(length$ (create$ a (create$ b c) d))
(printout t (create$ (create$ b c) d) crlf)
(length$ (create$))

; Reading items.
(first$ (create$ x y z))
(first$ (create$))
(rest$ (create$ x y z))
(rest$ (create$))
(nth$ 0 (create$ a))
(nth$ 2 (create$ a b c))
(nth$ 3 (create$ a b c))
(member$ b (create$ a b c b))
(member$ "b" (create$ a b c))
(member$ a (create$))
(member c a b c)
(member 1 1.0 "1")

; Deleting, replacing and taking a part.
(delete$ (create$ a b c d) 1 2)
(delete$ (create$ a b c d) 3 10)
(delete$ (create$ a b c d) -5 0)
(delete$ (create$ a b) 1 0)
(replace$ (create$ a b c d) 1 2 x y)
(replace$ (create$ a b c) 0 0)
(replace$ (create$ a b) 4 5 x)
(subseq$ (create$ a b c d) 1 2)
(subseq$ (create$ a b c d) 2 1)
(subseq$ (create$ a b c d) 2 4)

; Inserting: later values stand before earlier ones.
(insert$ (create$ a b) 1 x y z)
(insert$ (create$ a b) 2 (create$ c d))
(insert$ (create$ a b) 3 x)

; The argument's list stays as it was, bound to a variable or in a slot.
(bind ?list (create$ a b))
(insert$ ?list 0 new)
?list
(deftemplate basket (multislot items))
(assert (basket (items apple pear)))
(defrule extend
  (basket (items $?items))
  =>
  (printout t (insert$ $?items 1 plum) " from " $?items crlf))
(run)
(facts)

; Words and strings.
(explode$ "  one  two	three  ")
(explode$ "1 2.5 -3")
(eq (nth$ 0 (explode$ "42")) 42)
(explode$ "")
(implode$ (create$ a "b c" 1 2.5))
(implode$ (create$))
(implode$ (create$ a (create$ b)))
(deffunction words (?text)
  (bind ?count 0)
  (foreach ?word (explode$ ?text) (bind ?count (+ ?count 1)))
  ?count)
(words " the quick  brown fox ")

; Subsets.
(subsetp (create$ c a) (create$ a b c))
(subsetp (create$ a z) (create$ a b c))
(subsetp b (create$ a b c))
(subsetp (create$) (create$))
(subsetp a b)

; Arguments of the wrong kind or number.
(length$ abc)
(nth$ x (create$ a))
(member$ a)
(first$ (create$ a) (create$ b))
