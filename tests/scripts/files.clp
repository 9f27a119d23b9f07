; Files under logical names, batch files and the capture of standard output.
; Every file is made in the working directory and removed at the end.

; Written, then read back by tokens and by lines. The end-of-file symbol
; would end the script as a top-level value, so reads are printed instead.
(open "files-data.txt" data "w")
(printout data "first line" crlf "42 word" crlf)
(close data)
(open "files-data.txt" data)
(printout t "[" (readline data) "]" crlf)
(printout t (+ (read data) 1) " " (read data) crlf)
(printout t (readline data) " " (read data) crlf)

; Appended to; then overwritten in place at the start, the rest kept.
; Closing a name that is not open does nothing.
(open "files-data.txt" data "a")
(printout data "appended" crlf)
(close data nosuch)
(close nosuch)
(open "files-data.txt" data "r+")
(printout data "FIRST")
(close)
(open "files-data.txt" data)
(printout t (readline data) "|" (readline data) "|" (readline data) "|" (readline data) crlf)
(close)

; A bad mode, and a file that is not there.
(open "files-data.txt" data "rw")
(open "files-missing.txt" data)

; A batch file whose forms span lines, and which gives its own next lines
; to read and readline; what they take is echoed.
(open "files-batch.clp" batch "w")
(printout batch "(deffunction twice (?x)" crlf "   ; a comment with a ( in it" crlf "   (* 2 ?x))" crlf)
(printout batch "(bind ?answer (read))" crlf "21" crlf)
(printout batch "(printout t \"twice \" ?answer \" is \" (twice ?answer) crlf)" crlf)
(printout batch "(printout t \"line: \" (readline) crlf)" crlf "the rest (of it" crlf)
(printout batch "(printout t \"then: \" (readline) crlf)" crlf)
(close batch)
(batch "files-batch.clp")
(twice 5)
(batch "files-missing.clp")

; Dribbled: standard output goes to the file until dribble-off, the result
; of dribble-on included, and comes back afterwards.
(dribble-on "files-dribble.txt")
(printout t "not on the screen" crlf)
(dribble-off)
(printout t "back on the screen" crlf)
(open "files-dribble.txt" dribble)
(printout t "dribbled: " (readline dribble) ", " (readline dribble) ", " (readline dribble) crlf)
(close dribble)

; Removing and renaming give FALSE when they cannot.
(rename "files-data.txt" "files-renamed.txt")
(rename "files-data.txt" "files-other.txt")
(remove "files-data.txt")
(remove "files-renamed.txt")
(remove "files-batch.clp")
(remove "files-dribble.txt")
