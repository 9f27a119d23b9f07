// The printers: what they print parses again to objects that print the
// same, and the few texts whose exact form is fixed.
#include <gtest/gtest.h>

#include "engine/EngineCollections.h"
#include "engine/InferenceEngine.h"
#include "language/TavoPrettyPrinter.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

enum TKind { kTemplate, kType, kFactSet, kRule, kFunction, kModule, kGlobals };

// The printed text of the named construct of an engine.
String Print(TInferenceEngine& Engine, TKind Kind, const String& Name) {
  switch (Kind) {
    case kTemplate:
      return PrettyPrint(Engine.FindFactTemplate(Name), false);
    case kType:
      return PrettyPrint(Engine.FindDefinedType(Name), false);
    case kFactSet:
      for (TFactSet* Set : *Engine.GetFactSets())
        if (Set->GetFactSetName() == Name) return PrettyPrint(*Set, false);
      return u"(no such fact set)";
    case kRule:
      return PrettyPrint(*Engine.GetRules()->Find(Name), false);
    case kFunction: {
      IUserFunction Function;
      Engine.GetUserFunctions()->TryGetValue(Name, Function);
      return PrettyPrint(IInterpretedFunction(dynamic_cast<TInterpretedFunction*>(Function.Get())));
    }
    case kModule:
      return PrettyPrint(Engine.GetModules().GetModule(Name));
    case kGlobals:
      return PrettyPrint(*Engine.GetGlobalVariables());
  }
  return String();
}

struct TRoundTrip {
  const char16_t* Setup;
  const char16_t* Text;
  TKind Kind;
  const char16_t* Name;
};

// Each case reaches a branch of a printer that the others do not.
const TRoundTrip RoundTrips[] = {
    {u"", u"(deftemplate point \"a point\" (slot x (type INTEGER) (default 3)) (multislot tags (default a b)))",
     kTemplate, u"point"},
    {u"", u"(deftemplate s (slot n (type NUMBER) (range 0 ?VARIABLE) (allowed-integers 1 2 3) (default 2)))",
     kTemplate, u"s"},
    {u"(deftype small extends (type INTEGER) (range 0 10))",
     u"(deftemplate t (slot a (type small)) (slot b (default-dynamic (+ 1 2))) (multislot c (cardinality 1 3)))",
     kTemplate, u"t"},
    {u"(deftemplate base (slot a))", u"(deftemplate derived extends base (slot b))", kTemplate, u"derived"},
    {u"(deftype word extends (type SYMBOL) (allowed-symbols red green))", u"(deftemplate colour is-a word)",
     kTemplate, u"colour"},
    {u"", u"(deftemplate plain)", kTemplate, u"plain"},
    {u"", u"(deftype age \"years\" extends (type INTEGER FLOAT) (range ?VARIABLE 120) (units \"full years\"))",
     kType, u"age"},
    {u"", u"(deftype list3 extends (type STRING) (cardinality ?VARIABLE 3) (allowed-strings \"a b\" \"c\"))", kType,
     u"list3"},
    {u"(deftype base extends (type INTEGER) (range 0 100))",
     u"(deftype child extends (type base) (allowed-integers 1 5 7))", kType, u"child"},
    {u"", u"(deftype anything extends (type ?VARIABLE) (allowed-values a \"b\" 1 2.5))", kType, u"anything"},
    {u"",
     u"(deftype temp extends (type FUZZY) (range 0 100) (units degrees) (values (term cold (z 10 50)) "
     u"(term warm (pi 50 20)) (term hot (s 50 90)) (term tip (pi 5 10 15)) (term b (beta 50 10)) (term odd ((0 0) (40 1) (60 0)))))",
     kType, u"temp"},
    {u"(deftemplate p (slot a) (multislot m))",
     u"(deffacts start \"facts\" (p (a \"x y\") (m 1 2)) (q b c) (q))", kFactSet, u"start"},
    {u"", u"(deffunction add \"adds\" (?a ?b $?rest) (bind ?c (+ ?a ?b)) ?c)", kFunction, u"add"},
    {u"", u"(deffunction nothing ())", kFunction, u"nothing"},
    {u"(defmodule lib (export deftemplate a b) (export deftype ?ALL))",
     u"(defmodule app \"the app\" (import lib deftemplate a) (export ?ALL))", kModule, u"app"},
    {u"(defmodule other)", u"(defmodule quiet (import other ?NONE))", kModule, u"quiet"},
    {u"", u"(defglobal ?*x* = 1 ?*y* = (+ 1 2) ?*s* = \"text\")", kGlobals, u""},
    {u"(deftemplate person (slot name) (slot age) (multislot kids))",
     u"(defrule r1 \"finds people\" (declare (salience 10) (auto-focus TRUE))"
     u" ?p <- (person (name ?n&~bob) (age ?a&:(> ?a 18)|7) (kids ?first $?rest))"
     u" (not (person (name ?n) (age =(+ ?a 1)))) (exists (q ?n)) (not (exists (q 1)))"
     u" (test (> ?a 1)) (not (test (< ?a 0))) (unique (explicit (r ?)))"
     u" => (retract ?p) (printout t ?n crlf))",
     kRule, u"r1"},
    {u"(deftemplate goal (slot x)) (do-backward-chaining goal)",
     u"(defrule r2 (declare (oneshot TRUE) (enabled FALSE)) (need-goal (x ?x)) => (assert (goal (x ?x))))",
     kRule, u"r2"},
    {u"", u"(defrule r3 (a) (b) =>)", kRule, u"r3"},
};

TEST(TPrettyPrinterTest, EveryConstructPrintsTextThatReparsesToTheSameText) {
  for (const TRoundTrip& Case : RoundTrips) {
    SCOPED_TRACE(StringToUtf8(Case.Text));
    TInferenceEngine First;
    First.Parse(Case.Setup);
    First.Parse(Case.Text);
    String Printed = Print(First, Case.Kind, Case.Name);
    TInferenceEngine Second;
    Second.Parse(Case.Setup);
    ASSERT_EQ(StringToUtf8(FailureOf([&] { Second.Parse(Printed); })), "(no failure)") << StringToUtf8(Printed);
    EXPECT_EQ(StringToUtf8(Print(Second, Case.Kind, Case.Name)), StringToUtf8(Printed));
  }
}

}  // namespace
}  // namespace tavo
