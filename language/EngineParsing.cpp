// The engine's reading of rule-language text. The engine sits below the
// parser, so the operations that use it are defined here.
#include "engine/InferenceEngine.h"
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

bool TInferenceEngine::Parse(const String& Text, bool Execute) {
  auto* Parser = static_cast<TTavoParser*>(GetParserObject());
  TTavoClipsStream Stream(Text, this);
  TTavoTokenizerStream* Previous = Parser->GetStream();
  Parser->SetStream(&Stream);
  try {
    Parser->Parse(Execute);
  } catch (...) {
    Parser->SetStream(Previous);
    throw;
  }
  Parser->SetStream(Previous);
  return true;
}

IStreamToken TInferenceEngine::ReadToken(const String& InID) {
  // The function name in the warning is "readline", as it stands.
  if (!OnReadToken) throw ETavoException(Format(SNoReadFunctionWarning, u"readline"));
  IStreamToken Token;
  OnReadToken(this, InID, Token);
  return Token ? Token : Make<TTavoStreamToken>(0, String(u"EOF"), 0);
}

}  // namespace tavo
