// The parser of the rule language: the abstract frame the engine owns.
#pragma once

#include <functional>
#include <vector>

#include "core/TavoFunctions.h"
#include "knowledge/TavoFacts.h"
#include "knowledge/TavoRule.h"
#include "language/TavoClipsStream.h"

namespace tavo {

// A failure to read rule-language text: where it happened and, when the
// parser knows, what it would have accepted there.
class ETavoParseException : public ETavoException {
 public:
  ETavoParseException(String Message, int LineNumber, std::vector<String> Expected = {})
      : ETavoException(std::move(Message)), LineNumber(LineNumber), Expected(std::move(Expected)) {}

  int LineNumber;
  std::vector<String> Expected;
};

enum TParsedType {
  ptNone,
  ptValue,
  ptFunCall,
  ptRule,
  ptFactSet,
  ptFactTemplate,
  ptFunction,
  ptGlobals,
  ptDefType,
  ptDefModule,
  ptEOF
};

class TTavoParser;
class TFactSet;
using TParseEvent =
    std::function<void(TTavoParser* Sender, TParsedType Type, const ICloneableObject& Construct, TObject* Object)>;
using TParseFactEvent = std::function<void(TTavoParser* Sender, const IFact& Fact)>;
using TParseFunCallEvent = std::function<void(TTavoParser* Sender, const IFunCall& FunCall)>;
using TParseFunctionEvent = std::function<void(TTavoParser* Sender, const IUserFunction& Function)>;
using TParseVariableEvent = std::function<void(TTavoParser* Sender, const String& Name, const ITavoValue& Value)>;
using TParseFactTemplateEvent = std::function<void(TTavoParser* Sender, const IFactTemplate& Template)>;
using TParseDefinedTypeEvent = std::function<void(TTavoParser* Sender, const ITavoDefinedType& Type)>;
using TParseFactSetEvent = std::function<void(TTavoParser* Sender, TFactSet* FactSet)>;
using TParseModuleEvent = std::function<void(TTavoParser* Sender, const IModule& Module)>;
using TParseRuleEvent = std::function<void(TTavoParser* Sender, TRule* Rule)>;
using TParsePatternEvent = std::function<void(TTavoParser* Sender, TTavoPattern* Pattern)>;
using TParseFuzzySetEvent = std::function<void(TTavoParser* Sender, const IFuzzySet& Set)>;
using TParseFuzzyVariableEvent = std::function<void(TTavoParser* Sender, const IFuzzyVariable& Variable)>;

// The frame of a parser: its settings, its events and the operations that
// read constructs and expressions from its stream.
class TTavoParser : public TPersistent {
  TAVO_CLASS(TTavoParser, TPersistent)
 public:
  explicit TTavoParser(TInferenceEngine* Owner = nullptr, TTavoTokenizerStream* Stream = nullptr)
      : FOwner(Owner), FStream(Stream) {}

  TInferenceEngine* GetOwner() const { return FOwner; }
  void SetOwner(TInferenceEngine* Value) { FOwner = Value; }
  TTavoTokenizerStream* GetStream() const { return FStream; }
  virtual void SetStream(TTavoTokenizerStream* Value) { FStream = Value; }
  // Empties what the stream had read ahead of the current form.
  virtual void Clear() {
    if (FStream) FStream->Clear();
  }
  // The keyword of a construct type, or empty.
  static String GetConstructName(TParsedType Type);
  static TParsedType FindConstructType(StringView Name);

  // Reads the whole stream; the error mode decides what a failure does.
  virtual bool Parse(bool Execute) = 0;
  // Reads one top-level expression; false at the end of the stream.
  virtual bool ParseExpression(bool Execute) = 0;
  virtual TParsedType GetConstructType() = 0;
  virtual ITavoValue ParseValue() = 0;
  virtual IFunCall ParseFunCall() = 0;
  virtual ITavoValue ParseNExecuteFunCall() = 0;
  virtual IFact ParseFact() = 0;
  virtual IValueVector ParseList() = 0;
  virtual bool LoadFacts() = 0;

  void Assign(const TPersistent* Source) override;

  bool FExplicitCreateTemplates = false;
  bool FTypeCheck = true;
  TErrorHandling FErrorHandling = ehRaiseImmediate;
  int FMaxErrors = 10;
  bool FAutoRenameCopy = false;
  bool FIgnoreModuleQualifier = false;
  bool FPrintModuleQualifiers = true;

  TParseEvent OnParse;
  TParseFactEvent OnParseFact;
  TParseFunCallEvent OnParseFunCall;
  TParseFunctionEvent OnParseFunction;
  TParseVariableEvent OnParseVariable;
  TParseFactTemplateEvent OnParseFactTemplate;
  TParseDefinedTypeEvent OnParseDefinedType;
  TParseFactSetEvent OnParseFactSet;
  TParseModuleEvent OnParseModule;
  TParseRuleEvent OnParseRule;
  TParsePatternEvent OnParsePattern;
  TParseFuzzySetEvent OnParseFuzzySet;
  TParseFuzzyVariableEvent OnParseFuzzyVariable;

 protected:
  TInferenceEngine* FOwner;
  TTavoTokenizerStream* FStream;
};

}  // namespace tavo
