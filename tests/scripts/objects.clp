; Host objects from the rule language, through the classes that the library
; registers itself: TObject, TPersistent, TComponent (which publishes its
; Name) and TBasicAction (which adds its OnExecute handler).
(get-class TComponent)
(bind ?shed (create-object (get-class TComponent)))
(bind ?rake (create-object (get-class TBasicAction)))
?rake

; Properties: the names, a write answers the value written.
(get-properties ?shed)
(get-properties ?rake)
(set-property ?shed Name "Shed")
(set-property ?rake Name Rake)
(get-property ?shed Name)
(get-property ?rake Name)

; No object reads FALSE, a name the class does not publish nil, and a write
; to either does nothing.
(get-property nil "x")
(get-property ?shed Colour)
(set-property nil Name "x")
(set-property ?shed Colour red)
(get-property ?shed Name)

; A class that publishes nothing lists nothing.
(bind ?thing (create-object (get-class TObject)))
(get-properties ?thing)
(get-property ?thing Name)

; Classes and their descendants.
(is-class ?rake (get-class TBasicAction))
(is-class ?rake (get-class TComponent))
(is-class ?rake (get-class TObject))
(is-class ?shed (get-class TBasicAction))
(is-class ?thing (get-class TPersistent))
(is-class nil (get-class TObject))

; An action without a handler has nothing to do.
(execute-action ?rake)

; An owner's components: these have no owner and own nothing.
(length$ (get-components ?shed))
(get-component ?shed Rake)
(get-component)

; Rules reach objects that facts hold.
(deftemplate tool (slot object) (slot wanted))
(defrule rename-tool
  (tool (object ?o) (wanted ?name&~nil))
  (test (neq (get-property ?o Name) ?name))
  =>
  (printout t "renaming " (get-property ?o Name) " to " ?name crlf)
  (set-property ?o Name ?name))
(assert (tool (object ?rake) (wanted "Hoe")))
(assert (tool (object ?shed) (wanted "Shed")))
(run)
(get-property ?rake Name)

; Failures.
(get-class TGreenhouse)
(create-object TComponent)
(get-property 5 Name)
(get-property ?rake OnExecute)
(set-property ?rake OnExecute nothing)
(execute-action ?shed)
(is-class ?rake TComponent)
(free-object 3)
(get-component Rake)
(get-components)
(get-components ?thing)
(trigger-event)

; Freeing nothing does nothing.
(free-object)
(free-object nil)
(free-object ?shed ?rake ?thing)
