// Saving and loading whole expert systems: every example and script that
// defines constructs saves, loads into a fresh engine and saves again to
// the same text, and both engines then run alike.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

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

    First.Input = Second.Input = InputLines(Program.Input);
    const String Expected = First.Run();
    EXPECT_EQ(Difference(Expected, Second.Run()), "");
  }
}

}  // namespace
}  // namespace tavo
