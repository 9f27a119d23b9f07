; A whole expert system saved to a file, cleared away, and loaded again;
; facts alone saved and loaded. Every file is removed at the end.
(defmodule MAIN (export deftemplate order))
(defglobal ?*rate* = 3)
(deftemplate order (slot id) (slot qty (type INTEGER) (default 1)))
(deffunction cost (?q) (* ?q ?*rate*))
(deffacts standing (order (id a) (qty 2)))
(defrule price (order (id ?i) (qty ?q)) => (printout t ?i " costs " (cost ?q) crlf))
(defmodule REPORT (import MAIN deftemplate order))
(defrule count (order (id ?i)) => (printout t "reported " ?i crlf))
(set-current-module MAIN)
(reset)
(assert (order (id b) (qty 5)))
(save "saving-system.clp")
(save-facts "saving-all.txt")
(save-facts "saving-orders.txt" order)

; Loading puts back the constructs and what the text asserts; the agenda
; fills by matching, as after any assertion.
(clear)
(load "saving-system.clp")
(list-defmodules)
(facts *)
(run)
(focus REPORT)
(run)

; Facts alone go back into a system that has their templates.
(reset)
(retract *)
(load-facts "saving-orders.txt")
(facts)
(load-facts "saving-missing.txt")

(remove "saving-system.clp")
(remove "saving-all.txt")
(remove "saving-orders.txt")
