; The car adviser: why won't it start, or why does it run badly?
;
;   ./build/release/tavo examples/diagnosis.clp
;
; The adviser asks one question at a time, each from a fixed list of
; answers, and every answer brings the rules that wait for it: one asks the
; next question, one draws a conclusion about where the fault lies, and in
; the end one gives the advice. After the advice it offers to look at
; another car.
;
; Salience orders the work:
;    30  forgetting the last car's answers
;    20  starting a consultation
;    10  giving the advice
;     0  reasoning from the answers and asking

(deftemplate question "what the adviser may ask"
  (slot id (type SYMBOL))
  (slot text (type STRING))
  (multislot choices))

(deftemplate answer
  (slot id (type SYMBOL))
  (slot value (type SYMBOL)))

(deftemplate advice
  (slot fault (type STRING))
  (slot remedy (type STRING)))

(deffacts questions
  (question (id starts) (text "Does the engine start?")
            (choices yes no))
  (question (id key) (text "What happens when you turn the key?")
            (choices nothing click cranks))
  (question (id dash-lights) (text "Do the lights on the dashboard come on?")
            (choices yes no))
  (question (id lights-dim) (text "Do the headlights dim hard while you turn the key?")
            (choices yes no))
  (question (id fuel) (text "Is there fuel in the tank?")
            (choices yes no))
  (question (id petrol-smell) (text "Is there a strong smell of petrol after cranking?")
            (choices yes no))
  (question (id spark) (text "Is there a spark at the plugs?")
            (choices yes no))
  (question (id running) (text "How does the engine run?")
            (choices smoothly rough stalls))
  (question (id warning-light) (text "Is the engine warning light on?")
            (choices yes no))
  (question (id plugs-new) (text "Were the spark plugs changed in the last two years?")
            (choices yes no))
  (question (id idle-only) (text "Does it stall only when idling?")
            (choices yes no))
  (question (id another) (text "Would you like to look at another car?")
            (choices yes no)))

(deffacts start
  (new-consultation))

(defglobal ?*car* = 0 ?*trail* = "")

(deffunction one-of (?value ?choices)
  "TRUE when the value is one of the choices"
  (foreach ?c ?choices
    (if (eq ?c ?value) then (return TRUE)))
  FALSE)

(deffunction choice-list (?choices)
  "the choices as one text: a/b/c"
  (bind ?text "")
  (foreach ?c ?choices
    (bind ?text (if (eq ?text "") then (str-cat ?c) else (str-cat ?text "/" ?c))))
  ?text)

(deffunction ask (?text ?choices)
  "Reads lines until one is among the choices; three wrong answers end the run"
  (printout t ?text " (" (choice-list ?choices) ")" crlf)
  (bind ?tries 0)
  (while (< ?tries 3) do
    (bind ?value (sym-cat (lowcase (readline))))
    (if (one-of ?value ?choices) then (return ?value))
    (bind ?tries (+ ?tries 1))
    (if (< ?tries 3) then
      (printout t "Please answer one of: " (choice-list ?choices) "." crlf)))
  (printout t "No usable answer: the consultation ends." crlf)
  (halt)
  nil)

;;; Starting and ending a consultation

(defrule begin
  (declare (salience 20))
  ?n <- (new-consultation)
  =>
  (retract ?n)
  (bind ?*car* (+ ?*car* 1))
  (bind ?*trail* "")
  (printout t crlf "Car " ?*car* ". Answer each question with one of the words in parentheses." crlf)
  (assert (consulting) (ask starts)))

(defrule give-advice
  (declare (salience 10))
  ?c <- (consulting)
  (advice (fault ?fault) (remedy ?remedy))
  (question (id another) (text ?again) (choices $?choices))
  =>
  (retract ?c)
  (printout t crlf "Answers:   " ?*trail* crlf)
  (printout t "Diagnosis: " ?fault "." crlf)
  (printout t "Advice:    " ?remedy "." crlf crlf)
  (if (eq (ask ?again ?choices) yes)
   then (assert (new-consultation))
   else (printout t "Good luck with the repair." crlf)))

(defrule forget "a finished consultation leaves nothing behind"
  (declare (salience 30))
  (not (consulting))
  ?f <- (answer)
  =>
  (retract ?f))

(defrule forget-advice
  (declare (salience 30))
  (not (consulting))
  ?f <- (advice)
  =>
  (retract ?f))

(defrule forget-area
  (declare (salience 30))
  (not (consulting))
  ?f <- (area ?)
  =>
  (retract ?f))

;;; Asking

(defrule ask-question
  ?a <- (ask ?id)
  (consulting)
  (question (id ?id) (text ?text) (choices $?choices))
  =>
  (retract ?a)
  (bind ?value (ask ?text ?choices))
  (if (neq ?value nil) then
    (bind ?*trail* (str-cat ?*trail* (if (eq ?*trail* "") then "" else ", ") ?id " " ?value))
    (assert (answer (id ?id) (value ?value)))))

;;; The engine does not start

(defrule no-start
  (answer (id starts) (value no))
  =>
  (assert (ask key)))

(defrule dead-or-clicking "nothing or a click: the starting circuit"
  (answer (id key) (value nothing|click))
  =>
  (printout t "  The fault is in the battery or the starting circuit." crlf)
  (assert (area electrical)))

(defrule cranks-but-no-start "the starter turns: fuel or ignition"
  (answer (id key) (value cranks))
  =>
  (printout t "  The starter works: the fault is in the fuel supply or the ignition." crlf)
  (assert (area fuel-or-ignition) (ask fuel)))

(defrule check-dash-lights
  (area electrical)
  (answer (id key) (value nothing))
  =>
  (assert (ask dash-lights)))

(defrule flat-battery
  (area electrical)
  (answer (id dash-lights) (value no))
  =>
  (assert (advice (fault "the battery is flat or disconnected")
                  (remedy "clean and tighten the battery terminals, then charge or replace the battery"))))

(defrule ignition-switch
  (area electrical)
  (answer (id dash-lights) (value yes))
  =>
  (assert (advice (fault "the ignition switch or the starter circuit has failed")
                  (remedy "check the starter relay, its fuse and the wiring to the starter"))))

(defrule check-dimming
  (area electrical)
  (answer (id key) (value click))
  =>
  (assert (ask lights-dim)))

(defrule weak-battery
  (area electrical)
  (answer (id lights-dim) (value yes))
  =>
  (assert (advice (fault "the battery is too weak to turn the starter")
                  (remedy "start with jump leads, then charge the battery and test it"))))

(defrule starter-motor
  (area electrical)
  (answer (id lights-dim) (value no))
  =>
  (assert (advice (fault "the starter motor or its solenoid is faulty")
                  (remedy "have the starter motor tested and replaced if needed"))))

(defrule empty-tank
  (area fuel-or-ignition)
  (answer (id fuel) (value no))
  =>
  (assert (advice (fault "the tank is empty")
                  (remedy "fill the tank, then crank for a while to prime the fuel line"))))

(defrule fuel-present
  (area fuel-or-ignition)
  (answer (id fuel) (value yes))
  =>
  (assert (ask petrol-smell)))

(defrule flooded
  (area fuel-or-ignition)
  (answer (id petrol-smell) (value yes))
  =>
  (assert (advice (fault "the engine is flooded")
                  (remedy "wait ten minutes, then crank with the accelerator held to the floor"))))

(defrule not-flooded
  (area fuel-or-ignition)
  (answer (id petrol-smell) (value no))
  =>
  (assert (ask spark)))

(defrule no-spark
  (area fuel-or-ignition)
  (answer (id spark) (value no))
  =>
  (assert (advice (fault "there is no spark")
                  (remedy "check the ignition coil, the plug leads and the crankshaft sensor"))))

(defrule no-fuel-delivery "spark, fuel in the tank, yet no start"
  (area fuel-or-ignition)
  (answer (id spark) (value yes))
  (answer (id petrol-smell) (value no))
  =>
  (assert (advice (fault "fuel does not reach the engine")
                  (remedy "listen for the fuel pump when the key turns, and check the fuel filter"))))

;;; The engine starts

(defrule starts
  (answer (id starts) (value yes))
  =>
  (assert (ask running)))

(defrule runs-smoothly
  (answer (id running) (value smoothly))
  =>
  (assert (advice (fault "none found: the engine starts and runs smoothly")
                  (remedy "no repair is needed"))))

(defrule runs-rough
  (answer (id running) (value rough))
  =>
  (printout t "  A rough engine misfires: something spoils the combustion." crlf)
  (assert (area misfire) (ask warning-light)))

(defrule engine-codes
  (area misfire)
  (answer (id warning-light) (value yes))
  =>
  (assert (advice (fault "the engine management has logged a fault")
                  (remedy "have the fault codes read; a failed sensor or one misfiring cylinder is likely"))))

(defrule check-plugs
  (area misfire)
  (answer (id warning-light) (value no))
  =>
  (assert (ask plugs-new)))

(defrule worn-plugs
  (area misfire)
  (answer (id plugs-new) (value no))
  =>
  (assert (advice (fault "the spark plugs are worn")
                  (remedy "replace the spark plugs and check their leads"))))

(defrule air-leak
  (area misfire)
  (answer (id plugs-new) (value yes))
  =>
  (assert (advice (fault "the mixture is wrong, most likely from an air leak")
                  (remedy "check the air filter and the vacuum hoses for cracks"))))

(defrule stalls
  (answer (id running) (value stalls))
  =>
  (assert (ask idle-only)))

(defrule idle-valve
  (answer (id idle-only) (value yes))
  =>
  (assert (advice (fault "the idle control is dirty")
                  (remedy "clean the idle control valve and the throttle body"))))

(defrule fuel-starved
  (answer (id idle-only) (value no))
  =>
  (assert (advice (fault "the engine is short of fuel under load")
                  (remedy "replace the fuel filter and have the fuel pressure measured"))))

(reset)
(run)
