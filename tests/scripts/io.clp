; Formatted output and reading from standard input.
(format nil "%d-%s" 3 x)
(format t "%d items%n" 7)
(deffunction ask (?prompt)
   (printout t ?prompt "? ")
   (readline))
(ask "name")
(read)
(+ (read) 1)
; An empty line reads as an empty string; with the input used up, readline
; gives the end-of-file symbol, as read does.
(printout t "[" (readline) "]" crlf)
(printout t (eq (readline) EOF) " " (eq (read) EOF) crlf)
