#include "common/MekSharedText.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace tavo {
namespace {

TEST(MekSharedTextTest, InternedTextsAreOneRecordUntilTheLastReferenceGoes) {
  TSharedTextRef A = TSharedTextRef::Adopt(TSharedText::Intern(u"temperature"));
  TSharedTextRef B = TSharedTextRef::Adopt(TSharedText::Intern(String(u"temper") + u"ature"));
  EXPECT_EQ(A.Get(), B.Get());
  EXPECT_EQ(A.View(), u"temperature");
  EXPECT_EQ(A.Get()->Hash(), CalculateHash(u"temperature")) << "the hash of the text, computed once";
  TSharedTextRef Other = TSharedTextRef::Adopt(TSharedText::Intern(u"pressure"));
  EXPECT_FALSE(TSharedText::Same(A.Get(), Other.Get()));
  // A record made on its own equals an interned one by text.
  TSharedTextRef Loose = TSharedTextRef::Adopt(TSharedText::Create(u"temperature"));
  EXPECT_NE(Loose.Get(), A.Get());
  EXPECT_TRUE(TSharedText::Same(Loose.Get(), A.Get()));
  EXPECT_FALSE(TSharedText::Same(Loose.Get(), Other.Get()));
  // Every empty text is the one immortal record.
  EXPECT_EQ(TSharedText::Create(u""), TSharedText::Intern(u""));
  // Once every holder let go, interning again makes a fresh record that
  // still compares by text.
  A = TSharedTextRef();
  B = TSharedTextRef();
  TSharedTextRef Again = TSharedTextRef::Adopt(TSharedText::Intern(u"temperature"));
  EXPECT_EQ(Again.View(), u"temperature");
  EXPECT_TRUE(TSharedText::Same(Again.Get(), Loose.Get()));
}

TEST(MekSharedTextTest, ThreadsInterningAndReleasingAgreeOnOneRecord) {
  // Records die and come back while other threads look them up: a record
  // on its way out must never be handed out again.
  std::vector<std::thread> Threads;
  std::atomic<int> Mismatches{0};
  for (int T = 0; T < 4; ++T)
    Threads.emplace_back([&Mismatches] {
      for (int I = 0; I < 20000; ++I) {
        String Text = u"name-" + IntToStr(I % 37);
        TSharedTextRef One = TSharedTextRef::Adopt(TSharedText::Intern(Text));
        TSharedTextRef Two = TSharedTextRef::Adopt(TSharedText::Intern(Text));
        if (One.Get() != Two.Get() || One.View() != Text) ++Mismatches;
      }
    });
  for (std::thread& Thread : Threads) Thread.join();
  EXPECT_EQ(Mismatches.load(), 0);
}

}  // namespace
}  // namespace tavo
