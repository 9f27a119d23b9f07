#include "language/TavoClipsParser.h"

#include <gtest/gtest.h>

#include "engine/InferenceEngine.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

// An engine whose parser reads a given text, with the printed text kept.
struct TParsing {
  TParsing() {
    Engine.OnPrintOut = [this](TObject*, const String&, const String& Text) { Printed += Text; };
    Parser = static_cast<TTavoClipsParser*>(Engine.GetParserObject());
  }
  TTavoClipsParser& On(const char16_t* Text) {
    Stream = std::make_unique<TTavoClipsStream>(String(Text), &Engine);
    Parser->SetStream(Stream.get());
    return *Parser;
  }
  ~TParsing() {
    if (Parser) Parser->SetStream(nullptr);
  }

  TInferenceEngine Engine;
  TTavoClipsParser* Parser;
  std::unique_ptr<TTavoClipsStream> Stream;
  String Printed;
};

TEST(TavoClipsParserTest, ValueSequencesFollowTheirOddRules) {
  TParsing P;
  EXPECT_FALSE(P.On(u")").ParseValue());
  EXPECT_EQ(P.Stream->NextToken()->GetDataType(), u')') << "the ) is left for the caller";
  EXPECT_EQ(P.On(u"1)").ParseValue()->GetDType(), dtInteger);
  ITavoValue Three = P.On(u"1 two \"3\")").ParseValue();
  EXPECT_EQ(Three->GetToString(), u"1 two \"3\" ");
  EXPECT_EQ(P.On(u"a b =").ParseValue()->GetToString(), u"a b b ") << "the last value twice, as it stands";
  EXPECT_EQ(P.On(u"[ x ])").ParseValue()->GetToString(), u"[ x ] ");
  EXPECT_EQ(P.On(u"((1 0) (2 1)))").ParseValue()->GetDType(), dtSingletons);
  EXPECT_EQ(P.On(u"(f 1))").ParseValue()->GetDType(), dtFunCall);
  EXPECT_EQ(FailureOf([&] { P.On(u"& x").ParseValue(); }), u"Parsing Error, Bad Argument: & in ParseValue at line 1: & ");
  EXPECT_EQ(FailureOf([&] { P.On(u"a = b)").ParseList(); }),
            u"Parsing Error, \"=\" cannot appear as an atom within a fact in ParseList at line 1: b ");
}

TEST(TavoClipsParserTest, CallsTakeTheirArgumentsByKind) {
  TParsing P;
  IFunCall Equal = P.On(u"(= 1 2)").ParseFunCall();
  EXPECT_EQ(Equal->GetName(), u"=");
  IFunCall Var = P.On(u"(?f 1 2)").ParseFunCall();
  EXPECT_EQ(Var->GetName(), u"__get-var");
  EXPECT_EQ(Var->GetArgument(0)->GetToString(), u"?f");
  EXPECT_EQ(Var->GetArgumentCount(), 3);
  IFunCall Asserting = P.On(u"(assert (person (age 3)))").ParseFunCall();
  EXPECT_EQ(Asserting->GetArgument(0)->GetDType(), dtFact);
  IFunCall Nested = P.On(u"(foo (person (age 3)))").ParseFunCall();
  EXPECT_EQ(Nested->GetArgument(0)->GetAsFunCall()->GetArgument(0)->GetAsFunCall()->GetName(), u"age");
  IFunCall Modify = P.On(u"(modify ?f (age 3) (name x y))").ParseFunCall();
  EXPECT_EQ(Modify->GetArgument(1)->GetDType(), dtList);
  EXPECT_EQ(Modify->GetArgument(2)->GetAsList()->Get(1)->GetToString(), u"x y ");
  IFunCall Punctuated = P.On(u"(foo = b & ~)").ParseFunCall();
  EXPECT_EQ(Punctuated->GetArgument(0)->GetDType(), dtString);
  EXPECT_EQ(Punctuated->ToString(), u"(foo \"=\" b \"&\" \"~\")");
  EXPECT_EQ(FailureOf([&] { P.On(u"()").ParseFunCall(); }), u"Parsing Error, Missing name in ParseFunCall at line 1: ( ) ");
  EXPECT_EQ(FailureOf([&] { P.On(u"(f 1").ParseFunCall(); }),
            u"Parsing Error, Unexpected end of stream in ParseFunCall at line 1: ( f 1 EOF ");
  // A comment ahead of a call travels with it.
  EXPECT_EQ(P.On(u"; explains\n(f)").ParseFunCall()->GetComment(), u"; explains");
}

TEST(TavoClipsParserTest, FactsUseImpliedOrExistingTemplates) {
  TParsing P;
  IFact Ordered = P.On(u"(point 1 2)").ParseFact();
  EXPECT_EQ(Ordered->ToString(), u"(point 1 2)");
  EXPECT_EQ(P.Engine.FindFactTemplate(u"point")->GetComment(), u"(Implied)");
  EXPECT_EQ(P.On(u"(empty)").ParseFact()->ToString(), u"(empty)");
  IFactTemplate Person = Make<TFactTemplate>(&P.Engine, u"person");
  Person->AddSlot(u"age", Make<TTavoValue>(0, dtInteger))->SetSlotType({dtInteger, dtFloat});
  P.Engine.GetFactTemplates()->Add(u"person", Person);
  IFact Typed = P.On(u"(person (age 3.5))").ParseFact();
  EXPECT_EQ(Typed->GetValue(u"age")->GetToString(), u"3.5000");
  EXPECT_EQ(FailureOf([&] { P.On(u"(person (age x))").ParseFact(); }),
            u"Parsing Error, Not a INTEGER, FLOAT type.  Value (x) is a dtAtom type for ParseValue slot in "
            u"ParseValue(SlotTypes) at line 1: ( person ( age x ");
  P.Parser->FExplicitCreateTemplates = true;
  EXPECT_EQ(FailureOf([&] { P.On(u"(nobody)").ParseFact(); }),
            u"Parsing Error, Unknown fact template: nobody in ParseFact at line 1: ( nobody ");
  P.Parser->FExplicitCreateTemplates = false;
  EXPECT_TRUE(P.On(u"(a 1) (b 2)").LoadFacts());
  EXPECT_TRUE(P.Engine.GetFacts()->FindFact(P.On(u"(b 2)").ParseFact()) >= 0);
}

TEST(TavoClipsParserTest, TopLevelPrintsValuesAndCallsAndStopsAtTheEnd) {
  TParsing P;
  std::vector<TParsedType> Seen;
  P.Parser->OnParse = [&](TTavoParser*, TParsedType Type, const ICloneableObject&, TObject*) { Seen.push_back(Type); };
  EXPECT_FALSE(P.On(u"").ParseExpression(true));
  ASSERT_EQ(Seen.size(), 1u);
  EXPECT_EQ(Seen[0], ptEOF);
  P.On(u"42 (printout t \"x\") (defglobal ?*g* = 5) ?*g*").Parse(false);
  EXPECT_EQ(P.Printed, u"42\r\n(printout t \"x\")\r\n5\r\n") << "unexecuted, a call prints its own text";
  EXPECT_EQ(FailureOf([&] { P.On(u"?*none*").Parse(true); }), u"Unknown variable name: *none*");
  // A construct leaves no value: the event reports no type.
  Seen.clear();
  P.On(u"(defrule r => )").Parse(true);
  ASSERT_FALSE(Seen.empty());
  EXPECT_EQ(Seen[0], ptNone);
  EXPECT_NE(P.Engine.GetRules()->Find(u"r"), nullptr);
}

TEST(TavoClipsParserTest, ErrorsGatherAtTheEndWhenAsked) {
  TParsing P;
  P.Parser->FErrorHandling = ehRaiseAllAtEnd;
  String Both = FailureOf([&] { P.On(u"\"one\"\n2\n\"two\"\n").Parse(true); });
  EXPECT_EQ(Both.rfind(u"Errors parsing stream:\r\n", 0), 0u) << StringToUtf8(Both);
  EXPECT_NE(Both.find(u"at line 1"), String::npos);
  EXPECT_NE(Both.find(u"at line 3"), String::npos);
  P.Parser->FMaxErrors = 0;
  String Alone = FailureOf([&] { P.On(u"\"one\" \"two\"").Parse(true); });
  EXPECT_EQ(Alone.find(u"Errors parsing stream"), String::npos);
  EXPECT_EQ(Alone.find(u"two"), String::npos) << "the first error stops parsing";
}

TEST(TavoClipsParserTest, LongFormsAreCutAndDeepOnesRefused) {
  TParsing P;
  String Long = u"(f";
  for (int I = 0; I < 100; ++I) Long += u" arg" + IntToStr(I);
  Long += u" &";
  String Message = FailureOf([&] { P.On(Long.c_str()).ParseValue(); });
  size_t Cut = Message.find(u"... \r\n");
  ASSERT_NE(Cut, String::npos);
  // The tail is the 128 characters that start 128 from the end, counted
  // from 1: the form's last character stays out.
  String Tail = Message.substr(Cut + 6);
  EXPECT_EQ(Tail.size(), 128u);
  EXPECT_EQ(Tail.substr(Tail.size() - 11), u"arg99 & EOF") << "the last blank stays out";
  String Deep;
  for (int I = 0; I < 2000; ++I) Deep += u"(f ";
  EXPECT_NE(FailureOf([&] { P.On(Deep.c_str()).ParseFunCall(); }).find(u"nested more than 256 levels"), String::npos);
}

TEST(TavoClipsParserTest, DeffunctionsAndGlobalsComeThroughTheEngine) {
  TParsing P;
  P.Engine.Parse(u"(deffunction f \"c1\" (?x $?rest) \"c2\" ?rest ?x) (defglobal ?*a* = 1 ?*b* = (f 2))");
  IUserFunction F = P.Engine.GetUserFunction(u"f");
  ASSERT_TRUE(F);
  EXPECT_EQ(F->GetComment(), u"c2");
  EXPECT_EQ(F->GetMinArgumentCount(), 2);
  EXPECT_EQ(P.Engine.GetContext()->GetVariable(u"*b*")->GetAsInteger(), 2) << "a global's call runs as it is stored";
  EXPECT_EQ(FailureOf([&] { P.Engine.Parse(u"(deffunction g (?x y) ?x)"); }),
            u"Parsing Error, Expected \")\" in ParseFunction at line 1:  ( deffunction g ( ?x y ");
  EXPECT_EQ(FailureOf([&] { P.Engine.Parse(u"(defglobal ?x = 1)"); }),
            u"Parsing Error, Bad Variable Name, must start and end with an asterisk: x in ParseVariable at line 1: "
            u" ( defglobal ?x ");
  // Runaway recursion is an error, not a crash, and the engine goes on.
  P.Engine.Parse(u"(deffunction loop () (loop))");
  String Failure = FailureOf([&] { P.Engine.Parse(u"(loop)"); });
  EXPECT_NE(Failure.find(u"Function calls nested too deeply: the stack ran out after "), String::npos) << StringToUtf8(Failure);
  EXPECT_NE(Failure.find(u" levels of deffunction calls in loop"), String::npos);
  EXPECT_EQ(P.Engine.ParseNExecuteFunCall(u"(+ 1 2)")->GetAsInteger(), 3);
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

TEST(TavoClipsParserTest, EngineReadsSingleProductionsFromText) {
  TInferenceEngine Engine;
  Engine.Parse(u"(defglobal ?*n* = 3)");
  EXPECT_EQ(Engine.Assert(String(u"(point ?*n* 4)")), 1) << "a fact's variables resolve in the global context";
  EXPECT_EQ(Engine.GetFacts()->Get(1)->ToString(), u"(point 3 4)");
  EXPECT_EQ(Engine.Assert(String(u"(point 3 4)")), -1) << "the same fact again is a duplicate";
  Engine.Retract(String(u"(point 3 4)"));
  EXPECT_EQ(Engine.GetFacts()->Count(), 1);
  EXPECT_EQ(Engine.ParseValue(u"1 2)")->GetToString(), u"1 2 ");
  EXPECT_EQ(Engine.ParseNExecuteFunCall(u"(+ 1 2)")->GetAsInteger(), 3);
  EXPECT_EQ(Engine.ParseFunCall(u"(f ?x)")->ToString(), u"(f ?x)");
  EXPECT_EQ(Engine.ParseConstructType(u"(deffunction f ())"), ptFunction);
  EXPECT_EQ(Engine.ParseConstructType(u"42"), ptValue);
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

// Opens the header reading of the parser to the test.
class THeaderParser : public TTavoClipsParser {
 public:
  using TTavoClipsParser::ParseHeader;
  using TTavoClipsParser::TTavoClipsParser;
};

TEST(TavoClipsParserTest, HeadersMoveTheModuleAndRenameCopies) {
  TInferenceEngine Engine;
  IModule Other = Make<TModule>(&Engine);
  Other->SetName(u"OTHER");
  Engine.AddModule(Other);
  THeaderParser Parser(&Engine);
  TTavoClipsStream Stream(String(u"(deftemplate OTHER::t \"about t\" (slot x)) (deftemplate NOWHERE::t)"), &Engine);
  Parser.SetStream(&Stream);
  String Name, Module, Comment;
  IStreamToken After = Parser.ParseHeader(Name, Module, Comment, true, u"ParseFactTemplate", SExpectedDefTemplate,
                                          u"deftemplate");
  EXPECT_EQ(Name, u"t");
  EXPECT_EQ(Module, u"OTHER");
  EXPECT_EQ(Comment, u"about t");
  EXPECT_EQ(After->GetDataType(), u'(');
  EXPECT_EQ(Engine.GetCurrentModule(), Other) << "a qualified name moves the current module";
  Parser.Clear();
  EXPECT_NE(FailureOf([&] {
              Parser.ParseHeader(Name, Module, Comment, true, u"ParseFactTemplate", SExpectedDefTemplate, u"deftemplate");
            }).find(u"No such module with name=NOWHERE exists"),
            String::npos);
  // With renaming on, a taken name becomes a copy's name.
  Engine.SetCurrentModule(Engine.GetModules().Get(0));
  Engine.Parse(u"(deffunction f () 1)");
  Parser.FAutoRenameCopy = true;
  TTavoClipsStream Again(String(u"(deffunction f ())"), &Engine);
  Parser.SetStream(&Again);
  Parser.ParseHeader(Name, Comment, true, u"ParseFunction", SExpectedDefFunction, u"deffunction");
  EXPECT_EQ(Name, u"f-copy");
  Parser.SetStream(nullptr);
}

TEST(TavoClipsParserTest, GeneratedVariablesAvoidTakenNames) {
  TInferenceEngine Engine;
  TTavoClipsParser Parser(&Engine);
  IFactTemplate Person = Engine.CreateFactTemplate(u"person");
  TStringList<int> Taken;
  EXPECT_EQ(Parser.GenerateVariable(&Taken, Person, true, String(), u"?v")->GetToString(), u"??v");
  Taken.Add(u"?v");
  EXPECT_EQ(Parser.GenerateVariable(&Taken, Person, true, String(), u"?v")->GetToString(), u"?person1")
      << "from index 1 the template's name stands in for the prefix";
  EXPECT_EQ(Parser.GenerateVariable(&Taken, Person, true, SDefaultSlotName, u"x")->GetToString(), u"?x__Data");
}

}  // namespace
}  // namespace tavo
