// Copying knowledge between engines: a whole engine by Assign, and one
// collection at a time.
#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

// A function a host adds: doubles its argument.
class TDoubleFunction : public TTavoUserFunction {
 public:
  using TTavoUserFunction::Call;
  void InitMetaData() override { SetFunctionName(u"host-double"); }
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override {
    TTavoUserFunction::Call(FunCall, Context, Result);
    Result = testvalues::Int(2 * FunCall.GetArgument(0)->Resolve(Context)->GetAsInteger());
  }
};

struct TPrinted {
  String Text;
  void Hook(TInferenceEngine& Engine) {
    Engine.OnPrintOut = [this](TObject*, const String&, const String& Piece) { Text += Piece; };
  }
};

const char16_t Knowledge[] =
    u"(defglobal ?*seen* = 0)"
    u"(deffunction bump () (bind ?*seen* (+ ?*seen* 1)))"
    u"(deftemplate job (slot id) (slot size (default 1)))"
    u"(defrule report (job (id ?i) (size ?s)) => (bump) (printout t ?i \" \" (host-double ?s) \" \" ?*seen* crlf))"
    u"(defmodule SIDE (export ?ALL)) (deftemplate mark (slot x))"
    u"(defrule side-rule (mark (x ?x)) => (printout t \"mark \" ?x crlf))";

TEST(Assign, ACopyHasTheSettingsKnowledgeFactsAndFocusOfItsSource) {
  TInferenceEngine Source;
  Source.GetUserFunctions()->Add(u"host-double", Make<TDoubleFunction>());
  Source.Parse(Knowledge);
  Source.SetStrategy(ssBreadthFirst);
  Source.SetFactDuplication(true);
  Source.SetResetGlobals(false);
  Source.SetWatch(TConstructWatches{cwRule});
  Source.SetCurrentModule(Source.GetModules().GetModule(u"MAIN"));
  Source.Reset();
  Source.Assert(u"(job (id a) (size 3))");
  const int Gap = Source.Assert(u"(job (id gone))");
  Source.Assert(u"(job (id b) (size 5))");
  Source.Retract(Gap);
  Source.SetCurrentModule(Source.GetModules().GetModule(u"SIDE"));
  Source.Assert(u"(mark (x 7))");
  Source.PushFocus(u"SIDE");
  TPrinted SourceOutput;
  SourceOutput.Hook(Source);

  TInferenceEngine Copy;
  TPrinted CopyOutput;
  CopyOutput.Hook(Copy);
  Copy.Parse(u"(deftemplate old) (defrule old-rule (old) =>)");
  Copy.Assign(&Source);
  EXPECT_EQ(CopyOutput.Text, u"") << "a copy is made quietly";
  EXPECT_FALSE(Copy.FindFactTemplate(u"old")) << "cleared first";
  EXPECT_EQ(Copy.GetStrategy(), ssBreadthFirst);
  EXPECT_TRUE(Copy.GetFactDuplication());
  EXPECT_FALSE(Copy.GetResetGlobals());
  EXPECT_EQ(Copy.GetWatch(), TConstructWatches{cwRule});
  EXPECT_EQ(Copy.GetCurrentModule()->GetName(), u"SIDE");
  EXPECT_EQ(Copy.GetFocusStack().ToNamesString(), Source.GetFocusStack().ToNamesString());
  // Facts keep their ids, gap included, and new ones go on from there.
  EXPECT_EQ(Copy.GetFacts()->GetToIDString(), Source.GetFacts()->GetToIDString());
  Copy.SetCurrentModule(Copy.GetModules().GetModule(u"MAIN"));
  Source.SetCurrentModule(Source.GetModules().GetModule(u"MAIN"));
  EXPECT_EQ(Copy.GetFacts()->GetToIDString(), Source.GetFacts()->GetToIDString());
  EXPECT_EQ(Copy.Assert(u"(job (id c))"), Source.Assert(u"(job (id c))"));

  // Both run alike, each on its own facts and globals.
  Source.Run();
  Copy.Run();
  EXPECT_EQ(CopyOutput.Text, SourceOutput.Text);
  EXPECT_NE(CopyOutput.Text.find(u"b 10 "), String::npos) << StringToUtf8(CopyOutput.Text);
  Copy.Retract(0);
  EXPECT_EQ(Source.GetFacts()->FindFact(0), 0) << "the source keeps its facts";
}

TEST(Assign, ACopyOfACopyAndOfItselfChangeNothing) {
  TInferenceEngine Source;
  Source.GetUserFunctions()->Add(u"host-double", Make<TDoubleFunction>());
  Source.Parse(Knowledge);
  Source.Reset();
  TInferenceEngine First, Second;
  First.Assign(&Source);
  Second.Assign(&First);
  Second.Assign(&Second);
  EXPECT_EQ(Second.GetFacts()->GetToIDString(), Source.GetFacts()->GetToIDString());
  EXPECT_EQ(Second.GetRules()->Count(), Source.GetRules()->Count());
  IUserFunction Shared;
  ASSERT_TRUE(Second.GetUserFunctions()->TryGetValue(u"host-double", Shared));
  EXPECT_EQ(Shared->GetReasonerCount(), 3) << "a host function is shared by the three engines, not copied";
}

TEST(Assign, CollectionsCopyIntoAModuleOfAnotherEngine) {
  TInferenceEngine Source;
  Source.Parse(u"(deftype small extends (type INTEGER) (range 0 9))"
               u"(deftemplate job (slot size (type small)))"
               u"(deffacts jobs (job (size 1)) (job (size 2)))"
               u"(defrule r1 (job (size ?s)) => (printout t ?s crlf))"
               u"(deffunction f (?x) (+ ?x 1))");
  Source.Reset();

  TInferenceEngine Target;
  Target.Parse(u"(defmodule WORK) (deftemplate stale)");
  TModule* Work = Target.GetModules().GetModule(u"WORK").Get();
  Work->GetDefinedTypes()->Assign(Source.GetDefinedTypes());
  Work->GetFactTemplates()->AssignLocal(*Source.GetFactTemplates());
  EXPECT_FALSE(Work->GetFactTemplates()->Find(u"stale"));
  ASSERT_TRUE(Work->GetFactTemplates()->Find(u"job"));
  EXPECT_EQ((*Work->GetFactTemplates()->Find(u"job"))->GetModule()->GetName(), u"WORK");
  Work->GetFactSets()->Assign(*Source.GetFactSets());
  Work->GetRules()->Assign(*Source.GetRules());
  EXPECT_EQ(Work->GetRules()->Count(), 1);
  EXPECT_EQ(Work->GetFactSets()->Count(), 1);
  Source.GetFacts()->AssignTo(Work->GetFacts());
  EXPECT_EQ(Work->GetFacts()->ToString(), Source.GetFacts()->ToString());
  EXPECT_EQ(Target.GetCurrentModule()->GetName(), u"WORK") << "the current module stays as it was";

  Target.GetUserFunctions()->AssignInterpretedFunctions(*Source.GetUserFunctions());
  EXPECT_EQ(Target.ParseNExecuteFunCall(u"(f 1)")->GetAsInteger(), 2);
  // A fact that breaks the copied type is refused there too.
  EXPECT_NE(FailureOf([&] { Target.Assert(u"(job (size 20))"); }), u"(no failure)");
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

TEST(ConstructText, ConstructsPrintThroughTheirEnginesPrinters) {
  TInferenceEngine Engine;
  Engine.Parse(u"(deftype small extends (type INTEGER) (range 0 9))"
               u"(deftemplate job (slot size (type small)))"
               u"(deffacts jobs (job (size 1)))"
               u"(defrule r1 (job (size ?s&~3)) => (printout t ?s crlf))");
  auto* Parser = static_cast<TTavoClipsParser*>(Engine.GetParserObject());
  const IFactTemplate Template = Engine.FindFactTemplate(u"job");
  TRule* Rule = Engine.GetRules()->Find(u"r1");
  EXPECT_EQ(Template->ToString(), Parser->PrettyPrint(Template));
  EXPECT_EQ(Template->ToString().rfind(u"(deftemplate MAIN::job", 0), 0u) << "qualified, as the parser says";
  EXPECT_EQ(Engine.FindDefinedType(u"small")->ToString(), Parser->PrettyPrint(Engine.FindDefinedType(u"small")));
  EXPECT_EQ(Rule->ToString(), Parser->PrettyPrint(*Rule));
  EXPECT_EQ(Rule->GetPattern(0)->ToString(), u"(job (size ?s&~3))");
  EXPECT_EQ(Engine.GetFactSets()->Get(0)->ToString(), u"(deffacts jobs\r\n   (job (size 1)))") << "MAIN goes unnamed";
  Engine.SetPrintModuleQualifiers(false);
  EXPECT_EQ(Template->ToString().rfind(u"(deftemplate job", 0), 0u);

  // Without an engine a construct writes a plain form of its own.
  IFactTemplate Loose = Make<TFactTemplate>(nullptr);
  Loose->SetTemplateName(u"loose");
  EXPECT_EQ(Loose->ToString(), u"(deftemplate loose)");
}

}  // namespace
}  // namespace tavo
