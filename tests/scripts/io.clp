; Formatted output and reading from standard input.
(format nil "%d-%s" 3 x)
(format t "%d items%n" 7)
(deffunction ask (?prompt)
   (printout t ?prompt "? ")
   (readline))
(ask "name")
(read)
(+ (read) 1)
