// A host lets its rules steer the objects it owns. Thermostats publish
// their properties, a boost action runs when a rule asks, and the house
// that owns them all is the engine's owner: rules find the thermostats by
// walking its components, read the readings, decide, write the settings
// back, and make and free a report object of their own.
#include <iostream>

#include "common/MekReflection.h"
#include "engine/InferenceEngine.h"

using namespace tavo;

enum TMode { tmOff, tmHeat, tmCool };
enum TDay { dyMon, dyTue, dyWed, dyThu, dyFri, dySat, dySun };

class TThermostat : public TComponent {
  TAVO_CLASS(TThermostat, TComponent)
 public:
  explicit TThermostat(TComponent* AOwner = nullptr) : TComponent(AOwner) {}

  String Room;
  int Target = 20;
  double Reading = 20;
  TMode Mode = tmOff;
  bool Running = false;
  TSet<TDay> Schedule;
};

// Raises its thermostat's target by a step, when it has one.
class TBoostAction : public TBasicAction {
  TAVO_CLASS(TBoostAction, TBasicAction)
 public:
  using TBasicAction::TBasicAction;
  bool Execute() override {
    if (!Thermostat) return false;
    Thermostat->Target += Step;
    return true;
  }

  TThermostat* Thermostat = nullptr;
  int Step = 2;
};

// What the rules make, fill and print; the host never sees one.
class TReport : public TPersistent {
  TAVO_CLASS(TReport, TPersistent)
 public:
  String Title;
  int Heating = 0;
  int Cooling = 0;
};

// Each class tells the rules what they may read and write, once, before
// any engine runs.
void RegisterHouseClasses() {
  const TEnumInfo Modes(u"TMode", {u"tmOff", u"tmHeat", u"tmCool"});
  const TEnumInfo Days(u"TDay", {u"Mon", u"Tue", u"Wed", u"Thu", u"Fri", u"Sat", u"Sun"});
  RegisterClass<TThermostat>()
      .Property(u"Room", &TThermostat::Room)
      .Property(u"Target", &TThermostat::Target)
      .Property(u"Reading", &TThermostat::Reading)
      .Property(u"Mode", &TThermostat::Mode, Modes)
      .Property(u"Running", &TThermostat::Running)
      .Property(u"Schedule", &TThermostat::Schedule, Days);
  RegisterClass<TBoostAction>()
      .Property(u"Thermostat", &TBoostAction::Thermostat)
      .Property(u"Step", &TBoostAction::Step);
  RegisterClass<TReport>()
      .Property(u"Title", &TReport::Title)
      .Property(u"Heating", &TReport::Heating)
      .Property(u"Cooling", &TReport::Cooling);
}

const char16_t Rules[] = uR"(
(deftemplate thermostat (slot object) (slot room))

; The house's components: each thermostat becomes a fact.
(defrule survey
  =>
  (foreach ?part (get-components)
    (if (is-class ?part (get-class TThermostat)) then
      (assert (thermostat (object ?part) (room (get-property ?part Room)))))))

(defrule too-cold
  (thermostat (object ?t) (room ?room))
  (test (< (get-property ?t Reading) (- (get-property ?t Target) 1)))
  =>
  (printout t ?room ": " (get-property ?t Reading) " is below " (get-property ?t Target) ", heating" crlf)
  (set-property ?t Mode tmHeat)
  (set-property ?t Running TRUE)
  (assert (heating ?t)))

(defrule too-warm
  (thermostat (object ?t) (room ?room))
  (test (> (get-property ?t Reading) (+ (get-property ?t Target) 1)))
  =>
  (printout t ?room ": " (get-property ?t Reading) " is above " (get-property ?t Target) ", cooling" crlf)
  (set-property ?t Mode tmCool)
  (set-property ?t Running TRUE))

; A room heated now that is also heated on Saturdays gets a boost.
(defrule boost-weekend-heating
  (heating ?t)
  (thermostat (object ?t) (room ?room))
  (test (str-index "Sat" (get-property ?t Schedule)))
  =>
  (bind ?boost (get-component Boost))
  (set-property ?boost Thermostat ?t)
  (if (execute-action ?boost) then
    (printout t ?room ": boosted to " (get-property ?t Target) crlf)))

(defrule report
  (declare (salience -10))
  =>
  (bind ?report (create-object (get-class TReport)))
  (set-property ?report Title "Heating report")
  (foreach ?part (get-components)
    (if (eq (get-property ?part Mode) tmHeat) then
      (set-property ?report Heating (+ (get-property ?report Heating) 1)))
    (if (eq (get-property ?part Mode) tmCool) then
      (set-property ?report Cooling (+ (get-property ?report Cooling) 1))))
  (foreach ?name (get-properties ?report)
    (printout t "  " ?name " = " (get-property ?report ?name) crlf))
  (free-object ?report))
)";

int main() {
  RegisterHouseClasses();

  // The house owns the engine and every device: it is the root the rules
  // walk with get-components and search with get-component.
  TComponent House;
  TInferenceEngine Engine(&House);
  Engine.OnPrintOut = [](TObject*, const String&, const String& Text) { std::cout << StringToUtf8(Text); };

  auto* Hall = new TThermostat(&House);
  Hall->SetName(u"Hall");
  Hall->Room = u"hall";
  Hall->Reading = 17.5;
  Hall->Schedule = {dyMon, dyTue, dyWed, dyThu, dyFri, dySat};
  auto* Study = new TThermostat(&House);
  Study->SetName(u"Study");
  Study->Room = u"study";
  Study->Target = 21;
  Study->Reading = 23.4;
  auto* Loft = new TThermostat(&House);
  Loft->Room = u"loft";
  Loft->Reading = 19.6;
  (new TBoostAction(&House))->SetName(u"Boost");

  Engine.Parse(Rules);
  Engine.Reset();
  const int Fired = Engine.Run();
  std::cout << "rules fired: " << Fired << "\n";

  for (const TThermostat* Thermostat : {Hall, Study, Loft})
    std::cout << StringToUtf8(Thermostat->Room) << ": target " << Thermostat->Target << ", mode "
              << StringToUtf8(GetEnumProp(*Thermostat, u"Mode")) << ", running "
              << (Thermostat->Running ? "yes" : "no") << "\n";
  return 0;
}
