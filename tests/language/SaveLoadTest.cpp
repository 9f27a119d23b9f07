// Saving and loading whole expert systems: every example and script that
// defines constructs saves, loads into a fresh engine and saves again to
// the same text, and both engines then run alike.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include <unistd.h>

#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

namespace fs = std::filesystem;

std::string ReadBytes(const fs::path& File) {
  std::ifstream In(File, std::ios::binary);
  std::stringstream Bytes;
  Bytes << In.rdbuf();
  return Bytes.str();
}

// An engine whose output and input are strings.
struct TTestEngine {
  TInferenceEngine Engine;
  String Output;
  std::vector<String> Input;
  size_t NextInput = 0;

  TTestEngine() {
    Engine.OnPrintOut = [this](TObject*, const String&, const String& Text) { Output += Text; };
    Engine.OnReadLine = [this](TObject*, const String&, String& Text) {
      Text = NextInput < Input.size() ? Input[NextInput++] : FCEOF->GetText();
    };
    Engine.OnReadToken = [this](TObject*, const String&, IStreamToken& Token) {
      String Line = NextInput < Input.size() ? Input[NextInput++] : String(FCEOF->GetText());
      TTavoClipsStream Stream(Line, &Engine);
      Token = Stream.NextToken();
    };
  }

  // Defines the constructs of a source text, form by form, running none
  // of its calls; a form that fails is passed over, as the host does.
  void Define(std::string Source) {
    auto* Parser = static_cast<TTavoParser*>(Engine.GetParserObject());
    TTavoClipsStream Stream(std::move(Source), teDefault, &Engine);
    Parser->SetStream(&Stream);
    for (;;) {
      try {
        if (!Parser->ParseExpression(false)) break;
      } catch (const EMekException&) {
        Parser->Clear();
      }
    }
    Parser->SetStream(nullptr);
  }

  // Reset and run, a bounded number of firings, failures written out.
  String Run() {
    Output.clear();
    try {
      Engine.Reset();
      Engine.Run(20000);
    } catch (const EMekException& E) {
      Output += u"[failure] " + E.Message();
    }
    return Output;
  }
};

// Saved text without its time stamp.
String Undated(String Text) {
  const size_t Start = Text.find(u"; Created: ");
  if (Start != String::npos) Text.erase(Start, Text.find(u"\r\n", Start) - Start);
  return Text;
}

// The fillers that a printing generates (?__var7, $?__var8) numbered from
// 1 in the order they stand, so that two printings compare.
String FillersNumbered(const String& Text) {
  String Result;
  int Count = 0;
  for (size_t At = 0;;) {
    const size_t Found = Text.find(u"?__var", At);
    if (Found == String::npos) return Result + Text.substr(At);
    size_t End = Found + 6;
    while (End < Text.size() && Text[End] >= u'0' && Text[End] <= u'9') ++End;
    Result += Text.substr(At, Found + 6 - At) + IntToStr(++Count);
    At = End;
  }
}

String Saved(TInferenceEngine& Engine) { return Undated(Engine.GetExpertSystem(false)); }

// Where two texts part, with some text of each from there on: what a
// failure shows instead of both whole texts.
std::string Difference(const String& Expected, const String& Actual) {
  if (Expected == Actual) return std::string();
  size_t At = 0;
  while (At < Expected.size() && At < Actual.size() && Expected[At] == Actual[At]) ++At;
  const size_t From = At > 160 ? At - 160 : 0;
  return "after: " + StringToUtf8(Expected.substr(From, At - From)) +
         "\n--- expected: " + StringToUtf8(Expected.substr(At, 160)) +
         "\n--- actual:   " + StringToUtf8(Actual.substr(At, 160));
}

std::vector<String> InputLines(const fs::path& File) {
  std::vector<String> Lines;
  std::ifstream In(File);
  for (std::string Line; std::getline(In, Line);) Lines.push_back(Utf8ToString(Line));
  return Lines;
}

struct TProgram {
  fs::path Source;
  fs::path Input;
};

std::vector<TProgram> Programs() {
  const fs::path Root = TAVO_SOURCE_DIR;
  std::vector<TProgram> Result;
  for (const auto& Entry : fs::directory_iterator(Root / "examples"))
    if (Entry.path().extension() == ".clp")
      Result.push_back({Entry.path(), Root / "tests" / "examples" / (Entry.path().stem().string() + ".in")});
  for (const auto& Entry : fs::directory_iterator(Root / "tests" / "scripts"))
    if (Entry.path().extension() == ".clp") {
      fs::path Input = Entry.path();
      Result.push_back({Entry.path(), Input.replace_extension(".in")});
    }
  std::sort(Result.begin(), Result.end(), [](const TProgram& A, const TProgram& B) { return A.Source < B.Source; });
  return Result;
}

TEST(SaveLoad, EveryProgramRoundTrips) {
  const std::vector<TProgram> All = Programs();
  ASSERT_GT(All.size(), 20u);
  for (const TProgram& Program : All) {
    SCOPED_TRACE(Program.Source.string());
    TTestEngine First;
    First.Define(ReadBytes(Program.Source));
    // Reset first, as the load does, so that both hold the same facts.
    First.Engine.Reset();
    // Fillers of patterns are named anew at each printing: one text it is.
    const String Text = First.Engine.GetExpertSystem(false);

    TTestEngine Second;
    ASSERT_EQ(FailureOf([&] { Second.Engine.SetExpertSystem(Text); }), u"(no failure)") << StringToUtf8(Text);
    EXPECT_EQ(Difference(Undated(Text), Saved(Second.Engine)), "");

    // A copy made by Assign holds the same, facts and their ids included;
    // its text is printed anew, so its fillers have new numbers.
    TTestEngine Third;
    ASSERT_EQ(FailureOf([&] { Third.Engine.Assign(&First.Engine); }), u"(no failure)");
    EXPECT_EQ(Difference(FillersNumbered(Undated(Text)), FillersNumbered(Undated(Third.Engine.GetExpertSystem(false)))),
              "");

    First.Input = Second.Input = Third.Input = InputLines(Program.Input);
    const String Expected = First.Run();
    EXPECT_EQ(Difference(Expected, Second.Run()), "");
    EXPECT_EQ(Difference(Expected, Third.Run()), "");
  }
}

}  // namespace
}  // namespace tavo

namespace tavo {
namespace {

const char16_t SmallSystem[] =
    u"(defglobal ?*n* = 0)"
    u"(deftemplate item (slot name) (slot note (default \"café\")))"
    u"(deffunction twice (?x) (* 2 ?x))"
    u"(deffacts stock (item (name a)) (item (name b)))"
    u"(defrule count (item (name ?n)) => (bind ?*n* (+ ?*n* 1)) (printout t ?n \" \" (twice ?*n*) crlf))";

// The file's lines that are neither the time stamp nor empty.
String WithoutStamp(const String& Text) { return Undated(Text); }

TEST(SaveLoad, TheSavedTextHasItsHeaderAndNoCommentsLeavesOutWhatHangsOnThem) {
  TInferenceEngine Fresh;
  const String Text = Fresh.GetExpertSystem(false);
  EXPECT_EQ(Text.rfind(u"; *************************\r\n; Inference Engine v5.0000 Output\r\n; Created: ", 0), 0u);
  EXPECT_NE(Text.find(u"\r\n(set-fact-duplication TRUE)\r\n"), String::npos);

  TTestEngine Full;
  Full.Engine.Parse(SmallSystem);
  Full.Engine.SetFactDuplication(true);
  const String Commented = Full.Engine.GetExpertSystem(false);
  EXPECT_NE(Commented.find(u"(set-fact-duplication FALSE)"), String::npos);
  EXPECT_NE(Commented.find(u"; Global Variables "), String::npos);
  EXPECT_NE(Commented.find(u"(deffunction twice"), String::npos);
  const String Bare = Full.Engine.GetExpertSystem(true);
  EXPECT_EQ(Bare.find(u";"), String::npos) << StringToUtf8(Bare);
  EXPECT_EQ(Bare.find(u"set-fact-duplication"), String::npos);
  EXPECT_EQ(Bare.find(u"defglobal"), String::npos);
  EXPECT_EQ(Bare.find(u"deffunction"), String::npos);
  EXPECT_NE(Bare.find(u"(defrule count"), String::npos);
  EXPECT_NE(Bare.find(u"(focus MAIN)"), String::npos);

  // The setting comes back with the text.
  TInferenceEngine Copy;
  Copy.SetExpertSystem(Commented);
  EXPECT_TRUE(Copy.GetFactDuplication());
}

TEST(SaveLoad, SetExpertSystemClearsParsesAndResets) {
  TTestEngine Source;
  Source.Engine.Parse(SmallSystem);
  Source.Engine.Parse(u"(defmodule SIDE) (deftemplate mark (slot x))");
  Source.Engine.Reset();
  Source.Engine.Assert(u"(item (name extra))");
  Source.Engine.PushFocus(u"SIDE");
  const String Text = Source.Engine.GetExpertSystem(false);
  EXPECT_NE(Text.find(u"\r\n(focus SIDE MAIN)\r\n"), String::npos);

  TTestEngine Target;
  Target.Engine.Parse(u"(deftemplate leftover) (defrule gone (leftover) =>)");
  Target.Engine.SetExpertSystem(Text);
  EXPECT_EQ(Target.Engine.GetRules()->Find(u"gone"), nullptr) << "cleared first";
  // Reset ran last: the asserted extra fact is gone, the deffacts are back,
  // and the focus is MAIN alone.
  EXPECT_EQ(Target.Engine.GetFocusStack().ToNamesString(), u"MAIN");
  Target.Engine.SetCurrentModule(Target.Engine.GetModules().GetModule(u"MAIN"));
  EXPECT_EQ(Target.Engine.GetFacts()->ToString(), u"(item (name a) (note \"café\"))\r\n(item (name b) (note \"café\"))\r\n(Initial-Fact)");
  Target.Output.clear();
  Target.Engine.Run();
  EXPECT_EQ(Target.Output, u"b 2\r\na 4\r\n");
}

TEST(SaveLoad, LoadFromStreamKeepsWhatTheTextAssertsAndItsAgenda) {
  TTestEngine Source;
  Source.Engine.Parse(SmallSystem);
  Source.Engine.Reset();
  Source.Engine.Assert(u"(item (name extra))");
  std::stringstream Stream;
  Source.Engine.SaveToStream(Stream);

  TTestEngine Target;
  Target.Engine.LoadFromStream(Stream);
  // No reset: the facts are those of the assert call, and each of the
  // three items waits on the agenda.
  EXPECT_EQ(Target.Engine.GetFacts()->Count(), 4);
  EXPECT_EQ(Target.Engine.GetAgendaCount(), 3);
  // The calls between the constructs printed their results as they ran.
  EXPECT_EQ(Target.Output, u"TRUE\r\n<Fact-4>\r\nTRUE\r\n");
  Target.Output.clear();
  Target.Engine.Run();
  EXPECT_EQ(Target.Output, u"extra 2\r\nb 4\r\na 6\r\n");
}

TEST(SaveLoad, EveryEncodingLoadsWithOrWithoutItsMark) {
  TInferenceEngine Source;
  Source.Parse(SmallSystem);
  const String Expected = WithoutStamp(Source.GetExpertSystem(true));
  for (TTextEncoding Encoding : {teUTF8, teUTF16LE, teUTF16BE}) {
    std::stringstream Marked;
    Source.SaveToStream(Marked, Encoding);
    const std::string Bytes = Marked.str();
    EXPECT_EQ(Bytes.rfind(GetPreamble(Encoding), 0), 0u);
    TInferenceEngine Target;
    std::istringstream In(Bytes);
    // The mark chooses the encoding, whatever the caller says.
    Target.LoadFromStream(In, teDefault);
    EXPECT_EQ(StringToUtf8(WithoutStamp(Target.GetExpertSystem(true))), StringToUtf8(Expected)) << Encoding;
  }
  // Without a mark the encoding is the caller's, UTF-8 by default.
  std::istringstream Plain(EncodeText(Source.GetExpertSystem(false), teUTF8));
  TInferenceEngine Target;
  Target.LoadFromStream(Plain);
  EXPECT_EQ(StringToUtf8(WithoutStamp(Target.GetExpertSystem(true))), StringToUtf8(Expected));
  std::istringstream Wide(EncodeText(Source.GetExpertSystem(false), teUTF16LE));
  TInferenceEngine WideTarget;
  WideTarget.LoadFromStream(Wide, teUTF16LE);
  EXPECT_EQ(StringToUtf8(WithoutStamp(WideTarget.GetExpertSystem(true))), StringToUtf8(Expected));
}

TEST(SaveLoad, FilesRoundTripAndAMissingFileRaises) {
  const fs::path Dir = fs::temp_directory_path() / ("tavo-save-" + std::to_string(::getpid()));
  fs::create_directories(Dir);
  const String File = Utf8ToString((Dir / "system.clp").string());
  TInferenceEngine Source;
  Source.Parse(SmallSystem);
  Source.SaveToFile(File, teUTF16LE);
  TInferenceEngine Target;
  Target.LoadFromFile(File);
  EXPECT_EQ(StringToUtf8(WithoutStamp(Target.GetExpertSystem(true))),
            StringToUtf8(WithoutStamp(Source.GetExpertSystem(true))));
  EXPECT_EQ(FailureOf([&] { Target.LoadFromFile(File + u".none"); }),
            u"Cannot open file \"" + File + u".none\". No such file or directory");
  EXPECT_EQ(FailureOf([&] { Target.SaveToFile(Utf8ToString((Dir / "no" / "such.clp").string())); }).rfind(
                u"Cannot open file", 0),
            0u);
  fs::remove_all(Dir);
}

TEST(SaveLoad, FactsSaveByTemplateAndLoadWithoutClearing) {
  TInferenceEngine Source;
  Source.Parse(SmallSystem);
  Source.Parse(u"(deftemplate other (slot v))");
  Source.Reset();
  Source.Assert(u"(other (v 1))");
  std::stringstream Items, Everything;
  Source.SaveFacts(Items, u"item");
  Source.SaveFacts(Everything);
  std::string Bytes = Items.str();
  ASSERT_EQ(Bytes.rfind(GetPreamble(teDefault), 0), 0u);
  EXPECT_EQ(Bytes.substr(3), "(item (name a) (note \"café\"))\r\n(item (name b) (note \"café\"))\r\n");
  EXPECT_NE(Everything.str().find("(other (v 1))\r\n"), std::string::npos);

  TInferenceEngine Target;
  Target.Parse(SmallSystem);
  Target.Parse(u"(deftemplate other (slot v))");
  Target.Assert(u"(other (v 2))");
  Target.LoadFacts(Everything);
  EXPECT_EQ(Target.GetFacts()->ToString(),
            u"(Initial-Fact)\r\n(other (v 2))\r\n(item (name a) (note \"café\"))\r\n(item (name b) (note \"café\"))\r\n"
            u"(other (v 1))")
      << "the initial fact was there already";
}

TEST(SaveLoad, AnImportingModuleWritesItsImportsAndNoCopies) {
  TInferenceEngine Engine;
  Engine.Parse(u"(defmodule LIB (export deftemplate part)) (deftemplate part (slot id))"
               u"(defmodule APP (import LIB deftemplate part)) (defrule use (part (id ?i)) =>)");
  const String Text = Engine.GetExpertSystem(false);
  const size_t App = Text.find(u"(defmodule APP");
  ASSERT_NE(App, String::npos);
  EXPECT_NE(Text.find(u"(import LIB deftemplate part)", App), String::npos);
  EXPECT_EQ(Text.find(u"(deftemplate part", App), String::npos) << StringToUtf8(Text);
  EXPECT_LT(Text.find(u"(deftemplate part"), App);
  TInferenceEngine Copy;
  Copy.SetExpertSystem(Text);
  EXPECT_EQ(StringToUtf8(Undated(Copy.GetExpertSystem(false))), StringToUtf8(Undated(Text)));
}

TEST(SaveLoad, AFailedLoadLeavesTheEngineClearedWithWhatWasRead) {
  TInferenceEngine Engine;
  Engine.Parse(u"(deftemplate old)");
  try {
    Engine.SetExpertSystem(u"(deftemplate first (slot a)) (defrule broken (first (a 1) =>)");
    FAIL() << "no failure";
  } catch (const ETavoParseException&) {
  }
  EXPECT_FALSE(Engine.FindFactTemplate(u"old"));
  EXPECT_TRUE(Engine.FindFactTemplate(u"first"));
  // The parser reads from its own stream again.
  EXPECT_TRUE(Engine.Parse(u"(deftemplate after)"));
  EXPECT_TRUE(Engine.FindFactTemplate(u"after"));
}

TEST(SaveLoad, CollectionsSaveAndLoadOneAtATime) {
  TInferenceEngine Source;
  Source.Parse(u"(deftype small extends (type INTEGER) (range 0 9)) (deftemplate t1 (slot v (type small)))"
               u"(defrule r1 (t1 (v ?v)) =>) (defrule r2 (t1 (v 1)) =>)");
  std::stringstream Types, Templates, Rules;
  Source.SaveDefinedTypes(Types);
  Source.SaveFactTemplates(Templates);
  Source.SaveRules(Rules);
  TInferenceEngine Target;
  Target.Parse(u"(deftemplate stale) (defrule stale-rule (stale) =>)");
  Target.LoadDefinedTypes(Types);
  Target.LoadFactTemplates(Templates);
  EXPECT_FALSE(Target.FindFactTemplate(u"stale")) << "the templates were cleared first";
  Target.LoadRules(Rules);
  EXPECT_EQ(Target.GetRules()->Count(), 2);
  EXPECT_EQ(Target.GetRules()->Find(u"stale-rule"), nullptr);
  EXPECT_EQ(StringToUtf8(Target.GetRules()->ToString()), StringToUtf8(Source.GetRules()->ToString()));
  EXPECT_EQ(Target.FindDefinedType(u"small")->ToString(), Source.FindDefinedType(u"small")->ToString());
}

}  // namespace
}  // namespace tavo
