; run as "tavo -f batchfirst.clp": the file is batched into the session,
; then the forms of standard input (batchfirst.in) go on in the same engine
(deftemplate visitor (slot name))
(defrule greet (visitor (name ?n)) => (printout t "hello " ?n crlf))
(printout t "knowledge loaded" crlf)
