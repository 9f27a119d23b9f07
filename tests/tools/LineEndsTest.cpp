#include "tools/LineEnds.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tavo {
namespace {

std::string Written(std::initializer_list<std::string_view> Texts, bool KeepCrLf = false) {
  std::ostringstream Out;
  TLineEndWriter Writer(Out);
  Writer.SetKeepCrLf(KeepCrLf);
  for (std::string_view Text : Texts) Writer.Write(Text);
  Writer.Flush();
  return Out.str();
}

TEST(LineEnds, CrLfBecomesLfAndOtherCrsStay) {
  EXPECT_EQ(Written({"one\r\ntwo\r\n"}), "one\ntwo\n");
  EXPECT_EQ(Written({"a\rb\r\r\nc\n"}), "a\rb\r\nc\n");
  EXPECT_EQ(Written({"\r\n\r\n"}), "\n\n");
  EXPECT_EQ(Written({"no line end"}), "no line end");
}

TEST(LineEnds, ACrAtTheEndOfOneTextWaitsForTheNext) {
  EXPECT_EQ(Written({"a\r", "\nb"}), "a\nb");
  EXPECT_EQ(Written({"a\r", "b"}), "a\rb");
  EXPECT_EQ(Written({"a\r", "", "\r", "\n"}), "a\r\n");
  // Flush writes what is held: nothing more will come.
  EXPECT_EQ(Written({"progress\r"}), "progress\r");

  std::ostringstream Out;
  TLineEndWriter Writer(Out);
  Writer.Write("x\r");
  EXPECT_EQ(Out.str(), "x");
  Writer.Flush();
  Writer.Write("\n");
  EXPECT_EQ(Out.str(), "x\r\n");
}

TEST(LineEnds, EachWriteCanGoOutAtOnce) {
  // A stream whose text only reaches Sink when it is flushed.
  struct TFlushedText : std::stringbuf {
    std::string Sink;
    int sync() override {
      Sink += str();
      str("");
      return 0;
    }
  } Text;
  std::string& Sink = Text.Sink;
  std::ostream Out(&Text);
  TLineEndWriter Writer(Out);
  Writer.Write("a\r\n");
  EXPECT_EQ(Sink, "");
  Writer.SetFlushEachWrite(true);
  Writer.Write("b\r");
  EXPECT_EQ(Sink, "a\nb");
  Writer.Write("\nc");
  EXPECT_EQ(Sink, "a\nb\nc");
}

TEST(LineEnds, KeptCrLfPassesTheBytes) {
  EXPECT_EQ(Written({"one\r\n", "a\r", "\n"}, true), "one\r\na\r\n");
}

}  // namespace
}  // namespace tavo
