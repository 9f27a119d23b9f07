#include "engine/InferenceEngine.h"

#include <gtest/gtest.h>

#include "tests/TestSupport.h"

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

namespace tavo {
namespace {

// An engine whose printed text and events are recorded.
struct TRecordedEngine {
  TRecordedEngine() {
    Engine.OnPrintOut = [this](TObject*, const String& OutID, const String& Text) {
      Printed += Text;
      LastOutID = OutID;
    };
    Engine.OnStartInference = [this](TObject*) { Log += u"start;"; };
    Engine.OnEndInference = [this](TObject*, int Fired) { Log += u"end " + IntToStr(Fired) + u";"; };
    Engine.OnPushFocus = [this](TObject*, const IModule& M) { Log += u"push " + M->GetName() + u";"; };
    Engine.OnPopFocus = [this](TObject*, const IModule& M) { Log += u"pop " + M->GetName() + u";"; };
  }
  IModule AddModule(const char16_t* Name) {
    IModule Module = Make<TModule>(&Engine);
    Module->SetName(Name);
    Engine.AddModule(Module);
    return Module;
  }
  String FocusNames() const { return Engine.GetFocusStack().ToNamesString(); }

  TInferenceEngine Engine;
  String Printed;
  String LastOutID = u"(none)";
  String Log;
};


TEST(InferenceEngineTest, NewEngineStartsOnMainWithPublishedDefaults) {
  TInferenceEngine Engine;
  ASSERT_EQ(Engine.GetModules().Count(), 1);
  EXPECT_EQ(Engine.GetModules().Get(0)->GetName(), u"MAIN");
  EXPECT_TRUE(Engine.GetModules().Get(0)->IsMain());
  EXPECT_EQ(Engine.GetFocusStack().ToNamesString(), u"MAIN");
  EXPECT_EQ(Engine.GetCurrentModule(), Engine.GetModules().Get(0));
  EXPECT_EQ(Engine.GetDuplicateConstructs(), dcOverwrite);
  EXPECT_EQ(Engine.GetPackages(), TavoAllPackages);
  EXPECT_FALSE(Engine.GetFactDuplication());
  EXPECT_TRUE(Engine.GetFuzzyAutoTerms());
  EXPECT_FLOAT_EQ(Engine.GetFuzzyEqualsThreshold(), 0.01f);
  EXPECT_EQ(Engine.GetParserErrorHandling(), ehRaiseImmediate);
  EXPECT_EQ(Engine.GetParserMaxErrors(), 10);
  EXPECT_TRUE(Engine.GetResetGlobals());
  EXPECT_EQ(Engine.GetStrategy(), ssDepthFirst);
  EXPECT_EQ(Engine.GetSymbolIndex(), 1);
  EXPECT_EQ(Engine.GetTypeChecks(), TTypeChecks{tcStatic});
  EXPECT_TRUE(Engine.GetWatch().Empty());
  EXPECT_EQ(Engine.GetEvalSalience(), sActivate);
  EXPECT_FLOAT_EQ(Engine.GetVersion(), 5.0f);
}

TEST(InferenceEngineTest, RunOnAnEmptyAgendaPopsTheFocusAndHalts) {
  TRecordedEngine R;
  R.Engine.SetWatch({cwFocus});
  EXPECT_EQ(R.Engine.Run(), 0);
  EXPECT_EQ(R.FocusNames(), u"");
  EXPECT_TRUE(R.Engine.GetHalt());
  EXPECT_EQ(R.Engine.GetCurrentModule()->GetName(), u"MAIN") << "the current module stays";
  EXPECT_EQ(R.Printed, u"<== Focus MAIN\r\n");
  EXPECT_EQ(R.LastOutID, u"") << "engine output passes the empty name";
  EXPECT_EQ(R.Log, u"start;pop MAIN;end 0;");

  // The next run starts on MAIN again; a halt does not carry over.
  R.Printed.clear();
  R.Log.clear();
  EXPECT_EQ(R.Engine.Run(), 0);
  EXPECT_EQ(R.Printed, u"==> Focus MAIN\r\n<== Focus MAIN\r\n");
  EXPECT_EQ(R.Log, u"start;push MAIN;pop MAIN;end 0;");
}

TEST(InferenceEngineTest, RunWithNoFiringsAllowedKeepsTheFocus) {
  TRecordedEngine R;
  EXPECT_EQ(R.Engine.Run(0), 0);
  EXPECT_EQ(R.FocusNames(), u"MAIN");
  EXPECT_FALSE(R.Engine.GetHalt());
  EXPECT_EQ(R.Log, u"start;end 0;");
}

TEST(InferenceEngineTest, StatisticsPrintNothingWhenNoRuleFired) {
  TRecordedEngine R;
  R.Engine.SetWatch({cwStatistics});
  EXPECT_EQ(R.Engine.Run(), 0);
  EXPECT_EQ(R.Printed, u"");
  EXPECT_EQ(R.Log, u"start;pop MAIN;end 0;");
  EXPECT_GE(R.Engine.GetStatRunTime(), 0.0);
  EXPECT_LT(R.Engine.GetStatRunTime(), 60.0) << "a span in seconds, not a clock reading";
  EXPECT_EQ(R.Engine.GetStatNumRulesFired(), 0);
}

TEST(InferenceEngineTest, SymbolsAndIdsCount) {
  TInferenceEngine Engine;
  EXPECT_EQ(Engine.GenerateSymbol(u"gen"), u"gen1");
  EXPECT_EQ(Engine.GenerateSymbol(u"gen"), u"gen2");
  Engine.SetSymbolIndex(10);
  EXPECT_EQ(Engine.GetSymbolIndex(), 10);
  Engine.SetSymbolIndex(3);
  EXPECT_EQ(Engine.GetSymbolIndex(), 11) << "going back moves the index forward";
  Engine.SetSymbolIndex(11);
  EXPECT_EQ(Engine.GetSymbolIndex(), 12);
  EXPECT_EQ(Engine.NewFactId(), 1) << "the initial fact took 0";
  EXPECT_EQ(Engine.NewFactId(), 2);
  EXPECT_EQ(Engine.NewRuleId(), 0);
}

TEST(InferenceEngineTest, FocusStackPushesAndPopsWithWatchLines) {
  TRecordedEngine R;
  IModule A = R.AddModule(u"A");
  IModule B = R.AddModule(u"B");
  EXPECT_EQ(R.Engine.GetCurrentModule(), R.Engine.GetModules().Get(0)) << "adding keeps the current module";
  R.Engine.SetWatch({cwFocus});
  R.Engine.PushFocus(u"A");
  R.Engine.PushFocus(B);
  R.Engine.PushFocus(B);  // already on top: nothing at all
  EXPECT_EQ(R.FocusNames(), u"B A MAIN");
  EXPECT_EQ(R.Engine.GetCurrentModule(), B);
  EXPECT_EQ(R.Engine.PopFocus(), B);
  EXPECT_EQ(R.Engine.GetCurrentModule(), A);
  EXPECT_EQ(R.Engine.PopFocus(), A);
  EXPECT_EQ(R.Engine.PopFocus()->GetName(), u"MAIN");
  EXPECT_FALSE(R.Engine.PopFocus());
  EXPECT_TRUE(R.Engine.GetHalt());
  EXPECT_EQ(R.Engine.GetCurrentModule(), R.Engine.GetModules().Get(0));
  EXPECT_EQ(R.Printed,
            u"==> Focus A from MAIN\r\n==> Focus B from A\r\n==> Focus B to A\r\n"
            u"==> Focus A to MAIN\r\n<== Focus MAIN\r\n");
  EXPECT_EQ(R.Log, u"push A;push B;pop B;pop A;pop MAIN;");
  EXPECT_EQ(FailureOf([&] { R.Engine.PushFocus(u"nowhere"); }),
            u"No such module with name=nowhere exists");
}

TEST(InferenceEngineTest, ModuleNamesAreCheckedAndUnique) {
  TRecordedEngine R;
  IModule A = R.AddModule(u"A");
  IModule Main = R.Engine.GetModules().Get(0);
  const String Reserved = u"Module \"MAIN\" is reserved name and cannot be used for any other module";
  EXPECT_EQ(FailureOf([&] { A->SetName(u"MAIN"); }), Reserved);
  EXPECT_EQ(FailureOf([&] { Main->SetName(u"OTHER"); }), Reserved);
  EXPECT_EQ(FailureOf([&] { A->SetName(u"a;b"); }), u"\"a;b\" contains unexpected character: \";\"");
  IModule B = R.AddModule(u"B");
  EXPECT_EQ(FailureOf([&] { B->SetName(u"A"); }), u"Module Name already exists: \"A\"");
  EXPECT_EQ(B->GetName(), u"B") << "a refused name leaves the old one";
  R.Engine.RenameModule(u"B", u"C");
  EXPECT_EQ(B->GetName(), u"C");
  EXPECT_EQ(R.Engine.GetModules().ToNamesString(), u"MAIN A C");
}

TEST(InferenceEngineTest, ModuleOfAnExistingNameReplacesIt) {
  TRecordedEngine R;
  IModule First = R.AddModule(u"A");
  R.Engine.PushFocus(First);
  R.Engine.PushFocus(u"MAIN");
  R.Engine.PushFocus(First);
  IModule Second = R.AddModule(u"A");
  EXPECT_EQ(R.Engine.GetModules().Count(), 2);
  EXPECT_EQ(R.Engine.GetModules().Get(1), Second);
  EXPECT_EQ(R.FocusNames(), u"MAIN MAIN") << "every entry of the old module leaves the stack";
  // A second main module takes index 0.
  IModule NewMain = Make<TModule>(&R.Engine, true);
  NewMain->SetName(u"MAIN");
  R.Engine.AddModule(NewMain);
  EXPECT_EQ(R.Engine.GetModules().Get(0), NewMain);
  EXPECT_EQ(R.Engine.GetModules().Count(), 2);
}

TEST(InferenceEngineTest, OutputGoesToTheHandlerOrNowhere) {
  TInferenceEngine Engine;
  EXPECT_NO_THROW(Engine.PrintOut(u"t", u"lost"));
  EXPECT_EQ(FailureOf([&] { Engine.PrintOut(u"nosuch", u"x"); }),
            u"Function is unimplemented or unassigned: printout");
  int Calls = 0;
  Engine.OnPrintOut = [&](TObject* Sender, const String& OutID, const String& Text) {
    EXPECT_EQ(Sender, &Engine);
    EXPECT_EQ(OutID, u"t");
    EXPECT_EQ(Text, u"hello");
    ++Calls;
  };
  Engine.PrintOut(u"t", u"hello");
  Engine.PrintOut(u"nosuch", u"x");  // passed over, the handler is not called
  EXPECT_EQ(Calls, 1);
}

TEST(InferenceEngineTest, CaptureTakesTheStandardChannelOnly) {
  TRecordedEngine R;
  std::ostringstream Written;
  auto* Log = new TGTextStream(std::string());
  Log->SetOutput(&Written);
  R.Engine.GetIOStreams()->AddStream(u"log", Log);
  auto Capture = std::make_unique<std::ostringstream>();
  std::ostringstream& Captured = *Capture;
  ASSERT_TRUE(R.Engine.StartCapture(std::move(Capture), teDefault));
  EXPECT_TRUE(R.Engine.GetCapturing());
  R.Engine.PrintOut(u"t", u"one ");
  R.Engine.PrintOut(u"two\u00e9");
  R.Engine.PrintOut(u"log", u"named");
  R.Engine.PrintOut(u"nosuch", u"lost");
  EXPECT_EQ(Captured.str(), "\xEF\xBB\xBFone two\xC3\xA9");
  EXPECT_EQ(Written.str(), "named");
  EXPECT_EQ(R.Printed, u"") << "the handler hears nothing while the capture is on";
  EXPECT_TRUE(R.Engine.StopCapture());
  EXPECT_FALSE(R.Engine.GetCapturing());
  R.Engine.PrintOut(u"t", u"back");
  EXPECT_EQ(R.Printed, u"back");
}

TEST(InferenceEngineTest, CaptureWritesInItsEncodingFromThePreambleOn) {
  TInferenceEngine Engine;
  auto Capture = std::make_unique<std::ostringstream>();
  std::ostringstream& Captured = *Capture;
  Engine.StartCapture(std::move(Capture), teUTF16BE);
  Engine.PrintOut(u"A\u00e9");
  EXPECT_EQ(Captured.str(), std::string("\xFE\xFF\0A\0\xE9", 6));
}

TEST(InferenceEngineTest, ASecondCaptureLeavesTheFirstAliveAndUnwritten) {
  TInferenceEngine Engine;
  auto First = std::make_unique<std::ostringstream>();
  auto Second = std::make_unique<std::ostringstream>();
  std::ostringstream& FirstText = *First;
  std::ostringstream& SecondText = *Second;
  Engine.StartCapture(std::move(First), teUTF16LE);
  Engine.PrintOut(u"a");
  Engine.StartCapture(std::move(Second), teUTF8);
  Engine.PrintOut(u"b");
  EXPECT_EQ(FirstText.str(), std::string("\xFF\xFE" "a\0", 4));
  EXPECT_EQ(SecondText.str(), "\xEF\xBB\xBF" "b");
  Engine.StopCapture();
  EXPECT_EQ(FirstText.str().size(), 4u) << "still alive after the second capture stops";
}

TEST(InferenceEngineTest, WatchLinesNeedTheHandlerEvenDuringACapture) {
  TInferenceEngine Engine;
  auto Capture = std::make_unique<std::ostringstream>();
  std::ostringstream& Captured = *Capture;
  Engine.StartCapture(std::move(Capture), teUTF8);
  Engine.SetWatch({cwFact});
  Engine.Assert(u"(seen one)");
  EXPECT_EQ(Captured.str(), "\xEF\xBB\xBF") << "no handler, no trace";
  int HandlerCalls = 0;
  Engine.OnPrintOut = [&](TObject*, const String&, const String&) { ++HandlerCalls; };
  Engine.Assert(u"(seen two)");
  EXPECT_EQ(Captured.str(), "\xEF\xBB\xBF ==> f-2 (seen two)\r\n");
  EXPECT_EQ(HandlerCalls, 0);
}

TEST(InferenceEngineTest, CaptureToAFileIsClosedByStop) {
  const auto Path = std::filesystem::temp_directory_path() / ("tavo-capture-" + std::to_string(getpid()) + ".txt");
  const String Name = Utf8ToString(Path.string());
  TInferenceEngine Engine;
  EXPECT_FALSE(Engine.StartCapture(Name + u".missing/inside.txt"));
  EXPECT_FALSE(Engine.GetCapturing());
  ASSERT_TRUE(Engine.StartCapture(Name));
  Engine.PrintOut(u"t", u"kept\r\n");
  Engine.StopCapture();
  std::ifstream File(Path, std::ios::binary);
  std::string Contents((std::istreambuf_iterator<char>(File)), std::istreambuf_iterator<char>());
  EXPECT_EQ(Contents, "\xEF\xBB\xBFkept\r\n");
  std::filesystem::remove(Path);
}

TEST(InferenceEngineTest, LockIsReentrantAndHoldsOtherThreadsOff) {
  TInferenceEngine Engine;
  Engine.Unlock();  // before the first Lock: nothing to leave
  Engine.Lock();
  Engine.Lock();
  std::atomic<bool> Entered{false};
  std::thread Other([&] {
    Engine.Lock();
    Entered = true;
    Engine.Unlock();
  });
  Engine.Unlock();
  std::this_thread::sleep_for(std::chrono::milliseconds(50));
  EXPECT_FALSE(Entered) << "still held once";
  Engine.Unlock();
  Other.join();
  EXPECT_TRUE(Entered);
}

TEST(InferenceEngineTest, ModulesOutliveTheirEngineSafely) {
  IModule Kept;
  {
    TRecordedEngine R;
    Kept = R.AddModule(u"A");
    R.Engine.OnRemoveModule = [](TObject*, const IModule&) { FAIL() << "no handler during teardown"; };
  }
  EXPECT_EQ(Kept->GetExpertSystem(), nullptr);
  Kept->SetName(u"B");
  EXPECT_EQ(Kept->GetName(), u"B");
}

}  // namespace
}  // namespace tavo

#include <sstream>

#include "language/TavoClipsStream.h"

namespace tavo {
namespace {

TEST(InferenceEngineTest, NamedStreamsTakeTheirOwnTextAndInput) {
  TInferenceEngine Engine;
  TIOStreams& Streams = *Engine.GetIOStreams();
  std::ostringstream Written;
  auto* Log = new TGTextStream(std::string("first line\nsecond\n"));
  Log->SetOutput(&Written);
  Streams.AddStream(u"log", Log);
  int HandlerCalls = 0;
  Engine.OnPrintOut = [&](TObject*, const String&, const String&) { ++HandlerCalls; };
  Engine.PrintOut(u"log", u"to the stream");
  EXPECT_EQ(Written.str(), "to the stream");
  EXPECT_EQ(HandlerCalls, 0) << "a named stream's text does not reach the handler";
  EXPECT_EQ(Engine.ReadLine(u"log"), u"first line");
  EXPECT_EQ(Engine.ReadLine(u"log"), u"second");
  EXPECT_EQ(Engine.ReadLine(u"log"), u"") << "empty at the end";
  // Reading a name no stream holds falls to the standard channel, which
  // needs a handler: the warning names the functions crosswise.
  EXPECT_EQ(FailureOf([&] { Engine.ReadLine(u"nosuch"); }).rfind(u"The read event has not been implemented", 0), 0u);
  EXPECT_EQ(FailureOf([&] { Engine.ReadToken(u"t"); }).rfind(u"The readline event has not been implemented", 0), 0u);
  Streams.AddStream(u"words", new TTavoClipsStream(String(u"alpha 42"), &Engine));
  EXPECT_EQ(Engine.ReadToken(u"words")->GetText(), u"alpha");
  EXPECT_EQ(Engine.ReadToken(u"words")->GetNumber(), 42);
  // Names follow the duplicate policy and must exist to be removed.
  Engine.SetDuplicateConstructs(dcError);
  EXPECT_EQ(FailureOf([&] { Streams.AddStream(u"log", new TGTextStream(std::string())); }),
            u"Duplicate streams defined with same name: \"log\"");
  Streams.RemoveStream(u"log");
  EXPECT_EQ(FailureOf([&] { Streams.RemoveStream(u"log"); }), u"Invalid stream name: log");
  Engine.Clear();
  EXPECT_EQ(Streams.Count(), 0);
}

}  // namespace
}  // namespace tavo
