; With --crlf the host writes the engine's own line ends, CR LF, on
; standard output and inside the messages on standard error.
(printout t "first" crlf "second" crlf)
(deftemplate point (slot x))
(assert (point (x 1)))
(facts)
(printout t "no line end")
(printout t crlf)
?*missing*
