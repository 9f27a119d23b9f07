#include "engine/InferenceEngine.h"

#include <gtest/gtest.h>

#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "language/TavoClipsStream.h"
#include "tests/TestSupport.h"

namespace tavo {
namespace {

// An engine whose standard channel is recorded.
struct TBatching {
  TBatching() {
    Engine.OnPrintOut = [this](TObject*, const String&, const String& Text) { Printed += Text; };
  }
  bool Batch(const std::string& Text) {
    std::istringstream Stream(Text);
    return Engine.Batch(Stream, teDefault);
  }

  TInferenceEngine Engine;
  String Printed;
};

TEST(EngineParsingTest, BatchRunsFormsOverLinesAndFeedsReadsFromItsNextLines) {
  TBatching B;
  EXPECT_TRUE(B.Batch(
      "(deffunction twice (?x) ; a comment's ( does not count\n"
      "   (* 2 ?x))\n"
      "(printout t (twice (read)) crlf)\n"
      "21\n"
      "(printout t \"[\" (readline) \"]\" crlf) (printout t \"same line\" crlf)\n"
      "  a line ) with (\n"
      "(printout t \"a string (\n"
      "over lines\" crlf)\n"));
  // What read and readline take is echoed before it is used.
  EXPECT_EQ(B.Printed,
            u"21\r\n42\r\n"
            u"  a line ) with (\r\n[  a line ) with (]\r\nsame line\r\n"
            u"a string (\r\nover lines\r\n");
  EXPECT_EQ(B.Engine.GetInputStream(), nullptr);
}

TEST(EngineParsingTest, BatchInputEndsWithTheEndOfFileSymbol) {
  TBatching B;
  B.Batch("(bind ?word (read))");
  B.Batch("(bind ?line (readline))");
  B.Batch("(printout t ?word \" \" (eq ?line EOF) crlf)");
  // The echo of the token, then the value of bind; readline echoes nothing.
  EXPECT_EQ(B.Printed, u"EOF\r\nEOF\r\nEOF\r\nEOF TRUE\r\n");
}

TEST(EngineParsingTest, NamedStreamsComeBeforeTheBatchAndTheBatchBeforeTheHandlers) {
  TBatching B;
  int HandlerCalls = 0;
  B.Engine.OnReadLine = [&](TObject*, const String&, String& Text) {
    ++HandlerCalls;
    Text = u"handler";
  };
  B.Engine.GetIOStreams()->AddStream(u"words", new TTavoClipsStream(String(u"named\r\nnext"), &B.Engine));
  B.Batch("(printout t (read words) \"/\" (readline words) \"/\" (readline nosuch) crlf)\nbatch\n");
  EXPECT_EQ(B.Printed, u"batch\r\nnamed/next/batch\r\n");
  EXPECT_EQ(HandlerCalls, 0);
  EXPECT_EQ(B.Engine.ReadLine(u"t"), u"handler");
}

TEST(EngineParsingTest, BatchGivesItsInputBackOnEveryWayOut) {
  TBatching B;
  EXPECT_EQ(FailureOf([&] { B.Batch("(printout t \"before\" crlf)\n(nosuch-function)\n(printout t \"after\")\n"); }),
            u"Function is unimplemented or unassigned: nosuch-function");
  EXPECT_EQ(B.Printed, u"before\r\n") << "the batch ends at the failing form";
  EXPECT_EQ(B.Engine.GetInputStream(), nullptr);
  EXPECT_EQ(FailureOf([&] { B.Engine.ReadLine(u"t"); }).rfind(u"The read event has not been implemented", 0), 0u);
}

TEST(EngineParsingTest, ABatchFileInsideABatchReadsItsOwnLines) {
  const auto Path = std::filesystem::temp_directory_path() / ("tavo-batch-" + std::to_string(getpid()) + ".clp");
  std::ofstream(Path, std::ios::binary) << "\xEF\xBB\xBF(printout t \"inner \" (read) crlf)\r\ninner-word\r\n";
  TBatching B;
  EXPECT_TRUE(B.Batch("(batch \"" + Path.string() + "\")\n(printout t \"outer \" (read) crlf)\nouter-word\n"));
  EXPECT_EQ(B.Printed, u"inner-word\r\ninner inner-word\r\nTRUE\r\nouter-word\r\nouter outer-word\r\n");
  std::filesystem::remove(Path);
}

TEST(EngineParsingTest, BatchOfAMissingFileGivesFalse) {
  TInferenceEngine Engine;
  EXPECT_FALSE(Engine.Batch(String(u"/nonexistent/tavo/batch.clp")));
}

}  // namespace
}  // namespace tavo
