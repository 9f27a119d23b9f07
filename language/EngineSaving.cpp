// The engine's printers and the saving and loading of a whole expert
// system as rule-language text. The engine sits below the parser, so these
// operations are defined with it.
#include <algorithm>
#include <ctime>
#include <fstream>
#include <sstream>

#include "common/MekFormat.h"
#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"

namespace tavo {

namespace {

// The engine's parser as a printer, or null for a parser class that does
// not print; the constructs then print themselves.
TTavoClipsParser* Printer(TInferenceEngine& Engine) {
  return dynamic_cast<TTavoClipsParser*>(Engine.GetParserObject());
}

template <class T>
String PrintWith(TInferenceEngine& Engine, const T& Construct) {
  TTavoClipsParser* Parser = Printer(Engine);
  return Parser ? Parser->PrettyPrint(Construct) : String();
}

// Gives the parser a stream and takes it back on every way out.
class TParserStream {
 public:
  TParserStream(TTavoParser& Parser, TTavoTokenizerStream* Stream) : FParser(Parser), FPrevious(Parser.GetStream()) {
    Parser.SetStream(Stream);
  }
  ~TParserStream() { FParser.SetStream(FPrevious); }
  TParserStream(const TParserStream&) = delete;
  TParserStream& operator=(const TParserStream&) = delete;

 private:
  TTavoParser& FParser;
  TTavoTokenizerStream* FPrevious;
};

// Sets a flag for the duration of a scope.
class TFlagScope {
 public:
  TFlagScope(bool& Flag, bool Value) : FFlag(Flag), FFormer(Flag) { Flag = Value; }
  ~TFlagScope() { FFlag = FFormer; }
  TFlagScope(const TFlagScope&) = delete;
  TFlagScope& operator=(const TFlagScope&) = delete;

 private:
  bool& FFlag;
  bool FFormer;
};

String NowText() {
  const std::time_t Now = std::time(nullptr);
  std::tm Local{};
  localtime_r(&Now, &Local);
  char Buffer[32];
  std::strftime(Buffer, sizeof Buffer, "%Y-%m-%d %H:%M:%S", &Local);
  return Utf8ToString(Buffer);
}

std::unique_ptr<std::fstream> CreateFile(const String& FileName) {
  return OpenFileStream(FileName, std::ios::out | std::ios::binary | std::ios::trunc);
}

std::unique_ptr<std::fstream> OpenFile(const String& FileName) {
  return OpenFileStream(FileName, std::ios::in | std::ios::binary);
}

// Writes Text behind the encoding's byte-order mark.
void WriteText(std::ostream& Stream, const String& Text, TTextEncoding Encoding) {
  WritePreambleToStream(Stream, Encoding);
  WriteStringToStream(Stream, Text, Encoding);
}

}  // namespace

// Printers.

String TInferenceEngine::PrettyPrint(const IFactTemplate& Template) { return PrintWith(*this, Template); }
String TInferenceEngine::PrettyPrint(const ITavoDefinedType& Type) { return PrintWith(*this, Type); }
String TInferenceEngine::PrettyPrint(const IModule& Module) { return PrintWith(*this, Module); }
String TInferenceEngine::PrettyPrint(const IUserFunction& Function) { return PrintWith(*this, Function); }
String TInferenceEngine::PrettyPrint(const TFactSet& FactSet) { return PrintWith(*this, FactSet); }
String TInferenceEngine::PrettyPrint(const TRule& Rule) { return PrintWith(*this, Rule); }
String TInferenceEngine::PrettyPrint(const TTavoPattern& Pattern) { return PrintWith(*this, Pattern); }
String TInferenceEngine::PrettyPrint(const IFact& Fact) { return PrintWith(*this, Fact); }
String TInferenceEngine::PrettyPrint(const IFunCall& Call) { return PrintWith(*this, Call); }
String TInferenceEngine::PrettyPrintGlobalVariables() { return PrintWith(*this, *FGlobalVariables); }

// The whole expert system.

String TInferenceEngine::GetExpertSystem(bool NoComments) { return ExpertSystemText(NoComments, true); }

String TInferenceEngine::ExpertSystemText(bool NoComments, bool WithFacts) {
  TTavoParser* Parser = static_cast<TTavoParser*>(GetParserObject());
  // Constructs print their bare names: each stands in its module's section.
  TFlagScope Qualifiers(Parser->FPrintModuleQualifiers, false);
  String Result;
  if (!NoComments) {
    Result += u"; *************************\r\n";
    Result += u"; Inference Engine v" + Format(u"%.4f", double(FVersion)) + u" Output\r\n";
    Result += u"; Created: " + NowText() + u"\r\n";
    Result += u"; Number of Global Variables: " + IntToStr(FGlobalVariables->Count()) + u"\r\n";
    Result += u"; Number of Modules:          " + IntToStr(FModules.Count()) + u"\r\n";
    // The function's argument has the opposite sense to the property.
    Result += FFactDuplication ? u"(set-fact-duplication FALSE)\r\n" : u"(set-fact-duplication TRUE)\r\n";
    if (FGlobalVariables->Count() > 0)
      Result += u"\r\n; *************************\r\n; Global Variables \r\n\r\n" + PrettyPrintGlobalVariables();
  }
  // Imports stand ahead of their importers in the list, so the reload
  // finds every module it imports from.
  for (int I = 0; I < FModules.Count(); ++I) {
    Result += FModules.Get(I)->GetExpertSystem(!NoComments, false, WithFacts);
    // The deffunctions follow the main module rather than lead the text: a
    // fact in a deffunction's body is read by its template, which must be
    // known by then, or the fact would be read as an ordered one. Calls
    // find their functions when they run, so rules before them are fine.
    if (I == 0 && !NoComments && FUserFunctions->GetNumInterpreted() > 0)
      Result += u"\r\n; *************************\r\n; Deffunctions \r\n" + FUserFunctions->ToString();
  }
  if (FFocusStack.Count() > 0) Result += u"\r\n(focus " + FFocusStack.ToNamesString() + u")\r\n";
  return Result;
}

bool TInferenceEngine::Parse(std::istream& Stream, TTextEncoding Encoding) {
  auto* Parser = static_cast<TTavoParser*>(GetParserObject());
  TTavoClipsStream Tokens(Stream, Encoding, this);
  TParserStream Scope(*Parser, &Tokens);
  return Parser->Parse(true);
}

void TInferenceEngine::SetExpertSystem(const String& Text) {
  auto* Parser = static_cast<TTavoParser*>(GetParserObject());
  TTavoClipsStream Tokens(Text, this);
  TParserStream Scope(*Parser, &Tokens);
  Clear();
  Parser->Parse(true);
  Reset();
}

void TInferenceEngine::SaveToStream(std::ostream& Stream, TTextEncoding Encoding) {
  WriteText(Stream, GetExpertSystem(false), Encoding);
}

void TInferenceEngine::SaveToFile(const String& FileName, TTextEncoding Encoding) {
  SaveToStream(*CreateFile(FileName), Encoding);
}

void TInferenceEngine::LoadFromStream(std::istream& Stream, TTextEncoding Encoding) { Parse(Stream, Encoding); }

void TInferenceEngine::LoadFromFile(const String& FileName, TTextEncoding Encoding) {
  LoadFromStream(*OpenFile(FileName), Encoding);
}

// Facts.

void TInferenceEngine::SaveFacts(std::ostream& Stream, const std::vector<String>& TemplateNames,
                                 TTextEncoding Encoding) {
  String Text;
  for (int I = 0; I < FFacts->Count(); ++I) {
    const IFact& Fact = FFacts->Get(I);
    const String& Name = Fact->GetTemplate() ? Fact->GetTemplate()->GetTemplateName() : String();
    if (!TemplateNames.empty() && std::find(TemplateNames.begin(), TemplateNames.end(), Name) == TemplateNames.end())
      continue;
    Text += Fact->ToString() + u"\r\n";
  }
  WriteText(Stream, Text, Encoding);
}

void TInferenceEngine::SaveFacts(std::ostream& Stream, TTextEncoding Encoding) { SaveFacts(Stream, std::vector<String>(), Encoding); }

void TInferenceEngine::SaveFacts(std::ostream& Stream, const String& TemplateName, TTextEncoding Encoding) {
  SaveFacts(Stream, std::vector<String>{TemplateName}, Encoding);
}

void TInferenceEngine::SaveFactsToFile(const String& FileName, const std::vector<String>& TemplateNames,
                                       TTextEncoding Encoding) {
  SaveFacts(*CreateFile(FileName), TemplateNames, Encoding);
}

void TInferenceEngine::LoadFacts(std::istream& Stream, TTextEncoding Encoding) {
  auto* Parser = static_cast<TTavoParser*>(GetParserObject());
  TTavoClipsStream Tokens(Stream, Encoding, this);
  TParserStream Scope(*Parser, &Tokens);
  Parser->LoadFacts();
}

void TInferenceEngine::LoadFactsFromFile(const String& FileName, TTextEncoding Encoding) {
  LoadFacts(*OpenFile(FileName), Encoding);
}

// One collection at a time.

void TInferenceEngine::SaveDefinedTypes(std::ostream& Stream, TTextEncoding Encoding) {
  String Text;
  for (const ITavoDefinedType& Type : FDefinedTypes->InOrder()) Text += Type->ToString() + u"\r\n";
  WriteText(Stream, Text, Encoding);
}

void TInferenceEngine::SaveFactTemplates(std::ostream& Stream, TTextEncoding Encoding) {
  String Text;
  for (const IFactTemplate& Template : FFactTemplates->InOrder()) Text += Template->ToString() + u"\r\n";
  WriteText(Stream, Text, Encoding);
}

void TInferenceEngine::SaveRules(std::ostream& Stream, TTextEncoding Encoding) {
  WriteText(Stream, FRules->ToString(), Encoding);
}

void TInferenceEngine::SaveModules(std::ostream& Stream, TTextEncoding Encoding) {
  String Text;
  for (int I = 0; I < FModules.Count(); ++I) Text += PrettyPrint(FModules.Get(I)) + u"\r\n";
  WriteText(Stream, Text, Encoding);
}

void TInferenceEngine::LoadDefinedTypes(std::istream& Stream, TTextEncoding Encoding) {
  FDefinedTypes->Clear();
  Parse(Stream, Encoding);
}

void TInferenceEngine::LoadFactTemplates(std::istream& Stream, TTextEncoding Encoding) {
  FFactTemplates->Clear();
  Parse(Stream, Encoding);
}

void TInferenceEngine::LoadRules(std::istream& Stream, TTextEncoding Encoding) {
  FRules->Clear();
  Parse(Stream, Encoding);
}

void TInferenceEngine::LoadModules(std::istream& Stream, TTextEncoding Encoding) {
  FModules.Clear();
  Parse(Stream, Encoding);
}

#define TAVO_FILE_FORM(Name)                                                          \
  void TInferenceEngine::Name##ToFile(const String& FileName, TTextEncoding Encoding) { \
    Name(*CreateFile(FileName), Encoding);                                             \
  }
TAVO_FILE_FORM(SaveDefinedTypes)
TAVO_FILE_FORM(SaveFactTemplates)
TAVO_FILE_FORM(SaveRules)
TAVO_FILE_FORM(SaveModules)
#undef TAVO_FILE_FORM
#define TAVO_FILE_FORM(Name)                                                            \
  void TInferenceEngine::Name##FromFile(const String& FileName, TTextEncoding Encoding) { \
    Name(*OpenFile(FileName), Encoding);                                                 \
  }
TAVO_FILE_FORM(LoadDefinedTypes)
TAVO_FILE_FORM(LoadFactTemplates)
TAVO_FILE_FORM(LoadRules)
TAVO_FILE_FORM(LoadModules)
#undef TAVO_FILE_FORM

}  // namespace tavo

namespace tavo {

void TInferenceEngine::ParseInModule(TModule* Module, const String& Text) {
  TModuleScope Scope(*this, Module);
  Parse(Text);
}

bool TInferenceEngine::GetPrintModuleQualifiers() {
  return static_cast<TTavoParser*>(GetParserObject())->FPrintModuleQualifiers;
}

void TInferenceEngine::SetPrintModuleQualifiers(bool Value) {
  static_cast<TTavoParser*>(GetParserObject())->FPrintModuleQualifiers = Value;
}

// Copying a whole engine.

void TInferenceEngine::Assign(const TPersistent* Source) {
  auto* Other = const_cast<TInferenceEngine*>(dynamic_cast<const TInferenceEngine*>(Source));
  if (!Other) {
    TComponent::Assign(Source);
    return;
  }
  if (Other == this) return;
  Clear();
  if (FParserType != Other->FParserType) {
    FParserType = Other->FParserType;
    FParser.reset();
  }
  {
    // The settings only: the parser goes on reading its own stream.
    auto* Parser = static_cast<TTavoParser*>(GetParserObject());
    TTavoTokenizerStream* Stream = Parser->GetStream();
    Parser->Assign(static_cast<TTavoParser*>(Other->GetParserObject()));
    Parser->SetStream(Stream);
  }
  FParserErrorHandling = Other->FParserErrorHandling;
  FParserMaxErrors = Other->FParserMaxErrors;
  FEvalSalience = Other->FEvalSalience;
  SetStrategy(Other->FStrategy);
  FDuplicateConstructs = Other->FDuplicateConstructs;
  FResetGlobals = Other->FResetGlobals;
  FFuzzyAutoTerms = Other->FFuzzyAutoTerms;
  FFuzzyCorrelationMethod = Other->FFuzzyCorrelationMethod;
  FFuzzyInferenceMethod = Other->FFuzzyInferenceMethod;
  SetFuzzyEqualsThreshold(Other->FFuzzyEqualsThreshold);
  SetMinActivationStrength(Other->FMinActivationStrength);
  // Built-in and host functions are shared; deffunctions come with the text.
  for (const auto& Item : *Other->FUserFunctions)
    if (!dynamic_cast<TInterpretedFunction*>(Item.Value.Get())) FUserFunctions->AddOrSetValue(Item.Key, Item.Value);

  // The rest is read from the source's text, quietly and with the type
  // checks off: what the source holds has passed them already. The
  // watches are copied after, so that the reading prints no trace.
  const TTypeChecks Checks = Other->FTypeChecks;
  TPrintOutEvent Printer = std::move(OnPrintOut);
  OnPrintOut = nullptr;
  FTypeChecks = TTypeChecks();
  struct TRestore {
    TInferenceEngine* Engine;
    TPrintOutEvent& Printer;
    TTypeChecks Checks;
    ~TRestore() {
      Engine->OnPrintOut = std::move(Printer);
      Engine->FTypeChecks = Checks;
    }
  } Restore{this, Printer, Checks};
  Parse(Other->ExpertSystemText(false, false));
  // Each module's own facts, with their ids; fresh ids go on from the
  // source's counter.
  for (int I = 0; I < Other->FModules.Count(); ++I) {
    const IModule& Module = Other->FModules.Get(I);
    TFacts* Facts = FModules.GetModule(Module->GetName())->GetFacts();
    const bool Preserve = Facts->GetPreserveIDs();
    Facts->SetPreserveIDs(true);
    try {
      Facts->AssignLocal(*Module->GetFacts());
    } catch (...) {
      Facts->SetPreserveIDs(Preserve);
      throw;
    }
    Facts->SetPreserveIDs(Preserve);
  }
  FFactIdCounter = std::max(FFactIdCounter, Other->FFactIdCounter);
  FWatch = Other->FWatch;
  // The focus stack from its bottom to its top, then the current module.
  FFocusStack.Clear();
  for (int I = 0; I < Other->FFocusStack.Count(); ++I)
    FFocusStack.Add(FModules.GetModule(Other->FFocusStack.Get(I)->GetName()));
  if (Other->FCurrentModule) SetCurrentModule(FModules.GetModule(Other->FCurrentModule->GetName()));
}

}  // namespace tavo
