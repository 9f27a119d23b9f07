#include "language/TavoClipsStream.h"

#include <gtest/gtest.h>

#include "tests/TestSupport.h"

#include "core/TavoContext.h"
#include "core/TavoValue.h"
#include "engine/InferenceEngine.h"
#include "language/TavoParser.h"

namespace tavo {
namespace {

// Every token up to the end, as kind:ToString.
std::vector<String> Tokens(const String& Text) {
  TTavoClipsStream Stream(Text);
  std::vector<String> Result;
  for (;;) {
    IStreamToken Token = Stream.NextToken();
    if (Token->GetDataType() == 0) return Result;
    Result.push_back(IntToStr(Token->GetDataType()) + u":" + Token->ToString());
  }
}

using V = std::vector<String>;

TEST(TavoClipsStreamTest, EndOfInputRepeats) {
  TTavoClipsStream Stream(String(u"  \r\n "));
  for (int I = 0; I < 2; ++I) {
    IStreamToken Token = Stream.NextToken();
    EXPECT_EQ(Token->GetDataType(), 0);
    EXPECT_EQ(Token->GetText(), u"EOF");
  }
}

TEST(TavoClipsStreamTest, WordsEndOnlyAtBlanksAndTenCharacters) {
  EXPECT_EQ(Tokens(u"a\\(b abc"), (V{u"1:a(b", u"1:abc"}));
  EXPECT_EQ(Tokens(u"\\("), (V{u"1:\\", u"40:("}));
  EXPECT_EQ(Tokens(u"=> <- x=1 :)"), (V{u"61:=", u"1:>", u"1:<-", u"1:x=1", u"1::", u"41:)"}));
  EXPECT_EQ(Tokens(u"?x&~red|[a]"),
            (V{u"4:?x", u"38:&", u"126:~", u"1:red", u"124:|", u"91:[", u"1:a", u"93:]"}));
  EXPECT_EQ(Tokens(u"$?rest a<b \"s\"t;c\nz"), (V{u"16:$?rest", u"1:a", u"1:<b", u"2:\\\"s\"\\", u"1:t", u"1:z"}));
  // A backslash at the very end keeps the word it ends.
  EXPECT_EQ(Tokens(u"ab\\"), (V{u"1:ab"}));
}

TEST(TavoClipsStreamTest, NumbersAndSignSymbols) {
  EXPECT_EQ(Tokens(u"-5 - -x 5abc + $ $FF 0x10 1.5e3 12345678901"),
            (V{u"3:-5", u"1:-", u"1:-x", u"1:5abc", u"1:+", u"1:$", u"3:255", u"3:16", u"6:1500.0000",
               u"6:12345678901.0000"}));
  TTavoClipsStream Stream(String(u"2147483648 -2147483648"));
  IStreamToken Big = Stream.NextToken();
  EXPECT_EQ(Big->GetDataType(), dtFloat);
  EXPECT_EQ(Big->GetNumber(), 2147483648.0);
  EXPECT_EQ(Big->GetText(), u"");
  EXPECT_EQ(Stream.NextToken()->GetDataType(), dtInteger);
}

TEST(TavoClipsStreamTest, StringsTakeBackslashedCharactersAsTheyAre) {
  TTavoClipsStream Stream(String(u"\"a\\\"b\\\\c\\n(;)\""));
  IStreamToken Token = Stream.NextToken();
  EXPECT_EQ(Token->GetDataType(), dtString);
  EXPECT_EQ(Token->GetText(), u"a\"b\\cn(;)");
  EXPECT_EQ(Token->ToString(), u"\\\"a\"b\\cn(;)\"\\");
  for (const char16_t* Bad : {u"(a \"abc", u"\"abc\\", u"\""}) {
    TTavoClipsStream Unterminated{String(Bad)};
    EXPECT_EQ(FailureOf([&] { Unterminated.NextToken(); }), SUnterminatedString) << StringToUtf8(Bad);
  }
}

TEST(TavoClipsStreamTest, LineNumbers) {
  TTavoClipsStream Stream(String(u"a\nb\r\nc\rd ; x\r\n\"s\r\n\r\n\" e"));
  std::vector<int32_t> Lines;
  for (IStreamToken T = Stream.NextToken(); T->GetDataType() != 0; T = Stream.NextToken())
    Lines.push_back(T->GetLineNumber());
  // A word carries its own line, not the one its line end starts; two CR LF
  // pairs inside a string count six.
  EXPECT_EQ(Lines, (std::vector<int32_t>{1, 2, 3, 4, 11, 11}));

  TTavoClipsStream Counted(String(u"\r\r\nx"));
  Counted.SetLineNumber(10);
  EXPECT_EQ(Counted.NextToken()->GetLineNumber(), 12);
}

TEST(TavoClipsStreamTest, WhitespaceTravelsOnTokens) {
  TTavoClipsStream Stream(String(u"; note (\"\n?x ; c\n<- (b)"));
  EXPECT_EQ(Stream.NextToken()->GetWhitespace(), u"; note (\"\r\n ");
  // The comment ahead of a variable reappears on the token behind it.
  IStreamToken Arrow = Stream.NextToken();
  EXPECT_EQ(Arrow->GetText(), u"<-");
  EXPECT_NE(Arrow->GetWhitespace().find(u"; note"), String::npos);
  EXPECT_EQ(Stream.NextToken()->GetWhitespace(), u"");
  // Along a run of variables the text goes one token further, no more.
  TTavoClipsStream Run(String(u";c\n?a ?b x"));
  EXPECT_EQ(Run.NextToken()->GetWhitespace(), u";c\r\n ");
  EXPECT_EQ(Run.NextToken()->GetWhitespace(), u";c\r\n  ");
  EXPECT_EQ(Run.NextToken()->GetWhitespace(), u" ");

  TTavoClipsStream Line(String(u"a rest of line\nb"));
  Line.NextToken();
  Line.DiscardUntilEOL();
  IStreamToken B = Line.NextToken();
  EXPECT_EQ(B->GetText(), u"b");
  EXPECT_EQ(B->GetWhitespace(), u"rest of line\r\n");
  EXPECT_EQ(B->GetLineNumber(), 2);
}

TEST(TavoClipsStreamTest, BareWildcardsGetFreshNames) {
  TTavoClipsStream Alone(String(u"(? ?)"));
  Alone.NextToken();
  const String First = Alone.NextToken()->GetText(), Second = Alone.NextToken()->GetText();
  EXPECT_NE(First, Second);
  EXPECT_EQ(First.rfind(SBlankPrefix, 0), 0u);

  TInferenceEngine Engine;
  TTavoClipsStream Owned(String(u"? $?"), &Engine);
  const int Index = Engine.GetSymbolIndex();
  EXPECT_EQ(Owned.NextToken()->GetText(), SBlankPrefix + IntToStr(Index));
  IStreamToken Multi = Owned.NextToken();
  EXPECT_EQ(Multi->GetDataType(), dtMultiVariable);
  EXPECT_EQ(Multi->GetText(), SBlankMulti + IntToStr(Index + 1));
}

TEST(TavoClipsStreamTest, HeadPeeksAndPutBackRestores) {
  TTavoClipsStream Stream(String(u"(defrule r\n(a)) (?v) (= 1) (5) x (b"));
  EXPECT_EQ(Stream.Head(), u"defrule");
  EXPECT_EQ(Stream.GetParenthesisLevel(), 0);
  EXPECT_EQ(Stream.NextToken()->GetDataType(), u'(');
  Stream.NextToken();
  IStreamToken Name = Stream.NextToken();
  Stream.NextToken();
  // The blank ahead is what the put-back of Head leaves.
  EXPECT_EQ(Stream.ToString(), u" ( defrule r \r\n( ");
  EXPECT_EQ(Stream.GetParenthesisLevel(), 2);
  Stream.PutBackToken(Stream.GetCurrentToken());
  Stream.PutBackToken(Name);
  EXPECT_EQ(Stream.GetParenthesisLevel(), 1);
  EXPECT_EQ(Stream.ToString(), u" ( defrule ");
  EXPECT_EQ(Stream.NextToken(), Name);
  Stream.MoveToNextConstruct();
  EXPECT_EQ(Stream.GetParenthesisLevel(), 0);

  EXPECT_EQ(Stream.Head(), u"v");
  Stream.MoveToNextConstruct();  // at level 0: reads nothing
  EXPECT_EQ(Stream.NextToken()->GetDataType(), u'(');
  Stream.MoveToNextConstruct();
  EXPECT_EQ(Stream.Head(), u"=");
  Stream.NextToken();
  Stream.MoveToNextConstruct();
  EXPECT_EQ(Stream.Head(), u"");
  EXPECT_EQ(Stream.NextToken()->GetDataType(), u'(');
  Stream.MoveToNextConstruct();
  // Not a "(": read and gone.
  EXPECT_EQ(Stream.Head(), u"");
  EXPECT_EQ(Stream.NextToken()->GetDataType(), u'(');
  // A form cut off by the end stops recovery at the end.
  Stream.MoveToNextConstruct();
  EXPECT_EQ(Stream.GetCurrentToken()->GetDataType(), 0);
  EXPECT_EQ(Stream.GetParenthesisLevel(), 1);
}

TEST(TavoClipsStreamTest, StrayCloseParenthesisEndsAtEndOfInput) {
  EXPECT_EQ(Tokens(u") a (b) c"), (V{u"41:)", u"1:a", u"40:(", u"1:b", u"41:)", u"1:c"}));
  TTavoClipsStream Stream(String(u") ) a"));
  Stream.NextToken();
  Stream.MoveToNextConstruct();
  EXPECT_EQ(Stream.GetCurrentToken()->GetDataType(), 0);
}

TEST(TavoClipsStreamTest, EncodedInputIsReadByItsMark) {
  const String Text = u"(f\u00E9 \"\u20AC\")";
  TTavoClipsStream Stream(GetPreamble(teUTF16BE) + EncodeText(Text, teUTF16BE));
  Stream.NextToken();
  EXPECT_EQ(Stream.NextToken()->GetText(), u"f\u00E9");
  EXPECT_EQ(Stream.NextToken()->GetText(), u"\u20AC");
}

TEST(TavoClipsStreamTest, FinishTokenRefusesUnknownHints) {
  TTavoClipsStream Stream(String(u""));
  EXPECT_EQ(FailureOf([&] { Stream.FinishToken(7, u"x"); }), u"Invalid Token hint for parsing token: 7");
  EXPECT_EQ(Stream.FinishToken(13, u"")->GetText(), u"CRLF");
  try {
    TTavoClipsStream Bad(String(u"\n\"x"));
    Bad.NextToken();
    FAIL();
  } catch (const ETavoParseException& E) {
    EXPECT_EQ(E.LineNumber, 2);
  }
}

TEST(TavoStreamTokenTest, ValuesByKind) {
  auto Token = [](int32_t Kind, const char16_t* Text, double Number = 0) {
    return Make<TTavoStreamToken>(Kind, String(Text), 1, Number);
  };
  EXPECT_EQ(Token(dtAtom, u"TRUE")->Value(), FCTrue);
  EXPECT_EQ(Token(dtAtom, u"FALSE")->Value(), FCFalse);
  EXPECT_EQ(Token(dtAtom, u"NiL")->Value(), FCNil);
  EXPECT_NE(Token(dtAtom, u"True")->Value(), FCTrue);
  EXPECT_EQ(Token(0, u"EOF")->Value(), FCEOF);
  EXPECT_EQ(Token(dtInteger, u"", -7.9)->Value()->GetAsInteger(), -7);
  EXPECT_EQ(Token(dtFloat, u"", 2.5)->Value()->GetAsFloat(), 2.5);
  EXPECT_EQ(Token(dtInteger, u"", 3.7)->ToString(), u"3");
  EXPECT_EQ(Token(u'(', u"(")->Value()->GetDType(), dtString);
  EXPECT_EQ(Token(u'(', u"(")->Value()->GetAsString(), u"40");
  EXPECT_EQ(Token(u'[', u"")->ToString(), u"[");

  TTavoContext Context;
  Context.SetVariable(u"x", Make<TTavoValue>(5, dtInteger));
  EXPECT_EQ(Token(dtVariable, u"x")->Value(&Context)->GetAsInteger(), 5);
  EXPECT_EQ(FailureOf([&] { Token(dtVariable, u"y")->Value(&Context); }), u"Unknown variable name: y");
  EXPECT_EQ(FailureOf([&] { Token(dtMultiVariable, u"??")->Value(&Context); }),
            u"Invalid variable name, ??.  Possible encoding error");
  EXPECT_EQ(Token(dtVariable, u"y")->Value(nullptr)->GetDType(), dtVariable);
  TObject NotAContext;
  EXPECT_EQ(FailureOf([&] { Token(dtVariable, u"x")->Value(&NotAContext); }), SIntfCastError);
}

TEST(TavoStreamTokenTest, CopyCompareAndSetValue) {
  IStreamToken A = Make<TTavoStreamToken>(dtAtom, u"a", 3);
  A->SetWhitespace(u" ");
  A->SetTag(9);
  ICloneableObject Copy = A->Clone();
  auto* B = dynamic_cast<TTavoStreamToken*>(Copy.Get());
  ASSERT_TRUE(B);
  EXPECT_EQ(B->GetText(), u"a");
  EXPECT_EQ(B->GetTag(), 9);
  EXPECT_EQ(B->GetWhitespace(), u"");
  B->SetText(u"other");
  EXPECT_TRUE(A->Equals(B));
  B->SetLineNumber(4);
  EXPECT_FALSE(A->Equals(B));
  EXPECT_FALSE(A->Equals(FCTrue.Get()));

  A->SetValue(Make<TTavoValue>(7, dtFactId));
  EXPECT_EQ(A->GetDataType(), dtFactId);
  EXPECT_EQ(A->Value()->GetAsFactId(), 7);
  A->SetValue(Make<TTavoValue>(String(u"s"), dtMultiSlot));
  EXPECT_EQ(A->Value()->GetDType(), dtMultiSlot);
  EXPECT_EQ(A->Value()->GetAsMultiSlot(), u"s");
  ITavoValue Address = Make<TTavoValue>();
  Address->SetAsExternalAddress(&Address);
  A->SetValue(Address);
  EXPECT_EQ(A->Value()->GetAsExternalAddress(), &Address);
}

}  // namespace
}  // namespace tavo

#include <unistd.h>

#include <filesystem>
#include <fstream>

namespace tavo {
namespace {

TEST(TavoClipsStreamTest, FormsAreCompleteWhenBalancedOutsideStringsAndComments) {
  EXPECT_TRUE(IsFormComplete(u"word"));
  EXPECT_TRUE(IsFormComplete(u"(a (b) \"(\" ; (\n)"));
  EXPECT_TRUE(IsFormComplete(u"(a \"\\\"(\")"));
  EXPECT_FALSE(IsFormComplete(u"  ; only (a comment\r\n\t"));
  EXPECT_FALSE(IsFormComplete(u"(a \"b)\""));
  EXPECT_FALSE(IsFormComplete(u"\"open string"));
  EXPECT_TRUE(IsFormComplete(u"(a ; b\r c)")) << "a CR ends a comment too";
}

TEST(TavoClipsStreamTest, AWordEndedByCrLfLeavesTheNextLineWhole) {
  TTavoClipsStream Stream(String(u"word\r\nnext line\r\n\r\nlast"));
  EXPECT_EQ(Stream.NextToken()->GetText(), u"word");
  EXPECT_EQ(Stream.GetLine(), u"next line");
  EXPECT_EQ(Stream.GetLine(), u"");
  IStreamToken Last = Stream.NextToken();
  EXPECT_EQ(Last->GetText(), u"last");
  EXPECT_EQ(Last->GetLineNumber(), 4);
}

TEST(TavoClipsStreamTest, FileStreamsReadAndWriteByTheirMode) {
  const auto Path = std::filesystem::temp_directory_path() / ("tavo-stream-" + std::to_string(getpid()) + ".txt");
  const String Name = Utf8ToString(Path.string());
  std::filesystem::remove(Path);
  EXPECT_EQ(FailureOf([&] { TTavoClipsFileStream(Name, std::ios::in); }),
            u"Cannot open file \"" + Name + u"\". No such file or directory");
  {
    TTavoClipsFileStream Appended(Name, std::ios::out | std::ios::app);
    Appended.Put(u"(a 1)\r\n");
  }
  {
    TTavoClipsFileStream Appended(Name, std::ios::out | std::ios::app);
    Appended.Put(u"tail");
  }
  TTavoClipsFileStream Read(Name, std::ios::in);
  EXPECT_EQ(FailureOf([&] { Read.Put(u"x"); }), u"Stream is not open for writing");
  EXPECT_EQ(Read.NextToken()->GetDataType(), u'(');
  EXPECT_EQ(Read.NextToken()->GetText(), u"a");
  EXPECT_EQ(Read.NextToken()->GetNumber(), 1);
  EXPECT_EQ(Read.NextToken()->GetDataType(), u')');
  EXPECT_EQ(Read.GetLine(), u"");
  EXPECT_EQ(Read.GetLine(), u"tail");
  EXPECT_TRUE(Read.IsEof());
  {
    TTavoClipsFileStream Written(Name, std::ios::out | std::ios::trunc);
  }
  EXPECT_EQ(std::filesystem::file_size(Path), 0u) << "w empties the file";
  std::filesystem::remove(Path);
}

}  // namespace
}  // namespace tavo
