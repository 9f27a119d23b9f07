#include "packages/TavoPackages.h"

#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

ITavoValue CallIn(TInferenceEngine& Engine, const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
  IFunCall Call = Make<TFunctionCall>(&Engine, Name);
  for (const ITavoValue& Argument : Arguments) Call->AddArgument(Argument);
  TTavoContext Context(nullptr, &Engine);
  return Call->Execute(&Context);
}

TEST(TavoPackagesTest, HostRegistersAFunctionInAFewLines) {
  TInferenceEngine Engine;
  auto* Twice = new TCustomUserFunction(&Engine);
  Twice->SetFunctionName(u"twice");
  Twice->SetMinArgumentCount(1);
  Twice->SetMaxArgumentCount(1);
  Twice->OnCall = [](TObject*, const IFunCall& Call, TTavoContext* Context, ITavoValue& Result) {
    Result = Make<TTavoValue>(2 * Call->GetArgument(0)->Resolve(Context)->GetAsInteger(), dtInteger);
  };
  Twice->SetEngine(&Engine);
  EXPECT_EQ(CallIn(Engine, u"twice", {Int(21)})->GetAsInteger(), 42);
  EXPECT_EQ(FailureOf([&] { CallIn(Engine, u"twice", {}); }), u"Too few arguments for twice");
  EXPECT_EQ(Twice->GetArgumentString(), u"<expression>");
  // Without a handler a host function gives nil.
  Twice->OnCall = nullptr;
  EXPECT_EQ(CallIn(Engine, u"twice", {Int(1)}), FCNil);
  // Leaving the engine takes the function out of it.
  Twice->SetEngine(nullptr);
  EXPECT_FALSE(Engine.GetUserFunction(u"twice"));
}

TEST(TavoPackagesTest, InnerFunctionOutlivingItsComponentRefusesCalls) {
  TInferenceEngine Engine;
  auto* Host = new TCustomUserFunction(&Engine);
  Host->SetFunctionName(u"gone");
  Host->SetEngine(&Engine);
  IUserFunction Inner = Host->GetInnerFunction();
  IFunCall Call = Make<TFunctionCall>(&Engine, u"gone");
  TTavoContext Context(nullptr, &Engine);
  EXPECT_EQ(Call->Execute(&Context), FCNil);
  delete Host;
  EXPECT_FALSE(Engine.GetUserFunction(u"gone"));
  EXPECT_EQ(FailureOf([&] { Call->Execute(&Context); }), u"Function is unimplemented or unassigned: gone")
      << "the bound call still reaches the inner function, which has lost its owner";
}

TEST(TavoPackagesTest, SyntaxTextFollowsTheCounts) {
  EXPECT_EQ(CreateArgumentExpressions(u"", 1, 3), u"<expression> [ <expression> [ <expression>]]");
  EXPECT_EQ(CreateArgumentExpressions(u"<a> <b>", 0, 2), u"[ <a> [ <b>]]");
  EXPECT_EQ(CreateArgumentExpressions(u"", 2, 1), u"");
  String Unlimited = CreateArgumentExpressions(u"", 0, 2147483647);
  size_t Count = 0;
  for (size_t At = Unlimited.find(u"<expression>"); At != String::npos; At = Unlimited.find(u"<expression>", At + 1)) ++Count;
  EXPECT_EQ(Count, 10u) << "stops at the limit";
}

TEST(TavoPackagesTest, KindMetaDataTakesTheKindsRowOrNothing) {
  static constexpr TFunctionMetaData Kinds[] = {
      {u"first", u"The first", u" <a>", 1, 1},
      {u"second", u"The second", u" <a> <b>+", 2, AnyArgumentCount},
  };
  IUserFunction Function = Make<TTavoUserFunction>();
  SetKindMetaData(*Function, Kinds, 1);
  EXPECT_EQ(Function->GetFunctionName(), u"second");
  EXPECT_EQ(Function->GetComment(), u"The second");
  EXPECT_EQ(Function->GetArgumentString(), u" <a> <b>+");
  EXPECT_EQ(Function->GetMinArgumentCount(), 2);
  EXPECT_EQ(Function->GetMaxArgumentCount(), AnyArgumentCount);
  // A kind beyond the table, on either side, leaves the function as it was.
  SetKindMetaData(*Function, Kinds, 2);
  SetKindMetaData(*Function, Kinds, -1);
  EXPECT_EQ(Function->GetFunctionName(), u"second");
  EXPECT_EQ(Function->GetComment(), u"The second");
  EXPECT_EQ(Function->GetMinArgumentCount(), 2);
}

class TPairPackage : public TUserPackage {
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override {
    TUserPackage::CreateFunctions();
    for (const char16_t* Name : {u"first", u"second"}) {
      IUserFunction Function = Make<TTavoInnerFunction>();
      Function->SetFunctionName(Name);
      static_cast<TTavoInnerFunction*>(Function.Get())->OnCall =
          [Name](TObject*, const IFunCall&, TTavoContext*, ITavoValue& Result) {
            Result = Make<TTavoValue>(String(Name), dtAtom);
          };
      GetFunctions().Add(Function);
    }
  }
};

TEST(TavoPackagesTest, PackagesInstallTheirFunctionsIntoEveryReasoner) {
  TInferenceEngine Main, Other;
  auto* Package = NewComponent<TPairPackage>(&Main);
  EXPECT_EQ(CallIn(Main, u"second", {})->GetAsAtom(), u"second");
  Package->SetEngine(&Other);
  EXPECT_EQ(CallIn(Other, u"first", {})->GetAsAtom(), u"first");
  EXPECT_EQ(Package->IndexOf(u"second"), 1);
  EXPECT_EQ(Package->GetFunctions().ToString(), u"first\r\nsecond\r\n");
  // A function added later reaches both engines; a removed one leaves them.
  IUserFunction Third = Make<TTavoInnerFunction>();
  Third->SetFunctionName(u"third");
  Package->GetFunctions().Add(Third);
  EXPECT_TRUE(Main.GetUserFunction(u"third"));
  EXPECT_TRUE(Other.GetUserFunction(u"third"));
  Package->GetFunctions().Delete(2);
  EXPECT_FALSE(Main.GetUserFunction(u"third"));
  // Reset makes the functions anew.
  IUserFunction OldFirst = Main.GetUserFunction(u"first");
  Package->Reset();
  EXPECT_NE(Main.GetUserFunction(u"first"), OldFirst);
  delete Package;
  EXPECT_FALSE(Main.GetUserFunction(u"first"));
  EXPECT_FALSE(Other.GetUserFunction(u"first"));
}

TEST(TavoPackagesTest, EngineTableKeepsNamesAndPolicy) {
  TInferenceEngine Engine;
  String Log;
  Engine.OnAddUserFunction = [&](TObject*, const IUserFunction& F) { Log += u"+" + F->GetFunctionName(); };
  Engine.OnRemoveUserFunction = [&](TObject*, const IUserFunction& F) { Log += u"-" + F->GetFunctionName(); };
  TUserFunctions& Table = *Engine.GetUserFunctions();
  IUserFunction F = Make<TInterpretedFunction>(u"f");
  EXPECT_EQ(FailureOf([&] { Table.Add(u"g", F); }), u"Function names do not match: g and f");
  Table.Add(u"f", F);
  EXPECT_EQ(Table.GetNumInterpreted(), 1);
  EXPECT_EQ(F->GetReasoner(0), static_cast<IReasoner*>(&Engine));
  IUserFunction Other = Make<TInterpretedFunction>(u"f");
  Engine.SetDuplicateConstructs(dcError);
  EXPECT_EQ(FailureOf([&] { Table.AddOrSetValue(u"f", Other); }), u"Function Name already exists: \"f\"");
  Engine.SetDuplicateConstructs(dcIgnore);
  Table.AddOrSetValue(u"f", Other);
  EXPECT_EQ(Engine.GetUserFunction(u"f"), F);
  Engine.SetDuplicateConstructs(dcOverwrite);
  Table.AddOrSetValue(u"f", Other);
  EXPECT_EQ(Engine.GetUserFunction(u"f"), Other);
  EXPECT_EQ(F->GetReasonerCount(), 0) << "the replaced function forgets the engine";
  Other->SetFunctionName(u"h");
  EXPECT_TRUE(Engine.GetUserFunction(u"h"));
  EXPECT_FALSE(Engine.GetUserFunction(u"f"));
  EXPECT_EQ(Table.RemoveFunction(u"h"), Other);
  EXPECT_EQ(Table.GetNumInterpreted(), 0);
  EXPECT_EQ(Log, u"+f-f+f-f+h-h");
}

}  // namespace
}  // namespace tavo
