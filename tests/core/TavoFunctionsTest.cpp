#include "core/TavoFunctions.h"

#include <gtest/gtest.h>

#include <map>

#include "tests/TestSupport.h"
#include "tests/knowledge/OwnerEngine.h"

namespace tavo {
namespace {

using namespace testvalues;

// Adds its arguments; remembers how often it ran.
class TSumFunction : public TTavoUserFunction {
 public:
  using TTavoUserFunction::Call;
  void InitMetaData() override { SetFunctionName(u"sum"); }
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override {
    TTavoUserFunction::Call(FunCall, Context, Result);
    ++Runs;
    int32_t Total = 0;
    for (int I = 0; I < FunCall.GetArgumentCount(); ++I) Total += FunCall.GetArgument(I)->Resolve(Context)->GetAsInteger();
    Result = Int(Total);
  }
  int Runs = 0;
};

// Sets a return value in its context, as a return statement does.
class TReturnFunction : public TTavoUserFunction {
 public:
  void InitMetaData() override { SetFunctionName(u"return"); }
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override {
    Result = FunCall.GetArgument(0)->Resolve(Context);
    Context->SetReturnValue(Result);
  }
};

class TFailFunction : public TTavoUserFunction {
 public:
  void InitMetaData() override { SetFunctionName(u"fail"); }
  void Call(TFunctionCall&, TTavoContext*, ITavoValue&) override { throw ETavoException(u"boom"); }
};

// A reasoner that keeps functions by name, as an engine does.
struct TTableReasoner : TOwnerEngine {
  void AddUserFunction(const IUserFunction& F) override { Functions[F->GetFunctionName()] = F; }
  void RemoveUserFunction(const IUserFunction& F) override { Functions.erase(F->GetFunctionName()); }
  bool ContainsUserFunction(StringView Name, IUserFunction& F) const override {
    auto It = Functions.find(String(Name));
    if (It == Functions.end()) return false;
    F = It->second;
    return true;
  }
  std::map<String, IUserFunction> Functions;
};

IFunCall CallOf(IReasoner* Reasoner, const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
  IFunCall Call = Make<TFunctionCall>(Reasoner, Name);
  for (const ITavoValue& Argument : Arguments) Call->AddArgument(Argument);
  return Call;
}

TEST(TavoFunctionsTest, CountsStayOrderedAndGuardTheEntry) {
  TRef<TSumFunction> Sum = Make<TSumFunction>();
  EXPECT_EQ(Sum->GetFunctionName(), u"sum") << "meta data set after construction";
  ITavoValue Result;
  Sum->Call(CallOf(nullptr, u"sum", {}), nullptr, Result);
  EXPECT_EQ(Result->GetAsInteger(), 0) << "default counts accept any number";
  Sum->SetMinArgumentCount(2);
  Sum->SetMaxArgumentCount(1);
  EXPECT_EQ(Sum->GetMinArgumentCount(), 1) << "a lower maximum pulls the minimum down";
  Sum->SetMinArgumentCount(3);
  EXPECT_EQ(Sum->GetMaxArgumentCount(), 3);
  EXPECT_EQ(FailureOf([&] { Sum->Call(CallOf(nullptr, u"sum", {Int(1)}), nullptr, Result); }), u"Too few arguments for sum");
  EXPECT_EQ(FailureOf([&] { Sum->Call(CallOf(nullptr, u"sum", {Int(1), Int(1), Int(1), Int(1)}), nullptr, Result); }),
            u"Too many arguments for sum");
  EXPECT_EQ(Sum->Runs, 1) << "refused calls evaluate nothing";
}

TEST(TavoFunctionsTest, CallsBindLateAndForGood) {
  TTableReasoner Reasoner;
  IFunCall Call = CallOf(&Reasoner, u"sum", {Int(2), Int(3)});
  EXPECT_EQ(FailureOf([&] { Call->Execute(nullptr); }), u"Function is unimplemented or unassigned: sum");
  EXPECT_FALSE(Call->GetUserFunction()) << "a failed look-up leaves the call unbound";
  TRef<TSumFunction> Sum = Make<TSumFunction>();
  Sum->AddReasoner(&Reasoner);
  EXPECT_EQ(Call->Execute(nullptr)->GetAsInteger(), 5);
  Sum->DeleteReasoner(&Reasoner);
  EXPECT_TRUE(Reasoner.Functions.empty());
  EXPECT_EQ(Call->Execute(nullptr)->GetAsInteger(), 5) << "a bound call keeps its function";
  // A clone binds anew; equality and hash ignore the binding.
  IFunCall Copy = Call->CloneCall();
  EXPECT_FALSE(Copy->GetUserFunction());
  EXPECT_TRUE(Copy->Equals(Call.Get()));
  EXPECT_EQ(Copy->GetHashCode(), Call->GetHashCode());
  EXPECT_FALSE(Copy->Equals(CallOf(nullptr, u"sum", {Int(2), Make<TTavoValue>(3.0)}).Get()));
  EXPECT_EQ(FailureOf([&] { Copy->SimpleExecute(nullptr); }), u"Function is unimplemented or unassigned: sum");
  // A value holding a call resolves by executing it.
  EXPECT_EQ(Make<TTavoValue>(Call)->Resolve(nullptr)->GetAsInteger(), 5);
}

TEST(TavoFunctionsTest, RenamingMovesTheFunctionInEveryReasoner) {
  TTableReasoner A, B;
  TRef<TSumFunction> Sum = Make<TSumFunction>();
  Sum->AddReasoner(&A);
  Sum->AddReasoner(&B);
  EXPECT_EQ(Sum->AddReasoner(&A), 0) << "a reasoner is held once";
  Sum->SetFunctionName(u"plus");
  EXPECT_EQ(A.Functions.count(u"sum"), 0u);
  EXPECT_EQ(B.Functions.count(u"plus"), 1u);
  Sum->ClearReasoners();
  EXPECT_TRUE(A.Functions.empty());
  EXPECT_TRUE(B.Functions.empty());
}

TEST(TavoFunctionsTest, ArgumentsAreCheckedByKind) {
  IFunCall Call = Make<TFunctionCall>(nullptr, u"f");
  Call->AddArgument(2.6, dtInteger);
  Call->AddArgument(int32_t(2), dtFloat);
  Call->AddArgument(String(u"x"), dtVariable);
  EXPECT_EQ(Call->ToString(), u"(f 3 2.0000 ?x)");
  EXPECT_EQ(FailureOf([&] { Call->AddArgument(1.5, dtAtom); }), u"Not a Float type.  Value (1.5000) is a dtAtom type");
  EXPECT_EQ(FailureOf([&] { Call->AddArgument(String(u"s"), dtInteger); }),
            u"Not a String type.  Value (s) is a dtInteger type");
  EXPECT_EQ(Call->GetArgumentCount(), 3);
  Call->SetComment(u"first line\r\n; second");
  EXPECT_EQ(Call->ToString(), u"; first line\r\n; second\r\n(f 3 2.0000 ?x)");
}

TEST(TavoFunctionsTest, DeffunctionRunsInItsOwnChildContext) {
  TTableReasoner Reasoner;
  TRef<TSumFunction> Sum = Make<TSumFunction>();
  Sum->AddReasoner(&Reasoner);
  TRef<TReturnFunction> Return = Make<TReturnFunction>();
  Return->AddReasoner(&Reasoner);
  TRef<TFailFunction> Fail = Make<TFailFunction>();
  Fail->AddReasoner(&Reasoner);

  // (deffunction add-all (?first $?rest) (return (sum ?first 100)) (sum 0 0))
  TRef<TInterpretedFunction> AddAll = Make<TInterpretedFunction>(u"add-all");
  AddAll->AddArgument(u"first", dtVariable);
  AddAll->AddArgument(u"rest", dtMultiVariable);
  AddAll->AddStatement(CallOf(&Reasoner, u"return", {Make<TTavoValue>(CallOf(&Reasoner, u"sum", {Var(u"first"), Int(100)}))}));
  AddAll->AddStatement(CallOf(&Reasoner, u"sum", {Int(0), Int(0)}));
  EXPECT_EQ(AddAll->GetMinArgumentCount(), 2);
  EXPECT_EQ(AddAll->GetMaxArgumentCount(), 2147483647);
  EXPECT_EQ(FailureOf([&] { AddAll->AddArgument(u"x", dtInteger); }),
            u"Invalid argument type for deffunction: \"dtInteger\".  Expected dtAtom, dtVariable, dtMultiVariable");

  TTavoContext Caller;
  Caller.AddBinding(u"first", Int(-1));
  ITavoValue Result;
  AddAll->Call(CallOf(&Reasoner, u"add-all", {Int(5), Int(6), Int(7)}), &Caller, Result);
  EXPECT_EQ(Result->GetAsInteger(), 105) << "return ends the body with its value";
  EXPECT_FALSE(Caller.GetReturning()) << "and ends only this body";
  EXPECT_EQ(Caller.GetVariable(u"first")->GetAsInteger(), -1) << "parameters die with the child";

  // The multifield parameter takes the rest, also none of it.
  TRef<TInterpretedFunction> Rest = Make<TInterpretedFunction>(u"rest");
  Rest->AddArgument(u"items", dtMultiVariable);
  Rest->AddStatement(Var(u"items"));
  Rest->Call(CallOf(&Reasoner, u"rest", {}), &Caller, Result);
  EXPECT_EQ(Result->GetAsList()->GetValueCount(), 0);
  Rest->Call(CallOf(&Reasoner, u"rest", {Int(1), Int(2)}), &Caller, Result);
  EXPECT_EQ(Result->GetToString(), u"1 2 ");

  // An exception in the body still pops the child.
  TRef<TInterpretedFunction> Broken = Make<TInterpretedFunction>(u"broken");
  Broken->AddArgument(u"x", dtVariable);
  Broken->AddStatement(CallOf(&Reasoner, u"fail", {}));
  EXPECT_EQ(FailureOf([&] { Broken->Call(CallOf(&Reasoner, u"broken", {Int(1)}), &Caller, Result); }), u"boom");
  EXPECT_EQ(Caller.GetVariable(u"first")->GetAsInteger(), -1);
  EXPECT_THROW(Broken->Call(CallOf(&Reasoner, u"broken", {}), &Caller, Result), EMekException)
      << "a missing argument fails on the list's own index check";

  // A body without statements gives nil.
  TRef<TInterpretedFunction> Empty = Make<TInterpretedFunction>(u"empty");
  Empty->Call(CallOf(&Reasoner, u"empty", {}), &Caller, Result);
  EXPECT_EQ(Result, FCNil);
}

}  // namespace
}  // namespace tavo
