#include "common/MekTextStream.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tavo {
namespace {

String ReadAll(TGTextStream& Stream) {
  String Text;
  char16_t C;
  while (Stream.GetChar(C)) Text += C;
  return Text;
}

String ReadAll(std::string Bytes, TTextEncoding Encoding = teDefault) {
  TGTextStream Stream(std::move(Bytes), Encoding);
  return ReadAll(Stream);
}

TEST(MekTextStreamTest, ByteOrderMarkSelectsAndIsSkipped) {
  EXPECT_EQ(ReadAll("\xEF\xBB\xBF" "ab"), u"ab");
  EXPECT_EQ(ReadAll(std::string("\xFF\xFE" "a\0\xAC\x20", 6), teUTF8), u"a\u20AC");
  EXPECT_EQ(ReadAll(std::string("\xFE\xFF\0a\x20\xAC", 6)), u"a\u20AC");
  EXPECT_EQ(ReadAll(std::string("a\0b\0", 4), teUTF16LE), u"ab");
  // No mark: the encoding asked for; a mark cut short is text.
  EXPECT_EQ(ReadAll("\xEF\xBB"), u"\uFFFD");
  EXPECT_EQ(ReadAll("\xFF"), u"\uFFFD");
  TGTextStream OnlyMark(std::string("\xFE\xFF"));
  EXPECT_TRUE(OnlyMark.IsEof());
  EXPECT_EQ(OnlyMark.GetEncoding(), teUTF16BE);
  // The same over a borrowed stream.
  std::istringstream Source(std::string("\xFF\xFEx\0y\0z", 7));
  TGTextStream FromStream(Source);
  EXPECT_EQ(ReadAll(FromStream), u"xy\uFFFD");
}

TEST(MekTextStreamTest, DecodingNeverFailsAndSplitsSupplementaryCharacters) {
  EXPECT_EQ(ReadAll("a\xF0\x9F\x98\x80z"), u"a\U0001F600z");
  EXPECT_EQ(ReadAll("\xE2\x82" "a\xC0\xAF\xED\xA0\x80"), u"\uFFFDa\uFFFD\uFFFD\uFFFD\uFFFD\uFFFD");
  EXPECT_EQ(ReadAll(std::string("x\0y", 3)), String(u"x\0y", 3));
  TGTextStream Stream(String(u"\U0001F600"));
  EXPECT_EQ(Stream.GetChar(), 0xD83D);
  EXPECT_FALSE(Stream.IsEof());
  EXPECT_EQ(Stream.GetChar(), 0xDE00);
  EXPECT_TRUE(Stream.IsEof());
  EXPECT_EQ(Stream.GetChar(), 0);
}

TEST(MekTextStreamTest, PutBacksStackAndCountAgainstTheEnd) {
  TGTextStream Stream(String(u"a"));
  EXPECT_EQ(Stream.GetChar(), u'a');
  EXPECT_TRUE(Stream.IsEof());
  Stream.PutBack(u'y');
  Stream.PutBack(u'x');
  EXPECT_FALSE(Stream.IsEof());
  EXPECT_EQ(ReadAll(Stream), u"xy");
}

TEST(MekTextStreamTest, LinesEndAtCrLfOrCrLf) {
  TGTextStream Stream(String(u"one\r\ntwo\rthree\n\nfour"));
  EXPECT_EQ(Stream.GetLine(), u"one");
  EXPECT_EQ(Stream.GetLine(), u"two");
  EXPECT_EQ(Stream.GetLine(), u"three");
  EXPECT_EQ(Stream.GetLine(), u"");
  EXPECT_EQ(Stream.GetLine(), u"four");
  EXPECT_TRUE(Stream.IsEof());
  EXPECT_EQ(Stream.GetLine(), u"");

  TGTextStream Spaces(String(u" \t\r\r x"));
  EXPECT_TRUE(Spaces.SkipInLineSpaces());
  EXPECT_TRUE(Spaces.SkipInLineSpaces());
  EXPECT_FALSE(Spaces.SkipInLineSpaces());
  EXPECT_EQ(Spaces.GetChar(), u'x');
}

TEST(MekTextStreamTest, WritersEncodeAndRoundTrip) {
  const String Text = u"a\u00E9\U0001F600";
  for (TTextEncoding Encoding : {teDefault, teUTF8, teUTF16LE, teUTF16BE}) {
    std::ostringstream Out;
    TGTextWriter Writer(Out, Encoding);
    Writer.WritePreamble();
    Writer.Write(Text);
    // The mark tells the reader which encoding to use.
    EXPECT_EQ(ReadAll(Out.str(), Encoding == teUTF8 ? teUTF16BE : teUTF8), Text) << Encoding;
  }
  TGTextWriter Owned(teUTF16BE);
  Owned.WritePreamble();
  Owned.Write(u"A");
  EXPECT_EQ(Owned.GetBytes(), std::string("\xFE\xFF\0A", 4));
  std::ostringstream Out;
  WritePreambleToStream(Out, teUTF16LE);
  WriteStringToStream(Out, u"\xD800", teUTF16LE);
  WriteStringToStream(Out, u"\xD800", teUTF8);
  EXPECT_EQ(Out.str(), std::string("\xFF\xFE\x00\xD8\xEF\xBF\xBD", 7));
}

TEST(MekTextStreamTest, NumberCharacters) {
  for (char16_t C : u"0123456789+-.$") {
    if (!C) break;
    EXPECT_TRUE(IsNumberChar(C)) << char(C);
  }
  EXPECT_FALSE(IsNumberChar(u'e'));
  EXPECT_FALSE(IsNumberChar(u'?'));
  EXPECT_TRUE(IsNumberSymbol(u'-'));
  EXPECT_TRUE(IsNumberSymbol(u'$'));
  EXPECT_FALSE(IsNumberSymbol(u'5'));
}

}  // namespace
}  // namespace tavo
