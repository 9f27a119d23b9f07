// One token of rule-language text, as the lexer hands it to the parser.
#pragma once

#include <cstdint>

#include "common/MekObjects.h"
#include "core/TavoInterfaces.h"

namespace tavo {

// The kind of a token is a TTavoType for a value token (dtAtom, dtString,
// dtInteger, dtVariable, dtFloat, dtMultiVariable, or any value kind that
// SetValue stores), the character code for punctuation (& ( ) = [ ] | ~),
// and 0 for the end of the stream. An integer keeps its value in the number
// too; the text of a variable has no "?" or "$?".
class TTavoStreamToken : public TCloneableObject {
  TAVO_CLASS(TTavoStreamToken, TCloneableObject)
 public:
  TTavoStreamToken() = default;
  TTavoStreamToken(int32_t DataType, String Text, int32_t LineNumber, double Number = 0)
      : FDataType(DataType), FLineNumber(LineNumber), FNumber(Number), FText(std::move(Text)) {}

  // Kind, line, number, text and tag; not the whitespace.
  using TCloneableObject::Assign;
  void Assign(const TPersistent* Source) override;
  void AssignTo(TPersistent* Dest) const override;
  // Kind, line number and number only: the text does not take part.
  bool Equals(const TCloneableObject* Other) const override;
  virtual bool Equals(const TPersistent* Other) const;

  int32_t GetDataType() const { return FDataType; }
  int32_t GetLineNumber() const { return FLineNumber; }
  double GetNumber() const { return FNumber; }
  const String& GetText() const { return FText; }
  const String& GetWhitespace() const { return FWhitespace; }
  void SetDataType(int32_t Value) { FDataType = Value; }
  void SetLineNumber(int32_t Value) { FLineNumber = Value; }
  void SetNumber(double Value) { FNumber = Value; }
  void SetText(const String& Value) { FText = Value; }
  void SetWhitespace(const String& Value) { FWhitespace = Value; }

  // The token as messages quote it; a string reads \"text"\.
  String ToString() const override;
  // A new value of the token's kind; TRUE, FALSE, nil and EOF give the
  // shared constants.
  ITavoValue Value() const;
  // As Value, but a variable is looked up in Context, which must be a
  // TTavoContext or null.
  ITavoValue Value(TObject* Context) const;
  // Takes the value's kind and its text or number.
  void SetValue(const ITavoValue& Value);

 private:
  int32_t FDataType = 0;
  int32_t FLineNumber = 0;
  double FNumber = 0;
  String FText;
  String FWhitespace;
};

}  // namespace tavo
