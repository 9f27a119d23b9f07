; The fuzzy functions: shapes as terms, fuzzy values of a type, their points
; and universe, union and intersection, fuzzy assertion, the engine's fuzzy
; settings, and plots.
(deftype temp extends (type FUZZY) (range 0 100) (units C)
   (values (term cold (z 10 50)) (term warm (pi 50 20)) (term hot (s 50 90))))
(deftemplate reading (slot sensor) (slot t (type temp)))
(deftemplate alarm (slot level (type temp)))

; Shapes and their points.
(get-fs (tri 10 20 40))
(get-fs-length (s 0 10))
(get-fs-value (s 0 10) 5)
(get-fs-value (z 0 10) 2.5)
(get-fs-value (beta 50 20) 70)
(get-fs-x (pi 40 50 70) 0)
(get-fs-variable (tri 1 2 3))

; Terms made by shapes, and values of the type.
(get-fs-value (create-fuzzy-value temp warm) 40)
(get-fs-value (create-fuzzy-value temp very hot) 70)
(get-fs-variable (create-fuzzy-value temp somewhat cold))
(get-u temp)
(get-u-from temp)
(get-u-to temp)
(get-u-units temp)
(moment-defuzzify (create-fuzzy-value temp warm))
(maximum-defuzzify (create-fuzzy-value temp hot))
(get-compatibility-index (create-fuzzy-value temp hot cut 0.3))

; Union and intersection.
(get-fs-value (fuzzy-union (create-fuzzy-value temp cold) (create-fuzzy-value temp hot)) 95)
(get-fs-value (fuzzy-intersection (create-fuzzy-value temp warm) (create-fuzzy-value temp hot)) 60)
(get-fs-value (fuzzy-union-x bounded-sum ((0 0.5) (100 0.5)) ((0 0.25) (100 0.25))) 10)
(fuzzy-union-x strongest (tri 0 1 2) (tri 1 2 3))

; The settings give what they replaced.
(set-fuzzy-inference sum)
(get-fuzzy-inference)
(set-fuzzy-inference min-max)
(set-fuzzy-correlation product)
(set-fuzzy-correlation minimum)
(set-fuzzy-threshold 0)
(get-fuzzy-threshold)
(set-activation-threshold 0.2)
(set-activation-threshold 0)
(set-fuzzy-auto-terms FALSE)
(set-fuzzy-auto-terms TRUE)

; A rule asserts fuzzy facts through the strength of its match; a second
; alarm merges into the first.
(defrule watch (reading (sensor ?s) (t hot))
   =>
   (printout t "alarm from " ?s crlf)
   (fuzzy-assert (alarm (level hot))))
(assert (reading (sensor a) (t 70)))
(assert (reading (sensor b) (t 80)))
(run)
; The alarm from b came first, hot cut at 0.8724, the membership of 80 in
; hot; the one from a, cut at 0.5, merged into it as fact 4, and fact 3 went.
(get-compatibility-index 4)
(get-fs-value 4 95)
(get-compatibility-index 3)
; Unconditional assertion intersects: very hot lies below the cut at 80 and
; above it at 95.
(fuzzy-assert-unconditional min-max (alarm (level very hot)))
(get-fs-value 5 80)
(get-fs-value 5 95)
(fuzzy-assert-unconditional 3 (alarm (level cold)))
(fuzzy-assert warmest (alarm (level cold)))

; Plots: two sets with one character, and a fact's set over its universe.
(plot-fuzzy-value t "*" 0 100 (create-fuzzy-value temp cold) (create-fuzzy-value temp hot))
(plot-fuzzy-value t "+" 0 100 5)
