// The engine's reading of rule-language text. The engine sits below the
// parser, so the operations that use it are defined here.
#include "engine/InferenceEngine.h"

#include <fstream>

#include "language/TavoClipsParser.h"

namespace tavo {

TObject* TInferenceEngine::GetParserObject() {
  if (!FParser) {
    const TClass& Class = FParserType ? *FParserType : TTavoClipsParser::StaticClass();
    std::unique_ptr<TObject> Instance(Class.Create ? Class.Create() : nullptr);
    auto* Parser = dynamic_cast<TTavoParser*>(Instance.get());
    if (!Parser) throw ETavoException(SNoParser);
    Parser->SetOwner(this);
    FParser = std::move(Instance);
  }
  auto* Parser = static_cast<TTavoParser*>(FParser.get());
  // The engine's settings are the parser's.
  Parser->FTypeCheck = FTypeChecks.Contains(tcStatic);
  Parser->FErrorHandling = FParserErrorHandling;
  Parser->FMaxErrors = FParserMaxErrors;
  return Parser;
}

namespace {

// Runs Action with the engine's parser reading Text, then gives the parser
// its former stream back.
template <class F>
auto WithParser(TInferenceEngine& Engine, const String& Text, F&& Action) {
  auto* Parser = static_cast<TTavoClipsParser*>(Engine.GetParserObject());
  TTavoClipsStream Stream(Text, &Engine);
  TTavoTokenizerStream* Previous = Parser->GetStream();
  Parser->SetStream(&Stream);
  struct TRestore {
    TTavoParser* Parser;
    TTavoTokenizerStream* Previous;
    ~TRestore() { Parser->SetStream(Previous); }
  } Restore{Parser, Previous};
  return Action(*Parser);
}

}  // namespace

bool TInferenceEngine::Parse(const String& Text, bool Execute) {
  return WithParser(*this, Text, [&](TTavoClipsParser& Parser) { return Parser.Parse(Execute); });
}

IFact TInferenceEngine::ParseFact(const String& Text) {
  return WithParser(*this, Text, [](TTavoClipsParser& Parser) { return Parser.ParseFact(); });
}

ITavoValue TInferenceEngine::ParseValue(const String& Text) {
  return WithParser(*this, Text, [](TTavoClipsParser& Parser) { return Parser.ParseValue(); });
}

IFunCall TInferenceEngine::ParseFunCall(const String& Text) {
  return WithParser(*this, Text, [](TTavoClipsParser& Parser) { return Parser.ParseFunCall(); });
}

ITavoValue TInferenceEngine::ParseNExecuteFunCall(const String& Text) {
  return WithParser(*this, Text, [](TTavoClipsParser& Parser) { return Parser.ParseNExecuteFunCall(); });
}

int TInferenceEngine::ParseConstructType(const String& Text) {
  return WithParser(*this, Text, [](TTavoClipsParser& Parser) { return int(Parser.GetConstructType()); });
}

int TInferenceEngine::Assert(const String& Text) {
  IFact Fact = ParseFact(Text);
  ResolveFact(*FGlobalContext, Fact);
  return Assert(Fact, false);
}

void TInferenceEngine::Retract(const String& Text) {
  IFact Fact = ParseFact(Text);
  ResolveFact(*FGlobalContext, Fact);
  Retract(Fact);
}

IStreamToken TInferenceEngine::ReadToken(const String& InID) {
  if (TGTextStream* const* Stream = GetIOStreams()->Find(InID))
    if (auto* Tokens = dynamic_cast<TTavoTokenizerStream*>(*Stream)) return Tokens->NextToken();
  if (FInputStream) {
    IStreamToken Token = static_cast<TTavoTokenizerStream*>(FInputStream)->NextToken();
    PrintOut((Token->GetText().empty() ? Token->ToString() : Token->GetText()) + u"\r\n");
    return Token;
  }
  // The function name in the warning is "readline", as it stands.
  if (!OnReadToken) throw ETavoException(Format(SNoReadFunctionWarning, u"readline"));
  IStreamToken Token;
  OnReadToken(this, InID, Token);
  return Token ? Token : Make<TTavoStreamToken>(0, String(u"EOF"), 0);
}

bool TInferenceEngine::Batch(std::istream& Stream, TTextEncoding Encoding) {
  TTavoClipsStream Tokenizer(Stream, Encoding, this);
  struct TRestore {
    TGTextStream*& Input;
    TGTextStream* Previous;
    ~TRestore() { Input = Previous; }
  } Restore{FInputStream, FInputStream};
  FInputStream = &Tokenizer;
  // A form may span lines: lines gather until the parentheses balance
  // outside strings and comments, and only then is the form parsed. A read
  // inside the form then takes the line after it, and nothing further has
  // been read ahead.
  String Form;
  while (!Tokenizer.IsEof()) {
    Form += Tokenizer.TGTextStream::GetLine();
    Form += u"\r\n";
    if (!IsFormComplete(Form) && !Tokenizer.IsEof()) continue;
    String Text;
    Text.swap(Form);
    Parse(Text, true);
  }
  return true;
}

bool TInferenceEngine::Batch(const String& FileName, TTextEncoding Encoding) {
  std::ifstream File(StringToUtf8(FileName), std::ios::binary);
  if (!File) return false;
  return Batch(File, Encoding);
}

}  // namespace tavo

namespace tavo {

TRule* TInferenceEngine::ParseRule(const String& Text) {
  std::unique_ptr<TRule> Rule(
      WithParser(*this, Text, [](TTavoClipsParser& Parser) { return Parser.ParseRule(); }));
  TRule* Added = Rule.get();
  FRules->Add(Added);
  // A rule the duplicate policy keeps out is not the caller's to hold.
  if (FRules->Find(Added->GetRuleName()) != Added) return nullptr;
  return Rule.release();
}

void TInferenceEngine::ParseRulePatterns(TRule* Rule, const String& Text) {
  WithParser(*this, Text, [Rule](TTavoClipsParser& Parser) {
    TTavoClipsParser::TVariableTable Table;
    Rule->BeginUpdate();
    try {
      Parser.ParseRulePatterns(Rule, Table);
    } catch (...) {
      // The parse error is the one to report.
      try {
        Rule->EndUpdate();
      } catch (...) {
      }
      throw;
    }
    Rule->EndUpdate();
  });
}

void TInferenceEngine::ParseRuleActions(TRule* Rule, const String& Text) {
  WithParser(*this, Text, [Rule](TTavoClipsParser& Parser) {
    TTavoClipsParser::TVariableTable Table;
    Parser.ParseRuleActions(Rule, Table);
  });
}

}  // namespace tavo
