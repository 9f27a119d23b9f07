#include "TavoClipsStream.h"

#include <fstream>

#include "common/MekFormat.h"
#include "engine/InferenceEngine.h"
#include "language/TavoParser.h"

namespace tavo {

namespace {

constexpr char16_t CR = u'\r';
constexpr char16_t LF = u'\n';

// Hints of FinishToken besides the character codes.
constexpr int HintEnd = -1;
constexpr int HintWord = 0;
constexpr int HintCrLf = 13;

bool EndsWord(char16_t C) {
  switch (C) {
    case u'"': case u'&': case u'(': case u')': case u';':
    case u'<': case u'[': case u']': case u'|': case u'~':
      return true;
    default:
      return false;
  }
}

}  // namespace

TTavoClipsStream::TTavoClipsStream(std::istream& Source, TTextEncoding Encoding,
                                   TInferenceEngine* Owner)
    : TTavoTokenizerStream(Source, Encoding), FOwner(Owner) {}

TTavoClipsStream::TTavoClipsStream(std::string Bytes, TTextEncoding Encoding, TInferenceEngine* Owner)
    : TTavoTokenizerStream(std::move(Bytes), Encoding), FOwner(Owner) {}

TTavoClipsStream::TTavoClipsStream(const String& Text, TInferenceEngine* Owner)
    : TTavoTokenizerStream(Text), FOwner(Owner) {}

// Characters and lines.

char16_t TTavoClipsStream::GetChar() {
  FLastChar = FCurrentChar;
  const char16_t C = TGTextStream::GetChar();
  if (C == CR || (C == LF && FLastChar != CR)) ++FLineNumber;
  FCurrentChar = C;
  return C;
}

void TTavoClipsStream::PutBack(char16_t C) {
  TGTextStream::PutBack(C);
  if (C == CR || (C == LF && FLastChar != CR)) --FLineNumber;
  // Reading C again must count it the way it was counted the first time.
  FCurrentChar = FLastChar;
}

bool TTavoClipsStream::SkipInLineSpaces() {
  char16_t C;
  while (GetChar(C)) {
    if (C > u' ') {
      PutBack(C);
      return false;
    }
    FWhiteSpace += C;
    if (C == LF) return true;
    if (C == CR) {
      char16_t Next;
      if (GetChar(Next)) {
        if (Next == LF)
          FWhiteSpace += Next;
        else
          PutBack(Next);
      }
      return true;
    }
  }
  return false;
}

String TTavoClipsStream::GetLine() {
  String Line = TGTextStream::GetLine();
  FWhiteSpace += Line;
  FWhiteSpace += u"\r\n";
  return Line;
}

// Tokens.

IStreamToken TTavoClipsStream::BuildNextToken() {
  FText.clear();
  char16_t C;
  for (;;) {
    while (SkipInLineSpaces() && !IsEof()) {
    }
    if (!GetChar(C)) return FinishToken(HintEnd, FText);
    switch (C) {
      case u'"':
        FText = ReadString(FText);
        return FinishToken(u'"', FText);
      case u'=': case u'&': case u'(': case u')':
      case u'[': case u']': case u'|': case u'~':
        FText = C;
        return FinishToken(C, FText);
      case u';':
        // A comment reaches the parser only as whitespace of the next token.
        FWhiteSpace += C;
        GetLine();
        continue;
      default:
        break;
    }
    break;
  }
  // A word takes its first character as it is, even a backslash or "<".
  FText = C;
  for (;;) {
    const int32_t Line = FLineNumber;
    if (!GetChar(C)) return FinishToken(HintWord, FText);
    if (C <= u' ') {
      // The line end that ends a word belongs to the next line's count, not
      // to the word's.
      const bool Advanced = FLineNumber != Line;
      FWhiteSpace += C;
      // A CR LF ends the word whole, so that a line read after a read
      // token starts on the next line.
      char16_t Next;
      if (C == CR && GetChar(Next)) {
        if (Next == LF)
          FWhiteSpace += Next;
        else
          PutBack(Next);
      }
      if (Advanced) --FLineNumber;
      IStreamToken Token = FinishToken(HintWord, FText);
      if (Advanced) ++FLineNumber;
      return Token;
    }
    if (C == u'\\') {
      if (!GetChar(C)) return FinishToken(HintEnd, FText);
      FText += C;
    } else if (EndsWord(C)) {
      PutBack(C);
      return FinishToken(HintWord, FText);
    } else {
      FText += C;
    }
  }
}

// A backslash takes the next character as it is; there are no escapes with
// a meaning. A line end inside a string counts once more than GetChar counts
// it: the line numbers of later messages are made that way.
String TTavoClipsStream::ReadString(const String& Initial) {
  String Text = Initial;
  char16_t C;
  while (GetChar(C)) {
    if (C == CR || C == LF) {
      Text += C;
      ++FLineNumber;
    } else if (C == u'"') {
      return Text;
    } else if (C == u'\\') {
      if (IsEof()) break;
      Text += GetChar();
    } else {
      Text += C;
    }
  }
  throw ETavoParseException(SUnterminatedString, FLineNumber);
}

String TTavoClipsStream::GenerateName(const String& Prefix) {
  if (FOwner) return FOwner->GenerateSymbol(Prefix);
  // Without an engine the names are unique within this stream only.
  return Prefix + IntToStr(FNameCounter++);
}

IStreamToken TTavoClipsStream::FinishToken(int Hint, const String& Text) {
  IStreamToken Token = Make<TTavoStreamToken>();
  Token->SetLineNumber(FLineNumber);
  // Whitespace ahead of a variable, or of a sign standing alone, also goes
  // to the token behind it, so that a comment there is not lost.
  bool Keep = false;
  switch (Hint) {
    case HintEnd:
      if (!Text.empty()) return FinishToken(HintWord, Text);
      Token->SetDataType(0);
      Token->SetText(u"EOF");
      break;
    case HintWord: {
      int32_t Integer;
      double Float;
      if (!Text.empty() && Text[0] == u'?') {
        Token->SetDataType(dtVariable);
        Token->SetText(Text.size() > 1 ? Text.substr(1) : GenerateName(SBlankPrefix));
        Keep = true;
      } else if (Text.size() >= 2 && Text[0] == u'$' && Text[1] == u'?') {
        Token->SetDataType(dtMultiVariable);
        Token->SetText(Text.size() > 2 ? Text.substr(2) : GenerateName(SBlankMulti));
        Keep = true;
      } else if (Text.size() == 1 && IsNumberSymbol(Text[0])) {
        Token->SetDataType(dtAtom);
        Token->SetText(Text);
        Keep = true;
      } else if (!Text.empty() && IsNumberChar(Text[0]) && TryStrToInt(Text, Integer)) {
        Token->SetDataType(dtInteger);
        Token->SetNumber(Integer);
      } else if (!Text.empty() && IsNumberChar(Text[0]) && TryStrToFloat(Text, Float)) {
        Token->SetDataType(dtFloat);
        Token->SetNumber(Float);
      } else {
        Token->SetDataType(dtAtom);
        Token->SetText(Text);
      }
      break;
    }
    case HintCrLf:
      Token->SetDataType(dtAtom);
      Token->SetText(u"CRLF");
      break;
    case u'"':
      Token->SetDataType(dtString);
      Token->SetText(Text);
      break;
    case u'&': case u'(': case u')': case u'=':
    case u'[': case u']': case u'|': case u'~':
      Token->SetDataType(Hint);
      Token->SetText(Text);
      break;
    default:
      throw ETavoParseException(Format(SInvalidTokenHint, IntToStr(Hint)), FLineNumber);
  }
  Token->SetWhitespace(FWhiteSpace);
  if (Keep) {
    // Text travels one token further, not along a whole run of variables:
    // that would copy it onto every token of the run.
    FWhiteSpace.erase(0, FCarried);
    FCarried = FWhiteSpace.size();
  } else {
    FWhiteSpace.clear();
    FCarried = 0;
  }
  return Token;
}

// The S-expression ahead.

// A token outside parentheses is an expression of its own. A stray ")"
// reads on until a "(" balances it, or the input ends.
void TTavoClipsStream::PrepareSExp() {
  FToString.clear();
  int32_t Level = 0;
  do {
    IStreamToken Token = BuildNextToken();
    FTempStack.push_back(Token);
    const int32_t Kind = Token->GetDataType();
    if (Kind == 0) break;
    if (Kind == u')')
      --Level;
    else if (Kind == u'(')
      ++Level;
  } while (Level != 0);
  while (!FTempStack.empty()) {
    FStack.push_back(std::move(FTempStack.back()));
    FTempStack.pop_back();
  }
}

IStreamToken TTavoClipsStream::NextToken() {
  if (FStack.empty()) PrepareSExp();
  IStreamToken Token = std::move(FStack.back());
  FStack.pop_back();
  if (FCurrentToken && FCurrentToken->GetLineNumber() < Token->GetLineNumber()) Echo(u"\r\n");
  FCurrentToken = Token;
  Echo(Token->ToString());
  Echo(u" ");
  if (Token->GetDataType() == u')')
    --FParenthesisLevel;
  else if (Token->GetDataType() == u'(')
    ++FParenthesisLevel;
  return Token;
}

void TTavoClipsStream::PutBackToken(const IStreamToken& Token) {
  if (!Token) throw EMekException(SIntfCastError);
  FStack.push_back(Token);
  FCurrentToken = Token;
  // The echo loses the token and the blank behind it, trimmed in place: the
  // parser puts back often, and the echo may hold a long form.
  const size_t Length = Token->ToString().size() + 1;
  size_t Kept = FToString.size() > Length ? FToString.size() - Length : 0;
  while (Kept > 0 && FToString[Kept - 1] <= u' ') --Kept;
  FToString.resize(Kept);
  FToString += u' ';
  if (Token->GetDataType() == u')')
    ++FParenthesisLevel;
  else if (Token->GetDataType() == u'(')
    --FParenthesisLevel;
}

String TTavoClipsStream::Head() {
  IStreamToken Token = NextToken();
  if (Token->GetDataType() != u'(' || FStack.empty()) return String();
  const IStreamToken& Next = FStack.back();
  String Result;
  switch (Next->GetDataType()) {
    case dtAtom:
      Result = Next->GetText().empty() ? Next->ToString() : Next->GetText();
      break;
    case u'-':
      Result = u"-";
      break;
    case u'=':
      Result = u"=";
      break;
    case dtVariable:
      Result = Next->GetText();
      break;
    default:
      break;
  }
  PutBackToken(Token);
  return Result;
}

IStreamToken TTavoClipsStream::GetCurrentToken() {
  if (!FCurrentToken) NextToken();
  return FCurrentToken;
}

void TTavoClipsStream::MoveToNextConstruct() {
  while (FParenthesisLevel != 0)
    if (NextToken()->GetDataType() == 0) break;
}

void TTavoClipsStream::DiscardUntilEOL() { GetLine(); }

void TTavoClipsStream::Clear() {
  FStack.clear();
  FToString.clear();
}

// TTavoClipsFileStream

TTavoClipsFileStream::TTavoClipsFileStream(const String& FileName, std::ios::openmode Mode, TInferenceEngine* Owner)
    : TTavoClipsFileStream(OpenFileStream(FileName, Mode), Mode, Owner) {}

// The reading side takes the file's buffer before the file moves into its
// field; the buffer stays where it is.
TTavoClipsFileStream::TTavoClipsFileStream(std::unique_ptr<std::fstream> File, std::ios::openmode Mode,
                                           TInferenceEngine* Owner)
    : TTavoClipsStream(*File, teDefault, Owner), FFile(std::move(File)) {
  if (Mode & std::ios::out) SetOutput(FFile.get());
}

TTavoClipsFileStream::~TTavoClipsFileStream() = default;

bool IsFormComplete(StringView Text) {
  int Level = 0;
  bool InString = false, InComment = false, Any = false;
  for (size_t I = 0; I < Text.size(); ++I) {
    const char16_t C = Text[I];
    if (InComment) {
      InComment = C != LF && C != CR;
    } else if (InString) {
      if (C == u'\\')
        ++I;
      else if (C == u'"')
        InString = false;
    } else if (C == u';') {
      InComment = true;
    } else if (C == u'(') {
      ++Level;
      Any = true;
    } else if (C == u')') {
      --Level;
    } else if (C > u' ') {
      InString = C == u'"';
      Any = true;
    }
  }
  return Any && Level <= 0 && !InString;
}

}  // namespace tavo
