; The fan controller: how fast should each room's fan turn?
;
;   ./build/release/tavo examples/fan.clp
;
; Temperature, humidity and fan speed are fuzzy types: each has a universe
; of discourse and terms such as warm, humid or fast. A room's crisp
; readings match every term to some degree, so several rules fire for one
; room, each as strongly as its conditions hold. The speed each rule
; asserts is cut at that strength (the minimum correlation), and the
; speeds asserted for one room merge into one fact, their union (min-max
; inference). Last, each room's speed is defuzzified into the number of
; revolutions the fan is set to: the centre of gravity of the merged set.

(deftype temperature extends (type FUZZY) (range 0 40) (units C)
  (values (term cold ((0 1) (15 0)))
          (term warm ((10 0) (20 1) (30 0)))
          (term hot ((25 0) (35 1)))))

(deftype humidity extends (type FUZZY) (range 0 100) (units %)
  (values (term dry ((0 1) (50 0)))
          (term humid ((40 0) (100 1)))))

(deftype speed extends (type FUZZY) (range 0 2000) (units rpm)
  (values (term still ((0 1) (400 0)))
          (term slow ((200 0) (600 1) (1000 0)))
          (term fast ((800 0) (2000 1)))))

(deftemplate room (slot name) (slot temperature (type temperature)) (slot humidity (type humidity)))
(deftemplate fan (slot room) (slot speed (type speed)))

(deffacts rooms
  (room (name kitchen) (temperature 27) (humidity 70))
  (room (name study) (temperature 18) (humidity 30))
  (room (name cellar) (temperature 8) (humidity 85))
  (room (name attic) (temperature 36) (humidity 90)))

(defrule cold-room
  (room (name ?r) (temperature cold))
  =>
  (assert (fan (room ?r) (speed still))))

(defrule warm-dry-room
  (room (name ?r) (temperature warm) (humidity dry))
  =>
  (assert (fan (room ?r) (speed slow))))

(defrule warm-humid-room
  (room (name ?r) (temperature warm) (humidity humid))
  =>
  (assert (fan (room ?r) (speed somewhat fast))))

(defrule hot-room
  (room (name ?r) (temperature hot))
  =>
  (assert (fan (room ?r) (speed fast))))

(defrule sweltering-room
  (room (name ?r) (temperature very hot) (humidity very humid))
  =>
  (assert (fan (room ?r) (speed extremely fast))))

(defrule set-the-fan
  (declare (salience -10))
  (fan (room ?r) (speed ?s))
  =>
  (printout t ?r ": " (format nil "%d" (integer (moment-defuzzify ?s))) " rpm" crlf))

(reset)
(run)
