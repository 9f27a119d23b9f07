; The saved session loaded again: its facts wait on the agenda, and the
; global keeps its definition; a reset brings the fact set back.
(facts)
(run)
(focus REPORT)
(run)
(reset)
(run)
