; The five houses: a logic puzzle solved by the matcher alone.
;
;   ./build/release/tavo examples/zebra.clp
;
; Five houses stand in a row, numbered 1 to 5 from the left. In each lives a
; man of a different nation, with a different pet, a different drink, a
; different brand of cigarettes and a house of a different colour:
;
;    1. The Englishman lives in the red house.
;    2. The Spaniard owns the dog.
;    3. Coffee is drunk in the green house.
;    4. The Ukrainian drinks tea.
;    5. The green house is immediately to the right of the ivory house.
;    6. The Old Gold smoker owns snails.
;    7. Kools are smoked in the yellow house.
;    8. Milk is drunk in the middle house.
;    9. The Norwegian lives in the first house.
;   10. The man who smokes Chesterfields lives next to the man with the fox.
;   11. Kools are smoked in the house next to the house where the horse is kept.
;   12. The Lucky Strike smoker drinks orange juice.
;   13. The Japanese smokes Parliaments.
;   14. The Norwegian lives next to the blue house.
;
; Who drinks water? Who owns the zebra?
;
; Every value may stand in every house: 25 values in 5 houses make 125
; facts. One rule asks for a house for each of the 25 values; its patterns
; come in an order that lets each clue cut the partial matches down as soon
; as the values it names are placed, so the search never grows wide.

(deftemplate value "one attribute value of the puzzle"
  (slot kind)
  (slot name))

(deftemplate may-be "a value that might stand in a house"
  (slot kind)
  (slot name)
  (slot house (type INTEGER)))

(deftemplate placed "a value in its house in the solution"
  (slot kind)
  (slot name)
  (slot house (type INTEGER)))

(deffacts puzzle
  (value (kind colour) (name red))       (value (kind colour) (name green))
  (value (kind colour) (name ivory))     (value (kind colour) (name yellow))
  (value (kind colour) (name blue))
  (value (kind nation) (name Englishman)) (value (kind nation) (name Spaniard))
  (value (kind nation) (name Ukrainian)) (value (kind nation) (name Norwegian))
  (value (kind nation) (name Japanese))
  (value (kind pet) (name dog))          (value (kind pet) (name snails))
  (value (kind pet) (name fox))          (value (kind pet) (name horse))
  (value (kind pet) (name zebra))
  (value (kind drink) (name coffee))     (value (kind drink) (name tea))
  (value (kind drink) (name milk))       (value (kind drink) (name orange-juice))
  (value (kind drink) (name water))
  (value (kind smoke) (name Old-Gold))   (value (kind smoke) (name Kools))
  (value (kind smoke) (name Chesterfield)) (value (kind smoke) (name Lucky-Strike))
  (value (kind smoke) (name Parliament))
  (house 1) (house 2) (house 3) (house 4) (house 5))

(defrule spread-values "every value may stand in every house"
  (declare (salience 10))
  (value (kind ?k) (name ?n))
  (house ?h)
  =>
  (assert (may-be (kind ?k) (name ?n) (house ?h))))

(defrule solve
  ; the Norwegian in the first house, milk in the middle one
  (may-be (kind nation) (name Norwegian) (house ?norwegian&1))
  (may-be (kind drink) (name milk) (house ?milk&3))
  ; the colours
  (may-be (kind colour) (name blue) (house ?blue&:(= (abs (- ?blue ?norwegian)) 1)))
  (may-be (kind colour) (name red) (house ?red&~?blue))
  (may-be (kind nation) (name Englishman) (house ?red&~?norwegian))
  (may-be (kind colour) (name green) (house ?green&~?blue&~?red))
  (may-be (kind colour) (name ivory)
          (house ?ivory&~?blue&~?red&~?green&:(= ?green (+ ?ivory 1))))
  (may-be (kind colour) (name yellow) (house ?yellow&~?blue&~?red&~?green&~?ivory))
  (may-be (kind drink) (name coffee) (house ?green&~?milk))
  (may-be (kind smoke) (name Kools) (house ?yellow))
  ; the nations
  (may-be (kind nation) (name Ukrainian) (house ?ukrainian&~?norwegian&~?red))
  (may-be (kind drink) (name tea) (house ?ukrainian&~?milk&~?green))
  (may-be (kind nation) (name Japanese) (house ?japanese&~?norwegian&~?red&~?ukrainian))
  (may-be (kind nation) (name Spaniard)
          (house ?spaniard&~?norwegian&~?red&~?ukrainian&~?japanese))
  (may-be (kind smoke) (name Parliament) (house ?japanese&~?yellow))
  (may-be (kind pet) (name dog) (house ?spaniard))
  ; the drinks
  (may-be (kind drink) (name orange-juice) (house ?juice&~?milk&~?green&~?ukrainian))
  (may-be (kind drink) (name water) (house ?water&~?milk&~?green&~?ukrainian&~?juice))
  ; the smokes
  (may-be (kind smoke) (name Lucky-Strike) (house ?juice&~?yellow&~?japanese))
  (may-be (kind smoke) (name Old-Gold) (house ?oldgold&~?yellow&~?japanese&~?juice))
  (may-be (kind smoke) (name Chesterfield)
          (house ?chesterfield&~?yellow&~?japanese&~?juice&~?oldgold))
  ; the pets
  (may-be (kind pet) (name snails) (house ?oldgold&~?spaniard))
  (may-be (kind pet) (name horse)
          (house ?horse&~?spaniard&~?oldgold&:(= (abs (- ?horse ?yellow)) 1)))
  (may-be (kind pet) (name fox)
          (house ?fox&~?spaniard&~?oldgold&~?horse&:(= (abs (- ?fox ?chesterfield)) 1)))
  (may-be (kind pet) (name zebra) (house ?zebra&~?spaniard&~?oldgold&~?horse&~?fox))
  =>
  (printout t "Solved." crlf crlf)
  (assert (placed (kind colour) (name red) (house ?red))
          (placed (kind colour) (name green) (house ?green))
          (placed (kind colour) (name ivory) (house ?ivory))
          (placed (kind colour) (name yellow) (house ?yellow))
          (placed (kind colour) (name blue) (house ?blue))
          (placed (kind nation) (name Englishman) (house ?red))
          (placed (kind nation) (name Spaniard) (house ?spaniard))
          (placed (kind nation) (name Ukrainian) (house ?ukrainian))
          (placed (kind nation) (name Norwegian) (house ?norwegian))
          (placed (kind nation) (name Japanese) (house ?japanese))
          (placed (kind pet) (name dog) (house ?spaniard))
          (placed (kind pet) (name snails) (house ?oldgold))
          (placed (kind pet) (name fox) (house ?fox))
          (placed (kind pet) (name horse) (house ?horse))
          (placed (kind pet) (name zebra) (house ?zebra))
          (placed (kind drink) (name coffee) (house ?green))
          (placed (kind drink) (name tea) (house ?ukrainian))
          (placed (kind drink) (name milk) (house ?milk))
          (placed (kind drink) (name orange-juice) (house ?juice))
          (placed (kind drink) (name water) (house ?water))
          (placed (kind smoke) (name Old-Gold) (house ?oldgold))
          (placed (kind smoke) (name Kools) (house ?yellow))
          (placed (kind smoke) (name Chesterfield) (house ?chesterfield))
          (placed (kind smoke) (name Lucky-Strike) (house ?juice))
          (placed (kind smoke) (name Parliament) (house ?japanese)))
  (printout t (format nil "%-6s %-8s %-11s %-7s %-13s %s" house colour nation pet drink smokes) crlf)
  (assert (print-row 1)))

(defrule print-row "prints the houses one row at a time, from the left"
  ?row <- (print-row ?h)
  (placed (kind colour) (name ?colour) (house ?h))
  (placed (kind nation) (name ?nation) (house ?h))
  (placed (kind pet) (name ?pet) (house ?h))
  (placed (kind drink) (name ?drink) (house ?h))
  (placed (kind smoke) (name ?smoke) (house ?h))
  =>
  (printout t (format nil "%-6d %-8s %-11s %-7s %-13s %s" ?h ?colour ?nation ?pet ?drink ?smoke) crlf)
  (retract ?row)
  (assert (print-row (+ ?h 1))))

(defrule answer "answers the two questions once the table is out"
  (print-row 6)
  (placed (kind drink) (name water) (house ?w))
  (placed (kind nation) (name ?drinker) (house ?w))
  (placed (kind pet) (name zebra) (house ?z))
  (placed (kind nation) (name ?owner) (house ?z))
  =>
  (printout t crlf "The " ?drinker " drinks water." crlf)
  (printout t "The " ?owner " owns the zebra." crlf))

(defrule no-solution
  (declare (salience -10))
  (not (placed))
  =>
  (printout t "The clues contradict each other: no solution." crlf))

(reset)
(run)
