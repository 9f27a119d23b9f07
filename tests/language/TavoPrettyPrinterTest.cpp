// The printers: what they print parses again to objects that print the
// same, and the few texts whose exact form is fixed.
#include <gtest/gtest.h>

#include "engine/EngineCollections.h"
#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"
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
     u" => (retract ?p) (printout t ?n crlf) (modify ?p (age nil) (kids a b)) (if (neq ?n nil) then (duplicate ?p (name x))))",
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


struct TPrettyPrinterTexts : testing::Test {
  TPrettyPrinterTexts() { Engine.Parse(u"(deftemplate p (slot a) (multislot m))"); }
  std::string Pattern(const char16_t* Rule, int Index = 0) {
    Engine.Parse(Rule);
    TRule* R = Engine.GetRules()->Get(Engine.GetRules()->Count() - 1);
    return StringToUtf8(PrettyPrint(*R->GetPattern(Index), R->GetRuleEngine()));
  }
  TInferenceEngine Engine;
};

TEST_F(TPrettyPrinterTexts, OrderedPatternPrintsAsWritten) {
  EXPECT_EQ(Pattern(u"(defrule r (a b) =>)"), "(a b)");
  EXPECT_EQ(Pattern(u"(defrule r2 (a ?x&~1&:(> ?x 0) $?y) =>)"), "(a ?x&~1&:(> ?x 0) $?y)");
}

TEST_F(TPrettyPrinterTexts, FactsPrintStringsQuotedAndSkipEmptySlots) {
  EXPECT_EQ(StringToUtf8(PrettyPrint(Engine.ParseFact(u"(p (a \"x \\\"y\\\"\"))"))), "(p (a \"x \\\"y\\\"\"))");
  EXPECT_EQ(StringToUtf8(PrettyPrint(Engine.ParseFact(u"(q 1 2.5 \"s\")"))), "(q 1 2.5000 \"s\")");
  IFact Fact = Engine.ParseFact(u"(p (m 1 2))");
  EXPECT_EQ(StringToUtf8(PrettyPrintFactSlot(Fact, u"m")), "(m 1 2)");
  EXPECT_EQ(StringToUtf8(PrettyPrintFactSlot(Fact, u"a", String())), "");
  EXPECT_EQ(StringToUtf8(PrettyPrintFactSlot(Engine.ParseFact(u"(q 1 2)"), SDefaultSlotName)), "1 2");
}

TEST_F(TPrettyPrinterTexts, CallCommentLinesEachGetTheCommentMark) {
  IFunCall Call = Make<TFunctionCall>(&Engine, u"printout");
  Call->AddArgument(testvalues::Atom(u"t"));
  Call->AddArgument(testvalues::Str(u"hi"));
  Call->SetComment(u"  first line\r\n\r\n; second line  ");
  EXPECT_EQ(StringToUtf8(PrettyPrint(Call)), "; first line\r\n; second line\r\n(printout t \"hi\")");
  EXPECT_EQ(StringToUtf8(PrettyPrint(Call, true)), "; first line\r\n; second line\r\n(printout t (\"hi\"))");
}

TEST_F(TPrettyPrinterTexts, UnconstrainedPatternGetsAFillerThatReparses) {
  std::string Ordered = Pattern(u"(defrule r (a) =>)");
  EXPECT_EQ(Ordered.rfind("(a $?__var", 0), 0u) << Ordered;
  // A filler on each pattern, named apart, so the patterns stay unjoined.
  Engine.Parse(u"(defrule r2 (a) (a) =>)");
  String Rule = PrettyPrint(*Engine.GetRules()->Find(u"r2"), false);
  TInferenceEngine Again;
  Again.Parse(u"(deftemplate p (slot a) (multislot m))");
  Again.Parse(Rule);
  TRule* Reparsed = Again.GetRules()->Find(u"r2");
  ASSERT_NE(Reparsed, nullptr);
  EXPECT_NE(PrettyPrint(*Reparsed->GetPattern(0)), PrettyPrint(*Reparsed->GetPattern(1)));
  EXPECT_EQ(PrettyPrint(*Reparsed, false), Rule);
}

TEST_F(TPrettyPrinterTexts, RuleHeadDeclaresOnlyWhatDiffersFromTheDefaults) {
  Engine.Parse(u"(defrule r \"why\" (declare (salience -5) (oneshot TRUE) (auto-focus TRUE) (enabled FALSE))"
               u" ?f <- (p (a ?x)) => (retract ?f))");
  EXPECT_EQ(StringToUtf8(PrettyPrint(*Engine.GetRules()->Find(u"r"), false)),
            "(defrule r\r\n   \"why\"\r\n"
            "   (declare (salience -5) (enabled FALSE) (auto-focus TRUE) (oneshot TRUE))\r\n"
            "   ?f <- (p (a ?x))\r\n   =>\r\n   (retract ?f))");
  Engine.Parse(u"(defrule plain (p) =>)");
  EXPECT_EQ(StringToUtf8(PrettyPrint(*Engine.GetRules()->Find(u"plain"), false)),
            "(defrule plain\r\n   (p)\r\n   =>)");
}

TEST_F(TPrettyPrinterTexts, NegationsAndBindingsWrapInTheirOrder) {
  EXPECT_EQ(Pattern(u"(defrule r (p (a 1)) (not (exists (p (a 2)))) =>)", 1), "(not (exists (p (a 2))))");
  EXPECT_EQ(Pattern(u"(defrule r2 (not (not (p (a 3)))) =>)", 1), "(exists (p (a 3)))");
  // The initial-fact pattern the rule puts in front comes back by itself.
  EXPECT_EQ(StringToUtf8(PrettyPrint(*Engine.GetRules()->Find(u"r2"), rcPattern)), "   (exists (p (a 3)))");
  EXPECT_EQ(Pattern(u"(defrule r3 ?x <- (unique (p (m ?y))) =>)"), "?x <- (unique (p (m ?y)))");
  EXPECT_EQ(Pattern(u"(defrule r4 (p (a 1)) (not (not (test (> 1 0)))) =>)", 1), "(test (> 1 0))");
}

TEST_F(TPrettyPrinterTexts, PatternWithoutTemplateFails) {
  TTavoPattern Pattern(nullptr, u"x", nullptr);
  EXPECT_EQ(FailureOf([&] { PrettyPrint(Pattern); }), u"Fact Template is missing");
}

TEST_F(TPrettyPrinterTexts, SmallValuePrinters) {
  EXPECT_EQ(StringToUtf8(PrettyPrintVariable(u"*x*", testvalues::Int(3))), "?*x* = 3");
  EXPECT_EQ(StringToUtf8(PrettyPrintVariable(u"?y", testvalues::Str(u"a"))), "?y = \"a\"");
  ISingletonsVector Points = Make<TSingletonsVector>();
  EXPECT_EQ(StringToUtf8(PrettyPrint(Points)), "");
  Points->Add(testvalues::Int(1), testvalues::Flt(0.5));
  Points->Add(testvalues::Int(3), testvalues::Int(1));
  EXPECT_EQ(StringToUtf8(PrettyPrint(Points)), "((1 0.5000) (3 1) )");
}

TEST_F(TPrettyPrinterTexts, ParserPrintsModuleQualifiersAsItsSettingSays) {
  Engine.Parse(u"(defmodule M (export ?ALL)) (deftemplate item (slot a)) (defrule go (item (a ?x)) =>)");
  auto* Parser = dynamic_cast<TTavoClipsParser*>(Engine.GetParserObject());
  ASSERT_NE(Parser, nullptr);
  Parser->FPrintModuleQualifiers = true;
  String Qualified = Parser->PrettyPrint(Engine.FindFactTemplate(u"item"));
  EXPECT_EQ(StringToUtf8(Qualified), "(deftemplate M::item\r\n   (slot a))");
  EXPECT_TRUE(Parser->PrettyPrint(*Engine.GetRules()->Find(u"go")).starts_with(u"(defrule M::go\r\n"));
  Parser->FPrintModuleQualifiers = false;
  EXPECT_EQ(StringToUtf8(Parser->PrettyPrint(Engine.FindFactTemplate(u"item"))), "(deftemplate item\r\n   (slot a))");
  // The qualified text reads back into a fresh engine, module and all.
  TInferenceEngine Again;
  Again.Parse(u"(defmodule M (export ?ALL))");
  Again.Parse(Qualified);
  ASSERT_TRUE(Again.FindFactTemplate(u"item"));
  EXPECT_EQ(Again.FindFactTemplate(u"item")->GetModule()->GetName(), u"M");
}

TEST_F(TPrettyPrinterTexts, BuiltInFunctionPrintsItsHelpWrapped) {
  IUserFunction Function = Make<TTavoUserFunction>();
  String Long;
  for (int I = 0; I < 20; ++I) Long += u"word" + IntToStr(I) + u" ";
  Function->SetMetaData(u"helper", Long, u"<number> <text>", 2, 2);
  String Help = PrettyPrint(Function);
  EXPECT_TRUE(Help.starts_with(u";; deffunction helper\r\n;; word0 word1")) << StringToUtf8(Help);
  EXPECT_TRUE(Help.ends_with(u"\r\n;;      Syntax: (helper <number> <text>)")) << StringToUtf8(Help);
  EXPECT_NE(Help.find(u"\r\n;;    word"), String::npos) << StringToUtf8(Help);
  size_t Start = 0;
  while (Start < Help.size()) {
    size_t End = Help.find(u"\r\n", Start);
    if (End == String::npos) End = Help.size();
    EXPECT_LE(End - Start, size_t(3 + 3 + 60)) << StringToUtf8(Help.substr(Start, End - Start));
    EXPECT_TRUE(Help.substr(Start).starts_with(u";; "));
    Start = End + 2;
  }
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

TEST(TPrettyPrinterHelp, ConstructHelpIsCommentLinesWithTheSyntaxLast) {
  for (int Type = ptRule; Type <= ptDefModule; ++Type) {
    const String Help = PrettyPrint(TParsedType(Type));
    const String Keyword = TTavoParser::GetConstructName(TParsedType(Type));
    SCOPED_TRACE(StringToUtf8(Help));
    EXPECT_EQ(Help.rfind(u";; " + Keyword + u" function\r\n;; \r\n;; ", 0), 0u);
    EXPECT_NE(Help.find(u"\r\n;; \r\n;; Syntax:\r\n;; (" + Keyword + u" "), String::npos);
    // Every line is a comment, and none is longer than the wrap allows.
    size_t Start = 0;
    for (size_t End; (End = Help.find(u"\r\n", Start)) != String::npos; Start = End + 2) {
      EXPECT_EQ(Help.compare(Start, 2, u";;"), 0);
      if (Help.find(u"Syntax", Start) != Start + 3) {
        EXPECT_LE(End - Start, 3u + WrapTextColumn);
      }
    }
  }
  EXPECT_EQ(PrettyPrint(ptFunCall), u"");
  TTavoClipsParser Parser(nullptr, nullptr);
  EXPECT_EQ(Parser.PrettyPrint(ptDefModule), PrettyPrint(ptDefModule));
}

}  // namespace
}  // namespace tavo
