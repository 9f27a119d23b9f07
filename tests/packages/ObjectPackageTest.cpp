#include "packages/ObjectPackage.h"

#include <gtest/gtest.h>

#include "common/MekReflection.h"
#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

enum TMode { tmOff, tmHeat, tmCool };
enum TDay { dyMon, dyTue, dyWed, dyThu, dyFri };

int Alive = 0;

class TThermostat : public TComponent {
  TAVO_CLASS(TThermostat, TComponent)
 public:
  explicit TThermostat(TComponent* AOwner = nullptr) : TComponent(AOwner) { ++Alive; }
  ~TThermostat() override { --Alive; }

  int Target = 20;
  double Reading = 18.5;
  String Label = u"hall";
  std::string Note = "ok";
  TMode Mode = tmHeat;
  bool Heating = true;
  TSet<TDay> Days{dyMon, dyWed};
  char16_t Grade = u'A';
  int64_t Serial = 7;
  TThermostat* Partner = nullptr;
  TNotifyEvent OnAlarm;
};

class TBoost : public TBasicAction {
  TAVO_CLASS(TBoost, TBasicAction)
 public:
  using TBasicAction::TBasicAction;
  bool Execute() override { return ++Runs % 2 == 1; }
  int Runs = 0;
};

// Registered, but it publishes nothing.
class TPlain : public TPersistent {
  TAVO_CLASS(TPlain, TPersistent)
};

void RegisterClasses() {
  static bool Done = false;
  if (Done) return;
  Done = true;
  RegisterClass<TThermostat>()
      .Property(u"Target", &TThermostat::Target)
      .Property(u"Reading", &TThermostat::Reading)
      .Property(u"Label", &TThermostat::Label)
      .Property(u"Note", &TThermostat::Note)
      .Property(u"Mode", &TThermostat::Mode, TEnumInfo(u"TMode", {u"tmOff", u"tmHeat", u"tmCool"}))
      .Property(u"Heating", &TThermostat::Heating)
      .Property(u"Days", &TThermostat::Days, TEnumInfo(u"TDay", {u"Mon", u"Tue", u"Wed", u"Thu", u"Fri"}))
      .Property(u"Grade", &TThermostat::Grade)
      .Property(u"Serial", &TThermostat::Serial)
      .Property(u"Partner", &TThermostat::Partner)
      .Property(u"OnAlarm", &TThermostat::OnAlarm)
      .Property(u"Doubled", [](const TThermostat& T) { return T.Target * 2; }, nullptr);
  RegisterClass<TBoost>();
  RegisterClass<TPlain>();
}

class ObjectPackageTest : public ::testing::Test {
 protected:
  ObjectPackageTest() {
    RegisterClasses();
    Hall->SetName(u"Hall");
    Bind(u"hall", Hall);
  }

  void Bind(const String& Name, TObject* Object) {
    Engine.GetContext()->AddBinding(Name, Make<TTavoValue>(Object, false));
  }
  ITavoValue Eval(const String& Text) { return Engine.ParseNExecuteFunCall(Text); }
  String Text(const String& Call) {
    ITavoValue Result = Eval(Call);
    return Result ? Result->GetToString() : u"(null)";
  }
  String Failure(const String& Call) {
    return FailureOf([&] { Eval(Call); });
  }

  // The host's root of named components, which owns the engine.
  TComponent Root;
  TInferenceEngine Engine{&Root};
  TThermostat* Hall = new TThermostat(&Root);
};

TEST_F(ObjectPackageTest, FunctionsCarryTheirSyntaxAndCounts) {
  const struct {
    const char16_t* Name;
    const char16_t* Arguments;
    int Min, Max;
  } Expected[] = {
      {u"create-object", u" <TClass-expression>", 1, 1},
      {u"execute-action", u" <TBasicAction-expression>", 1, 1},
      {u"free-object", u" <TObject-expression>*", 0, AnyArgumentCount},
      {u"get-component", u" [<component-name>] | \r\n [<TComponent-expression> <component-name>]", 0, 2},
      {u"get-components", u" [<TComponent-expression>]", 0, 1},
      {u"get-class", u" <class-name>", 1, 1},
      {u"get-property", u" <TObject-expression> <property-name>", 2, 2},
      {u"get-properties", u" <TObject-expression>", 1, 1},
      {u"set-property", u" <TObject-expression> <property-name> <expression>", 3, 3},
      {u"is-class", u" <TObject-expression> <TClass-expression>", 2, 2},
  };
  for (const auto& Function : Expected) {
    IUserFunction Found = Engine.GetUserFunction(Function.Name);
    ASSERT_TRUE(Found) << StringToUtf8(Function.Name);
    EXPECT_EQ(Found->GetArgumentString(), Function.Arguments);
    EXPECT_EQ(Found->GetMinArgumentCount(), Function.Min);
    EXPECT_EQ(Found->GetMaxArgumentCount(), Function.Max);
  }
  EXPECT_EQ(Failure(u"(trigger-event)"), u"Function is unimplemented or unassigned: trigger-event");
}

TEST_F(ObjectPackageTest, GetPropertyReadsEachKindAndTellsNoObjectFromNoProperty) {
  Hall->Partner = Hall;
  EXPECT_EQ(Text(u"(get-property ?hall Target)"), u"20");
  EXPECT_EQ(Eval(u"(get-property ?hall Target)")->GetDType(), dtInteger);
  EXPECT_EQ(Text(u"(get-property ?hall Reading)"), u"18.5000");
  EXPECT_EQ(Text(u"(get-property ?hall \"Label\")"), u"\"hall\"");
  EXPECT_EQ(Text(u"(get-property ?hall Note)"), u"\"ok\"");
  EXPECT_EQ(Text(u"(get-property ?hall Name)"), u"\"Hall\"") << "inherited from the component";
  EXPECT_EQ(Eval(u"(get-property ?hall Mode)")->GetDType(), dtAtom);
  EXPECT_EQ(Text(u"(get-property ?hall Mode)"), u"tmHeat");
  EXPECT_EQ(Text(u"(get-property ?hall Heating)"), u"TRUE");
  EXPECT_EQ(Text(u"(get-property ?hall Days)"), u"\"Mon,Wed\"");
  EXPECT_EQ(Text(u"(get-property ?hall Grade)"), u"65") << "a character reads as its code";
  EXPECT_EQ(Text(u"(get-property ?hall Doubled)"), u"40");
  EXPECT_EQ(Eval(u"(get-property ?hall Partner)")->GetAsObject(), Hall);
  Hall->Partner = nullptr;
  ITavoValue None = Eval(u"(get-property ?hall Partner)");
  EXPECT_EQ(None->GetDType(), dtObject);
  EXPECT_EQ(None->GetAsObject(), nullptr);

  EXPECT_EQ(Failure(u"(get-property ?hall Serial)"), u"Invalid property type: tkInt64");
  EXPECT_EQ(Failure(u"(get-property ?hall OnAlarm)"), u"Invalid property type: tkMethod");

  EXPECT_EQ(Eval(u"(get-property nil \"x\")"), FCFalse);
  EXPECT_EQ(Eval(u"(get-property (get-property ?hall Partner) Target)"), FCFalse) << "a null reference";
  TPlain Plain;
  Bind(u"plain", &Plain);
  EXPECT_EQ(Eval(u"(get-property ?plain Target)"), FCFalse) << "a class that publishes nothing";
  EXPECT_EQ(Eval(u"(get-property ?hall Humidity)"), FCNil);
  EXPECT_EQ(Eval(u"(get-property ?hall target)"), FCNil) << "names keep their case";
  EXPECT_EQ(Failure(u"(get-property 5 Target)"), u"Not a object type.  Value (5) is a dtInteger type");
}

TEST_F(ObjectPackageTest, SetPropertyWritesEachKindAndAnswersTheValue) {
  EXPECT_EQ(Text(u"(set-property ?hall Target 23)"), u"23");
  EXPECT_EQ(Hall->Target, 23);
  Eval(u"(set-property ?hall Target 21.9)");
  EXPECT_EQ(Hall->Target, 21);
  Eval(u"(set-property ?hall Serial 123456)");
  EXPECT_EQ(Hall->Serial, 123456);
  EXPECT_EQ(Text(u"(set-property ?hall Reading \"19.25\")"), u"\"19.25\"") << "the value as given";
  EXPECT_EQ(Hall->Reading, 19.25);
  Eval(u"(set-property ?hall Reading 4)");
  EXPECT_EQ(Hall->Reading, 4.0);
  Eval(u"(set-property ?hall Label study)");
  EXPECT_EQ(Hall->Label, u"study");
  Eval(u"(set-property ?hall Note 12)");
  EXPECT_EQ(Hall->Note, "12");
  Eval(u"(set-property ?hall Mode tmCool)");
  EXPECT_EQ(Hall->Mode, tmCool);
  Eval(u"(set-property ?hall Heating FALSE)");
  EXPECT_FALSE(Hall->Heating);
  Eval(u"(set-property ?hall Days \"[Tue, Fri]\")");
  EXPECT_TRUE(Hall->Days == TSet<TDay>({dyTue, dyFri}));
  Eval(u"(set-property ?hall Grade \"B\")");
  EXPECT_EQ(Hall->Grade, u'B');
  Eval(u"(set-property ?hall Name \"Hallway\")");
  EXPECT_EQ(Hall->GetName(), u"Hallway");
  Eval(u"(set-property ?hall Partner ?hall)");
  EXPECT_EQ(Hall->Partner, Hall);
  Eval(u"(set-property ?hall Partner nil)");
  EXPECT_EQ(Hall->Partner, nullptr);

  EXPECT_EQ(Failure(u"(set-property ?hall Target warm)"), u"Not a integer type.  Value (warm) is a dtAtom type");
  EXPECT_EQ(Failure(u"(set-property ?hall Reading warm)"), u"Not a numeric type.  Value (warm) is a dtAtom type");
  EXPECT_EQ(Failure(u"(set-property ?hall Mode tmFan)"), u"Invalid value for property Mode: tmFan");
  EXPECT_EQ(Failure(u"(set-property ?hall Days \"Mon,Sun\")"), u"Invalid value for property Days: Mon,Sun");
  EXPECT_EQ(Failure(u"(set-property ?hall Grade 66)"), u"Invalid value for property Grade: 66");
  EXPECT_EQ(Failure(u"(set-property ?hall Doubled 1)"), u"Property Doubled is read-only");
  EXPECT_EQ(Failure(u"(set-property ?hall Partner 5)"), u"Not a object type.  Value (5) is a dtInteger type");
  Bind(u"root", &Root);
  EXPECT_EQ(Failure(u"(set-property ?hall Partner ?root)"),
            u"Property Partner takes an object of class TThermostat, not <Object: TComponent>");
  EXPECT_EQ(Failure(u"(set-property ?hall OnAlarm 1)"), u"Invalid property type: tkMethod");
  EXPECT_EQ(Hall->Target, 21) << "failures leave the object as it was";

  // Nothing to write: the answer is nil and the value is never evaluated.
  EXPECT_EQ(Text(u"(set-property nil Target (get-class TUnknown))"), u"(null)");
  EXPECT_EQ(Text(u"(set-property ?hall Humidity (get-class TUnknown))"), u"(null)");
}

TEST_F(ObjectPackageTest, PropertiesAreListedAncestorsFirst) {
  EXPECT_EQ(Text(u"(get-properties ?hall)"),
            u"\"Name\" \"Target\" \"Reading\" \"Label\" \"Note\" \"Mode\" \"Heating\" \"Days\" \"Grade\" \"Serial\" "
            u"\"Partner\" \"OnAlarm\" \"Doubled\" ");
  EXPECT_EQ(Eval(u"(nth$ 0 (get-properties ?hall))")->GetDType(), dtString);
  TPlain Plain;
  Bind(u"plain", &Plain);
  EXPECT_EQ(Text(u"(get-properties ?plain)"), u"(null)");
  EXPECT_EQ(Text(u"(get-properties nil)"), u"(null)");
}

TEST_F(ObjectPackageTest, ObjectsAreCreatedTestedAndFreed) {
  const int Before = Alive;
  ITavoValue Made = Eval(u"(create-object (get-class TThermostat))");
  ASSERT_EQ(Made->GetDType(), dtObject);
  EXPECT_EQ(Alive, Before + 1);
  auto* Thermostat = dynamic_cast<TThermostat*>(Made->GetAsObject());
  ASSERT_NE(Thermostat, nullptr);
  EXPECT_EQ(Thermostat->GetOwner(), nullptr);
  Engine.GetContext()->AddBinding(u"made", Made);
  EXPECT_EQ(Eval(u"(is-class ?made (get-class TThermostat))"), FCTrue);
  EXPECT_EQ(Eval(u"(is-class ?made (get-class TComponent))"), FCTrue) << "a descendant";
  EXPECT_EQ(Eval(u"(is-class ?made (get-class TBasicAction))"), FCFalse);
  Bind(u"root", &Root);
  EXPECT_EQ(Eval(u"(is-class ?root (get-class TThermostat))"), FCFalse) << "an ancestor";
  EXPECT_EQ(Eval(u"(is-class nil (get-class TObject))"), FCFalse);
  EXPECT_EQ(Text(u"(free-object ?made nil)"), u"(null)");
  EXPECT_EQ(Alive, Before);
  EXPECT_EQ(Text(u"(free-object)"), u"(null)");

  EXPECT_EQ(Text(u"(get-class TThermostat)"), u"TThermostat");
  EXPECT_EQ(Failure(u"(get-class TGreenhouse)"), u"Class not found: TGreenhouse");
  EXPECT_EQ(Failure(u"(create-object TThermostat)"), u"Not a class type.  Value (TThermostat) is a dtAtom type");
  EXPECT_EQ(Failure(u"(is-class ?hall TThermostat)"), u"Not a class type.  Value (TThermostat) is a dtAtom type");
  EXPECT_EQ(Failure(u"(free-object 5)"), u"Not a object type.  Value (5) is a dtInteger type");

  // The engine, what it owns and what owns it stay.
  Bind(u"engine", &Engine);
  EXPECT_EQ(Failure(u"(free-object ?root)"),
            u"Cannot free <Object: TComponent>, which is the running engine, a part of it or an owner of it");
  EXPECT_EQ(Failure(u"(free-object (nth$ 0 (get-components ?engine)))"),
            u"Cannot free <Object: TStandardPackage>, which is the running engine, a part of it or an owner of it");
  EXPECT_EQ(Engine.GetOwner(), &Root);
}

TEST_F(ObjectPackageTest, ComponentsAreFoundUnderTheEnginesOwnerOrAGivenOne) {
  auto* Boost = new TBoost(Hall);
  Boost->SetName(u"Boost");
  EXPECT_EQ(Eval(u"(get-component)")->GetDType(), dtNone);
  EXPECT_EQ(Eval(u"(get-component Hall)")->GetAsObject(), Hall);
  EXPECT_EQ(Eval(u"(get-component \"Attic\")"), FCNil);
  EXPECT_EQ(Eval(u"(get-component Boost)"), FCNil) << "only the owner's own components";
  EXPECT_EQ(Eval(u"(get-component ?hall Boost)")->GetAsObject(), Boost);
  EXPECT_EQ(Eval(u"(get-component (get-component Hall) Boost)")->GetAsObject(), Boost);
  TPlain Plain;
  Bind(u"plain", &Plain);
  EXPECT_EQ(Failure(u"(get-component ?plain Boost)"), u"Expected component argument to get-component function call");
  EXPECT_EQ(Failure(u"(get-component nil Boost)"), u"Expected component argument to get-component function call");

  EXPECT_EQ(Text(u"(get-components)"), u"<Object: TInferenceEngine> <Object: TThermostat> ");
  EXPECT_EQ(Text(u"(get-components ?hall)"), u"<Object: TBoost> ");
  EXPECT_EQ(Eval(u"(nth$ 0 (get-components ?hall))")->GetAsObject(), Boost);
  EXPECT_EQ(Failure(u"(get-components 1)"), u"Expected component argument to get-components function call");

  // An engine that the host made under no owner has no components to walk.
  TInferenceEngine Alone;
  EXPECT_EQ(FailureOf([&] { Alone.ParseNExecuteFunCall(u"(get-component Hall)"); }),
            u"Expected component argument to get-component function call");
  EXPECT_EQ(FailureOf([&] { Alone.ParseNExecuteFunCall(u"(get-components)"); }),
            u"Expected component argument to get-components function call");
  EXPECT_EQ(Alone.ParseNExecuteFunCall(u"(get-component)")->GetDType(), dtNone);
}

TEST_F(ObjectPackageTest, ActionsAnswerWhatTheirExecuteAnswers) {
  auto* Boost = new TBoost(Hall);
  Bind(u"boost", Boost);
  EXPECT_EQ(Eval(u"(execute-action ?boost)"), FCTrue);
  EXPECT_EQ(Eval(u"(execute-action ?boost)"), FCFalse);
  EXPECT_EQ(Boost->Runs, 2);
  EXPECT_EQ(Failure(u"(execute-action ?hall)"),
            u"Not a TBasicAction type.  Value (<Object: TThermostat>) is a dtObject type");
  EXPECT_EQ(Failure(u"(execute-action go)"), u"Not a object type.  Value (go) is a dtAtom type");
}

TEST_F(ObjectPackageTest, HostWithoutTheObjectPackageHasNoneOfItsFunctions) {
  Engine.SetPackages(TavoAllPackages - TFunctionPackages{pObject});
  for (const char16_t* Name : {u"create-object", u"execute-action", u"free-object", u"get-component",
                               u"get-components", u"get-class", u"get-property", u"get-properties",
                               u"set-property", u"is-class"}) {
    IUserFunction Function;
    EXPECT_FALSE(Engine.ContainsUserFunction(Name, Function)) << StringToUtf8(Name);
  }
  EXPECT_EQ(Failure(u"(get-property nil \"x\")"), u"Function is unimplemented or unassigned: get-property");
  EXPECT_EQ(Text(u"(+ 1 2)"), u"3") << "the other packages stay";
}

}  // namespace
}  // namespace tavo
