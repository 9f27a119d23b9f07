#include "packages/StandardPackage.h"

#include <gtest/gtest.h>

#include <vector>

#include "core/TavoEvaluator.h"
#include "engine/InferenceEngine.h"
#include "packages/MathPackage.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

using namespace testvalues;

// An engine with the package installed, a root context, and calls built
// from values and nested calls.
struct TStandardFixture {
  TInferenceEngine Engine;
  TTavoContext Context{nullptr, &Engine};
  TStandardFixture() { NewComponent<TStandardPackage>(&Engine); }

  ITavoValue Call(const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
    IFunCall Call = Make<TFunctionCall>(&Engine, Name);
    for (const ITavoValue& Argument : Arguments) Call->AddArgument(Argument);
    return Make<TTavoValue>(Call);
  }
  ITavoValue Run(const ITavoValue& Call) { return Call->Resolve(&Context); }
  ITavoValue Run(const char16_t* Name, std::initializer_list<ITavoValue> Arguments) {
    return Run(Call(Name, Arguments));
  }
};

TEST(StandardPackageTest, IfAndWhileGiveFalseUnlessABranchOrReturnSaysOtherwise) {
  TStandardFixture F;
  EXPECT_EQ(F.Run(u"if", {FCFalse, FCThen, Int(1)}), FCFalse);
  EXPECT_EQ(F.Run(u"if", {FCTrue, FCThen, Int(1), Int(2), FCElse, Int(3)})->GetAsInteger(), 2);
  EXPECT_EQ(F.Run(u"if", {FCFalse, FCThen, Int(1), FCElse, Int(3), Int(4)})->GetAsInteger(), 4);
  EXPECT_EQ(F.Run(u"if", {Int(0), FCThen}), FCFalse) << "a true condition with an empty branch";
  EXPECT_EQ(FailureOf([&] { F.Run(u"if", {FCTrue, Int(1)}); }), u"Syntax Error: Missing \"then\" in an IF statement");

  // A return inside the branch passes through if with the context still returning.
  EXPECT_EQ(F.Run(u"if", {FCTrue, FCThen, F.Call(u"return", {Int(7)}), Int(8)})->GetAsInteger(), 7);
  EXPECT_TRUE(F.Context.GetReturning());
  F.Context.ClearReturnValue();

  EXPECT_EQ(F.Run(u"while", {FCFalse, FCDo, F.Call(u"throw", {Str(u"never")})}), FCFalse);
  // Runs once, then the condition turns FALSE, which is the result.
  F.Context.SetVariable(u"x", Atom(u"go"));
  ITavoValue Loop = F.Call(u"while", {F.Call(u"neq", {Var(u"x"), Atom(u"done")}), F.Call(u"bind", {Var(u"n"), Var(u"x")}),
                                      F.Call(u"bind", {Var(u"x"), Atom(u"done")})});
  EXPECT_EQ(F.Run(Loop), FCFalse);
  EXPECT_EQ(F.Context.GetVariable(u"n")->GetAsAtom(), u"go");
  // A return leaves an endless loop with its value.
  EXPECT_EQ(F.Run(u"while", {FCTrue, FCDo, F.Call(u"return", {Int(5)}), F.Call(u"throw", {Str(u"not reached")})})
                ->GetAsInteger(),
            5);
  EXPECT_TRUE(F.Context.GetReturning());
  F.Context.ClearReturnValue();
  EXPECT_EQ(F.Run(u"return", {}), FCPopFocus);
  F.Context.ClearReturnValue();
}

TEST(StandardPackageTest, ForEachBindsEachItemAndLeavesTheVariableBound) {
  TStandardFixture F;
  ITavoValue Last = F.Run(u"foreach", {Var(u"v"), List({Atom(u"a"), Int(2)}), F.Call(u"bind", {Var(u"seen"), Var(u"v")})});
  EXPECT_EQ(Last->GetAsInteger(), 2);
  EXPECT_EQ(F.Context.GetVariable(u"v")->GetAsInteger(), 2);
  EXPECT_EQ(F.Run(u"foreach", {Var(u"w"), List({})}), FCNil);
  EXPECT_EQ(F.Run(u"foreach", {Var(u"v"), List({Int(1), Int(2)}), F.Call(u"return", {Atom(u"early")})})->GetAsAtom(),
            u"early");
  EXPECT_EQ(F.Context.GetVariable(u"v")->GetAsInteger(), 1);
}

TEST(StandardPackageTest, TryCatchesErrorsButLetsExitPass) {
  TStandardFixture F;
  ITavoValue Caught = F.Run(u"try", {F.Call(u"throw", {Str(u"boom")}), Int(1), FCCatch, Var(u"__ERROR")});
  EXPECT_EQ(Caught->GetDType(), dtString);
  EXPECT_EQ(Caught->GetAsString(), u"boom");
  EXPECT_EQ(F.Run(u"try", {F.Call(u"nope", {}), Atom(u"except"), Var(u"__ERROR")})->GetAsString(),
            u"Function is unimplemented or unassigned: nope");
  // Only a finally: the error is swallowed, the finally part ran, the result is FALSE.
  EXPECT_EQ(F.Run(u"try", {F.Call(u"throw", {Str(u"x")}), FCFinally, F.Call(u"bind", {Var(u"f"), Int(1)})}), FCFalse);
  EXPECT_EQ(F.Context.GetVariable(u"f")->GetAsInteger(), 1);
  EXPECT_EQ(F.Run(u"try", {Int(1), Int(2), FCFinally, FCCatch, Int(3)})->GetAsInteger(), 2) << "no error, no catch";
  EXPECT_EQ(FailureOf([&] { F.Run(u"try", {Int(1)}); }), u"Missing catch or finally statement for try block");
  EXPECT_EQ(FailureOf([&] { F.Run(u"try", {Int(1), FCCatch, F.Call(u"throw", {Str(u"again")})}); }), u"(no failure)");
  EXPECT_EQ(FailureOf([&] { F.Run(u"try", {F.Call(u"throw", {Str(u"a")}), FCCatch, F.Call(u"throw", {Str(u"b")})}); }),
            u"b");

  // exit passes through try, after its finally part has run.
  ITavoValue Exit = F.Call(u"try", {F.Call(u"exit", {}), FCFinally, F.Call(u"bind", {Var(u"g"), Int(2)}), FCCatch, Int(0)});
  EXPECT_THROW(F.Run(Exit), EExit);
  EXPECT_EQ(F.Context.GetVariable(u"g")->GetAsInteger(), 2);

  // throw raises a plain failure, not one of the engine's own.
  bool Plain = false;
  try {
    F.Run(u"throw", {Atom(u"raw")});
  } catch (const ETavoException&) {
  } catch (const EMekException& E) {
    Plain = E.Message() == u"raw";
  }
  EXPECT_TRUE(Plain);
}

TEST(StandardPackageTest, ComparisonsAndLogicGiveTheSharedBooleans) {
  TStandardFixture F;
  EXPECT_EQ(F.Run(u"eq", {Int(1), Flt(1.0)}), FCFalse);
  EXPECT_EQ(F.Run(u"=", {Int(1), Flt(1.0)}), FCTrue);
  EXPECT_EQ(F.Run(u"eq*", {Int(1), Flt(1.0)}), FCTrue);
  EXPECT_EQ(F.Run(u"eq", {Atom(u"a"), Atom(u"a"), Str(u"a")}), FCFalse);
  EXPECT_EQ(F.Run(u"eq", {Atom(u"a")}), FCTrue);
  EXPECT_EQ(F.Run(u"neq", {Atom(u"a"), Atom(u"b"), Atom(u"a")}), FCFalse);
  EXPECT_EQ(F.Run(u"neq", {Atom(u"a"), Atom(u"b"), Str(u"a")}), FCTrue);
  EXPECT_EQ(F.Run(u"<>", {Int(1), Int(2), Flt(1.0)}), FCFalse);
  EXPECT_EQ(F.Run(u"<>", {Int(1), Int(2), Int(3)}), FCTrue);
  // The orderings compare each argument with the next, not with the first.
  EXPECT_EQ(F.Run(u">", {Int(3), Int(1), Int(2)}), FCFalse);
  EXPECT_EQ(F.Run(u">=", {Int(2), Flt(2.0), Int(1)}), FCTrue);
  EXPECT_EQ(F.Run(u"<", {Int(1), Int(2), Int(2)}), FCFalse);
  EXPECT_EQ(F.Run(u"<=", {Int(1), Int(2), Flt(2.0)}), FCTrue);
  EXPECT_EQ(FailureOf([&] { F.Run(u"<", {Int(1)}); }), u"Too few arguments for <");
  // Equality evaluates every argument even once the answer is known.
  EXPECT_EQ(FailureOf([&] { F.Run(u"eq", {Int(1), Int(2), F.Call(u"throw", {Str(u"late")})}); }), u"late");

  // and, or stop early.
  EXPECT_EQ(F.Run(u"and", {}), FCTrue);
  EXPECT_EQ(F.Run(u"and", {Int(1), FCFalse, F.Call(u"throw", {Str(u"x")})}), FCFalse);
  EXPECT_EQ(F.Run(u"or", {FCFalse, Int(0), F.Call(u"throw", {Str(u"x")})}), FCTrue);
  EXPECT_EQ(F.Run(u"or", {}), FCFalse);
  EXPECT_EQ(F.Run(u"not", {FCFalse}), FCTrue);
  EXPECT_EQ(F.Run(u"not", {FCNil}), FCFalse);
}

TEST(StandardPackageTest, ATruthWorkedOutWithoutValuesIsTheTruthOfTheCall) {
  TStandardFixture F;
  NewComponent<TMathPackage>(&F.Engine);
  const ITavoValue Text = Str(u"x");
  const ITavoValue Calls[] = {
      F.Call(u"=", {Int(1), Flt(1.0)}),
      F.Call(u"=", {Int(4)}),
      F.Call(u"<>", {Int(1), Int(2), Flt(1.0)}),
      F.Call(u">", {Int(3), Int(1), Int(2)}),
      F.Call(u">=", {Int(2), Flt(2.0), Int(1)}),
      F.Call(u"<", {Flt(-0.5), F.Call(u"-", {Int(3), Int(4)})}),
      F.Call(u"<=", {F.Call(u"*", {Int(2), Int(3)}), Int(6)}),
      F.Call(u"and", {}),
      F.Call(u"and", {F.Call(u">", {Int(2), Int(1)}), F.Call(u"=", {Int(1), Int(1)})}),
      F.Call(u"and", {F.Call(u">", {Int(1), Int(2)}), F.Call(u"<", {Text, Int(1)})}),
      F.Call(u"or", {F.Call(u">", {Int(1), Int(2)}), F.Call(u"<>", {Int(1), Int(1)})}),
      F.Call(u"or", {F.Call(u">", {Int(2), Int(1)}), F.Call(u"<", {Text, Int(1)})}),
      F.Call(u"not", {F.Call(u"<>", {Int(1), Int(2)})}),
  };
  for (const ITavoValue& Call : Calls) {
    bool Truth;
    // A call binds its functions when first evaluated; until then only the
    // general way can answer.
    EXPECT_FALSE(EvaluateTruth(Call, &F.Context, Truth)) << StringToUtf8(Call->ToString());
    const bool General = !F.Run(Call)->Equals(FCFalse);
    ASSERT_TRUE(EvaluateTruth(Call, &F.Context, Truth)) << StringToUtf8(Call->ToString());
    EXPECT_EQ(Truth, General) << StringToUtf8(Call->ToString());
  }
  // Text, a function without the road, a call not yet settled or an
  // argument count the function refuses: the caller must evaluate.
  const ITavoValue Unsettled[] = {
      F.Call(u"=", {Text, Int(1)}),
      F.Call(u"eq", {Int(1), Int(1)}),
      F.Call(u"and", {F.Call(u">", {Int(2), Int(1)}), F.Call(u"<", {Text, Int(1)})}),
      F.Call(u"not", {FCFalse}),
      F.Call(u"<", {Int(1)}),
  };
  for (const ITavoValue& Call : Unsettled) {
    bool Truth;
    FailureOf([&] { F.Run(Call); });
    EXPECT_FALSE(EvaluateTruth(Call, &F.Context, Truth)) << StringToUtf8(Call->ToString());
  }
}

TEST(StandardPackageTest, WatchWordsChangeTheEngineWatchSet) {
  TStandardFixture F;
  EXPECT_EQ(F.Run(u"watch", {Atom(u"facts")}), FCTrue);
  F.Run(u"watch", {Atom(u"rules")});
  EXPECT_EQ(F.Engine.GetWatch(), (TConstructWatches{cwFact, cwRule}));
  F.Run(u"unwatch", {Atom(u"facts")});
  EXPECT_EQ(F.Engine.GetWatch(), TConstructWatches{cwRule});
  F.Run(u"watch", {Atom(u"all")});
  EXPECT_EQ(F.Engine.GetWatch(), TavoAllWatches);
  F.Run(u"unwatch", {Atom(u"all")});
  EXPECT_TRUE(F.Engine.GetWatch().Empty());
  EXPECT_EQ(FailureOf([&] { F.Run(u"watch", {Atom(u"bogus")}); }), u"Cannot watch bogus");
  EXPECT_EQ(FailureOf([&] { F.Run(u"unwatch", {Atom(u"Rules")}); }), u"Cannot unwatch Rules");
}

TEST(StandardPackageTest, StorageSymbolsAndRunControl) {
  TStandardFixture F;
  EXPECT_EQ(F.Run(u"store", {Atom(u"x"), Int(4)})->GetAsInteger(), 4);
  EXPECT_EQ(F.Run(u"fetch", {Str(u"x")})->GetAsInteger(), 4);
  EXPECT_EQ(F.Run(u"fetch", {Atom(u"unknown")}), FCNil);
  F.Run(u"store", {Atom(u"x"), FCNil});
  EXPECT_FALSE(F.Engine.GetStorage()->ContainsKey(String(u"x")));
  F.Run(u"store", {Atom(u"y"), Int(1)});
  F.Run(u"clear-storage", {});
  EXPECT_EQ(F.Engine.GetStorage()->Count(), 0);

  String First = F.Run(u"gensym*", {})->GetAsAtom();
  EXPECT_EQ(First.substr(0, 3), u"gen");
  EXPECT_NE(F.Run(u"gensym*", {})->GetAsAtom(), First);

  EXPECT_EQ(F.Run(u"halt", {}), FCTrue);
  EXPECT_TRUE(F.Engine.GetHalt());
  ITavoValue Fired = F.Run(u"run", {Int(10)});
  EXPECT_EQ(Fired->GetDType(), dtInteger);
  EXPECT_EQ(F.Run(u"version", {})->GetAsFloat(), 5.0);

  // bind, and reading a variable by name or by variable.
  EXPECT_EQ(F.Run(u"bind", {Var(u"z"), Str(u"v")})->GetAsString(), u"v");
  EXPECT_EQ(F.Run(u"__get-var", {Var(u"z")})->GetAsString(), u"v");
  EXPECT_EQ(F.Run(u"__get-var", {Atom(u"z")})->GetAsString(), u"v");
  EXPECT_EQ(F.Run(u"__get-var", {Atom(u"none")}), FCNil);
  EXPECT_EQ(FailureOf([&] { F.Run(u"bind", {Var(u"z")}); }), u"Too few arguments for bind");
}

TEST(StandardPackageTest, PrintOutJoinsItsArgumentsForTheLogicalName) {
  TStandardFixture F;
  EXPECT_EQ(FailureOf([&] { F.Run(u"printout", {Atom(u"nowhere"), Int(1)}); }),
            u"Function is unimplemented or unassigned: printout");
  String Channel, Printed;
  F.Engine.OnPrintOut = [&](TObject*, const String& OutID, const String& Text) {
    Channel = OutID;
    Printed += Text;
  };
  ITavoValue Result = F.Run(u"printout", {Atom(u"t"), Str(u"n="), Int(3), Atom(u"crlf"), Flt(2.5), Atom(u" "),
                                          List({Atom(u"a"), Int(1)}), F.Call(u"fetch", {Atom(u"none")})});
  EXPECT_EQ(Result, FCNil);
  EXPECT_EQ(Channel, u"t");
  EXPECT_EQ(Printed, u"n=3\r\n2.5000 (a 1 )");
  // A nested printout prints first and leaves the outer text whole.
  Printed.clear();
  F.Run(u"printout", {Atom(u"t"), Atom(u"outer"), F.Call(u"printout", {Atom(u"t"), Atom(u"inner")})});
  EXPECT_EQ(Printed, u"innerouter");
}

TEST(StandardPackageTest, ReadLineGivesTheEndOfFileSymbolWhenNoInputIsLeft) {
  TStandardFixture F;
  F.Engine.GetIOStreams()->AddStream(u"log", new TGTextStream(std::string("one\n\nEOF\n")));
  EXPECT_EQ(F.Run(u"readline", {Atom(u"log")})->GetAsString(), u"one");
  ITavoValue Empty = F.Run(u"readline", {Atom(u"log")});
  EXPECT_EQ(Empty->GetDType(), dtString) << "an empty line is no end";
  EXPECT_EQ(Empty->GetAsString(), u"");
  // A line of the symbol's text reads as the symbol, as read gives it.
  EXPECT_EQ(F.Run(u"readline", {Atom(u"log")}), FCEOF);
  EXPECT_EQ(F.Run(u"readline", {Atom(u"log")}), FCEOF);
  EXPECT_EQ(F.Run(u"readline", {Atom(u"log")}), FCEOF) << "and stays at the end";
  // The standard channel: the handler reports its end with the symbol's text.
  std::vector<String> Lines{u"", u"last"};
  F.Engine.OnReadLine = [&](TObject*, const String&, String& Text) {
    if (Lines.empty()) {
      Text = FCEOF->GetText();
      return;
    }
    Text = Lines.back();
    Lines.pop_back();
  };
  EXPECT_EQ(F.Run(u"readline", {})->GetAsString(), u"last");
  EXPECT_EQ(F.Run(u"readline", {})->GetDType(), dtString);
  EXPECT_EQ(F.Run(u"readline", {}), FCEOF);
}

}  // namespace
}  // namespace tavo
