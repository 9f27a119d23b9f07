// The lexer of the rule language. It reads one whole balanced S-expression
// ahead into a token stack and hands the tokens out of it, so that any
// number of tokens can be put back within an expression, the parser can
// peek into a form, and error recovery can count parentheses.
#pragma once

#include <vector>

#include "common/MekTextStream.h"
#include "core/TavoInterfaces.h"
#include "language/TavoStreamToken.h"

namespace tavo {

class TInferenceEngine;

// A text stream that also reads tokens.
class TTavoTokenizerStream : public TGTextStream {
  TAVO_CLASS(TTavoTokenizerStream, TGTextStream)
 public:
  using TGTextStream::TGTextStream;

  virtual void Clear() = 0;
  virtual void DiscardUntilEOL() = 0;
  virtual void MoveToNextConstruct() = 0;
  virtual IStreamToken NextToken() = 0;
  virtual void PutBackToken(const IStreamToken& Token) = 0;
  virtual String Head() = 0;
};

class TTavoClipsStream : public TTavoTokenizerStream {
  TAVO_CLASS(TTavoClipsStream, TTavoTokenizerStream)
 public:
  // Owner generates the names of bare wildcards; see GenerateName.
  explicit TTavoClipsStream(std::istream& Source, TTextEncoding Encoding = teDefault,
                            TInferenceEngine* Owner = nullptr);
  explicit TTavoClipsStream(std::string Bytes, TTextEncoding Encoding = teDefault,
                            TInferenceEngine* Owner = nullptr);
  explicit TTavoClipsStream(const String& Text, TInferenceEngine* Owner = nullptr);

  // Reading counts lines: CR, LF and CR LF each count once.
  using TGTextStream::GetChar;
  char16_t GetChar() override;
  // Takes back the line that reading C counted.
  void PutBack(char16_t C) override;
  // Both keep what they skip in the whitespace of the next token.
  bool SkipInLineSpaces() override;
  String GetLine() override;

  // Empties the token stack and the echo.
  void Clear() override;
  // Drops the rest of the line into the whitespace.
  void DiscardUntilEOL() override;
  // Reads on until the parentheses handed out are balanced, or the end.
  void MoveToNextConstruct() override;
  IStreamToken NextToken() override;
  void PutBackToken(const IStreamToken& Token) override;
  // The first word of the form that comes next, when a "(" comes next; the
  // stream stays where it was. Anything else is read and gives "".
  String Head() override;

  // Makes one token out of the text.
  virtual IStreamToken BuildNextToken();
  // Makes the token for Text: Hint is -1 at the end of the stream, 0 for a
  // word, or the character code of a string quote or punctuation.
  virtual IStreamToken FinishToken(int Hint, const String& Text);

  // The last token handed out or put back; reads one if there is none.
  IStreamToken GetCurrentToken();
  int32_t GetLineNumber() const { return FLineNumber; }
  void SetLineNumber(int32_t Value) { FLineNumber = Value; }
  int32_t GetParenthesisLevel() const { return FParenthesisLevel; }
  TInferenceEngine* GetOwner() const { return FOwner; }
  // The tokens of the current S-expression as they were handed out; what
  // an error message quotes.
  String ToString() const override { return FToString; }

 protected:
  // Reads a string literal up to its closing quote, which is dropped.
  String ReadString(const String& Initial);
  void PrepareSExp();
  String GenerateName(const String& Prefix);

 private:
  void Echo(StringView Text) { FToString += Text; }

  // Tokens of the current S-expression, the next one last.
  std::vector<IStreamToken> FStack;
  int32_t FLineNumber = 1;
  String FText;
  TInferenceEngine* FOwner;
  String FToString;
  IStreamToken FCurrentToken;
  int32_t FParenthesisLevel = 0;
  std::vector<IStreamToken> FTempStack;
  String FWhiteSpace;
  // How much of FWhiteSpace a variable has already passed on.
  size_t FCarried = 0;
  char16_t FLastChar = 0;
  char16_t FCurrentChar = 0;
  int32_t FNameCounter = 0;
};

// A rule-language stream over a file of its own, as "open" makes it: tokens
// and lines are read from it, and it is written to when the mode has
// std::ios::out. The file closes with the stream.
class TTavoClipsFileStream : public TTavoClipsStream {
  TAVO_CLASS(TTavoClipsFileStream, TTavoClipsStream)
 public:
  // Raises SFileOpenError when the file cannot be opened in Mode.
  TTavoClipsFileStream(const String& FileName, std::ios::openmode Mode, TInferenceEngine* Owner = nullptr);
  ~TTavoClipsFileStream() override;

 private:
  TTavoClipsFileStream(std::unique_ptr<std::fstream> File, std::ios::openmode Mode, TInferenceEngine* Owner);

  std::unique_ptr<std::fstream> FFile;
};

// True when Text holds at least one whole form: something besides blanks
// and comments, with the parentheses balanced outside strings and
// comments. What reads input a line at a time asks it before parsing.
bool IsFormComplete(StringView Text);

}  // namespace tavo
