#include "language/TavoClipsParser.h"

#include <algorithm>
#include <iterator>
#include <memory>

#include "core/TavoHelperFunctions.h"
#include "engine/InferenceEngine.h"
#include "knowledge/TavoFactSets.h"

namespace tavo {

namespace {

// Token kinds of punctuation are their character codes.
constexpr int KindEOF = 0;
constexpr int KindOpen = u'(';
constexpr int KindClose = u')';
constexpr int KindEquals = u'=';
constexpr int KindOpenBracket = u'[';
constexpr int KindCloseBracket = u']';

constexpr const char16_t* ConstructKeywords[] = {u"defrule",   u"deffacts", u"deftemplate", u"deffunction",
                                                 u"defglobal", u"deftype",  u"defmodule"};

String KindText(int Kind) { return String(1, char16_t(Kind)); }

// Counts one level of nesting for as long as it lives.
class TDepthGuard {
 public:
  explicit TDepthGuard(int& Depth) : FDepth(Depth) { ++FDepth; }
  ~TDepthGuard() { --FDepth; }

 private:
  int& FDepth;
};

}  // namespace

// TTavoParser

String TTavoParser::GetConstructName(TParsedType Type) {
  if (Type >= ptRule && Type <= ptDefModule) return ConstructKeywords[Type - ptRule];
  return String();
}

TParsedType TTavoParser::FindConstructType(StringView Name) {
  for (int Type = ptNone; Type <= ptEOF; ++Type)
    if (GetConstructName(TParsedType(Type)) == Name) return TParsedType(Type);
  return ptNone;
}

void TTavoParser::Assign(const TPersistent* Source) {
  auto* Parser = dynamic_cast<const TTavoParser*>(Source);
  if (!Parser) {
    TPersistent::Assign(Source);
    return;
  }
  FStream = Parser->FStream;
  FExplicitCreateTemplates = Parser->FExplicitCreateTemplates;
  FTypeCheck = Parser->FTypeCheck;
  FAutoRenameCopy = Parser->FAutoRenameCopy;
  FIgnoreModuleQualifier = Parser->FIgnoreModuleQualifier;
  FPrintModuleQualifiers = Parser->FPrintModuleQualifiers;
  FErrorHandling = Parser->FErrorHandling;
  FMaxErrors = Parser->FMaxErrors;
}

// TTavoClipsParser

TTavoClipsParser::TTavoClipsParser(TInferenceEngine* Owner, TTavoTokenizerStream* Stream)
    : TTavoParser(Owner, Stream) {
  FSlotFunctions.SetCaseSensitive(true);
  for (const char16_t* Name : {u"assert", u"fuzzy-assert", u"fuzzy-assert-unconditional"})
    AddSlotFunction(Name, 0, 65535);
  for (const char16_t* Name : {u"modify", u"duplicate"}) AddSlotFunction(Name, 1, 65535);
}

void TTavoClipsParser::Assign(const TPersistent* Source) {
  TTavoParser::Assign(Source);
  if (auto* Parser = dynamic_cast<const TTavoClipsParser*>(Source)) FSlotFunctions.Assign(&Parser->FSlotFunctions);
}

TTavoClipsStream& TTavoClipsParser::Stream() const {
  auto* Clips = dynamic_cast<TTavoClipsStream*>(FStream);
  if (!Clips) throw ETavoException(SNoParser);
  return *Clips;
}

IStreamToken TTavoClipsParser::Next() { return Stream().NextToken(); }

void TTavoClipsParser::PutBack(const IStreamToken& Token) { Stream().PutBackToken(Token); }

int TTavoClipsParser::CurrentLine() const { return Stream().GetCurrentToken()->GetLineNumber(); }

bool TTavoClipsParser::IsValueToken(const IStreamToken& Token) const {
  switch (Token->GetDataType()) {
    case dtAtom:
    case dtString:
    case dtInteger:
    case dtVariable:
    case dtFloat:
    case dtMultiVariable:
      return true;
    default:
      return false;
  }
}

ITavoValue TTavoClipsParser::TokenValue(const IStreamToken& Token) const { return Token->Value(); }

ITavoValue TTavoClipsParser::FunCallValue() { return Make<TTavoValue>(ParseFunCall()); }

void TTavoClipsParser::ParseError(StringView Where, StringView Message) {
  String Text = Stream().ToString();
  if (Text.size() > 255) Text = Text.substr(0, 128) + u"... \r\n" + Text.substr(Text.size() - 129, 128);
  int Line = CurrentLine();
  throw ETavoParseException(Format(SParseError, Message, Where, IntToStr(Line), Text), Line);
}

String TTavoClipsParser::GenerateSymbol(const String& Prefix) {
  return FOwner ? FOwner->GenerateSymbol(Prefix) : Prefix;
}

String TTavoClipsParser::GetSyntaxStatement(const IUserFunction& Function) {
  String Arguments = Trim(Function->GetArgumentString());
  return Format(CLIPSSyntaxFormat, Arguments.empty() ? Function->GetFunctionName()
                                                     : Function->GetFunctionName() + u' ' + Arguments);
}

// Slot functions.

void TTavoClipsParser::AddSlotFunction(const String& Name, int Start, int End) {
  TSlotArgRecord Record{uint16_t(Start), uint16_t(End)};
  int Index = FSlotFunctions.IndexOf(Name);
  if (Index >= 0)
    FSlotFunctions.SetData(Index, Record);
  else
    FSlotFunctions.AddObject(Name, nullptr, Record);
}

int TTavoClipsParser::GetSlotFunctionStart(StringView Name) const {
  int Index = FSlotFunctions.IndexOf(Name);
  return Index < 0 ? -1 : FSlotFunctions.GetData(Index).Start;
}

int TTavoClipsParser::GetSlotFunctionEnd(StringView Name) const {
  int Index = FSlotFunctions.IndexOf(Name);
  if (Index < 0) return -1;
  int End = FSlotFunctions.GetData(Index).End;
  return End == 0 ? 65535 : End;
}

void TTavoClipsParser::SetSlotFunctionStart(StringView Name, int Value) {
  int Index = FSlotFunctions.IndexOf(Name);
  if (Index < 0) return;
  TSlotArgRecord Record = FSlotFunctions.GetData(Index);
  Record.Start = uint16_t(Value);
  if (Record.Start > Record.End) Record.End = Record.Start;
  FSlotFunctions.SetData(Index, Record);
}

void TTavoClipsParser::SetSlotFunctionEnd(StringView Name, int Value) {
  int Index = FSlotFunctions.IndexOf(Name);
  if (Index < 0) return;
  TSlotArgRecord Record = FSlotFunctions.GetData(Index);
  Record.End = uint16_t(Value == 0 ? 1 : Value);
  if (Record.End < Record.Start) Record.Start = Record.End;
  FSlotFunctions.SetData(Index, Record);
}

// The frame.

TParsedType TTavoClipsParser::GetConstructType() {
  IStreamToken Token = Next();
  TParsedType Type = GetConstructType(Token);
  // An opening parenthesis is back already.
  if (Token->GetDataType() != KindOpen) PutBack(Token);
  return Type;
}

TParsedType TTavoClipsParser::GetConstructType(const IStreamToken& Token) {
  switch (Token->GetDataType()) {
    case KindOpen: {
      PutBack(Token);
      String Head = Stream().Head();
      for (int Type = ptRule; Type <= ptDefModule; ++Type)
        if (Head == ConstructKeywords[Type - ptRule]) return TParsedType(Type);
      return Head == u"EOF" ? ptEOF : ptFunCall;
    }
    case dtAtom:
    case dtInteger:
    case dtFloat:
    case dtVariable:
    case dtMultiVariable:
      return ptValue;
    case KindEOF:
      if (Token->GetText() == u"EOF") return ptEOF;
      break;
    default:
      break;
  }
  ParseError(u"GetConstructType", SExpectedParenConstVar, Token->ToString());
}

bool TTavoClipsParser::ParseExpression(bool Execute) {
  ITavoValue Result = FCNil;
  ICloneableObject Construct;
  TObject* Object = nullptr;
  IInterpretedFunction Function;
  std::unique_ptr<TFactSet> OrphanSet;
  std::unique_ptr<TRule> OrphanRule;
  IStreamToken Token = Next();
  TParsedType Type = GetConstructType(Token);
  switch (Type) {
    case ptValue:
      Result = Token->Value(FOwner ? FOwner->GetGlobalContext() : nullptr);
      break;
    case ptFunCall:
      Result = Execute ? ParseNExecuteFunCall() : FunCallValue();
      break;
    case ptFunction:
      Function = ParseFunction();
      Object = Function.Get();
      if (FOwner) FOwner->GetUserFunctions()->AddOrSetValue(Function->GetFunctionName(), Function);
      break;
    case ptGlobals:
      ParseGlobalVariables();
      break;
    case ptFactTemplate: {
      IFactTemplate Template = ParseFactTemplate();
      Construct = Template;
      if (FOwner) FOwner->GetFactTemplates()->AddOrSetValue(Template->GetTemplateName(), Template);
      break;
    }
    case ptDefType: {
      ITavoDefinedType DefinedType = ParseDefinedType();
      Construct = DefinedType;
      if (FOwner) FOwner->GetDefinedTypes()->AddOrSetValue(DefinedType->GetName(), DefinedType);
      break;
    }
    case ptFactSet: {
      std::unique_ptr<TFactSet> FactSet(ParseFactSet());
      Object = FactSet.get();
      if (FOwner) {
        FactSet->SetEngineNoParse(FOwner);
        // The module's list owns the set from here on.
        FOwner->GetFactSets()->Add(FactSet.release());
      } else {
        // Without an engine nothing keeps the set past the event.
        OrphanSet = std::move(FactSet);
      }
      break;
    }
    case ptDefModule: {
      IModule Module = ParseModule();
      Construct = Module;
      if (FOwner) {
        FOwner->AddModule(Module);
        FOwner->SetCurrentModule(Module);
      }
      break;
    }
    case ptRule: {
      std::unique_ptr<TRule> Rule(ParseRule());
      Object = Rule.get();
      if (FOwner) {
        TRule* Added = Rule.get();
        // Compiled as it enters the list; a rule the duplicate policy
        // refuses, or that does not compile, goes.
        FOwner->GetRules()->Add(Added);
        if (FOwner->GetRules()->Find(Added->GetRuleName()) == Added) Rule.release();
      } else {
        OrphanRule = std::move(Rule);
      }
      break;
    }
    case ptEOF:
      Result = FCEOF;
      break;
    default:
      break;
  }
  if (!Result || Result->Equals(FCNil))
    Type = ptNone;
  else
    Construct = Result;
  if ((Type == ptValue || Type == ptFunCall) && FOwner) FOwner->PrintOut(Result->ToString() + u"\r\n");
  if (OnParse) OnParse(this, Type, Construct, Object);
  return !(Result && Result->Equals(FCEOF));
}

bool TTavoClipsParser::Parse(bool Execute) {
  if (FErrorHandling == ehRaiseImmediate) {
    while (ParseExpression(Execute)) {
    }
    return true;
  }
  TStringList<int> Messages;
  auto Raise = [&]() {
    if (Messages.Count() == 0) return;
    String Text = Messages.GetText();
    if (Messages.Count() == 1) throw ETavoParseException(Text, CurrentLine());
    throw ETavoParseException(Format(SMultipleParseError, Text), CurrentLine());
  };
  bool Done = false;
  while (!Done) {
    try {
      Done = !ParseExpression(true);
      continue;
    } catch (const EAbort&) {
      Raise();
      throw;
    } catch (const ETavoParseException& E) {
      Messages.Add(E.Message());
    } catch (const EMekException& E) {
      Messages.Add(Format(SParseError, E.Message(), u"Parse", IntToStr(CurrentLine()), Stream().ToString()));
    } catch (const std::exception& E) {
      Messages.Add(Format(SParseError, Utf8ToString(E.what()), u"Parse", IntToStr(CurrentLine()),
                          Stream().ToString()));
    }
    if (Messages.Count() > FMaxErrors)
      Done = true;
    else
      Stream().MoveToNextConstruct();
  }
  Raise();
  return true;
}

bool TTavoClipsParser::NameTaken(StringView Keyword, const String& Name) const {
  if (!FOwner) return false;
  if (Keyword == u"deftype") return bool(FOwner->FindDefinedType(Name));
  if (Keyword == u"deftemplate") return bool(FOwner->FindFactTemplate(Name));
  if (Keyword == u"deffunction") return bool(FOwner->GetUserFunction(Name));
  if (Keyword == u"defmodule") return FOwner->GetModules().IndexOf(Name) >= 0;
  if (Keyword == u"deffacts") return FOwner->GetFactSets() && FOwner->GetFactSets()->IndexOf(Name) >= 0;
  // Rules join as their collection arrives; defglobal and term are never
  // renamed.
  return false;
}

IStreamToken TTavoClipsParser::FinishHeader(String& Name, String& Comment, bool HasComment, StringView Keyword) {
  if (FAutoRenameCopy)
    while (NameTaken(Keyword, Name)) Name = RenameCopy(Name);
  Comment.clear();
  IStreamToken Token = Next();
  if (HasComment && Token->GetDataType() == dtString) {
    Comment = Token->GetText();
    Token = Next();
  }
  return Token;
}

IStreamToken TTavoClipsParser::ParseHeader(String& Name, String& Comment, bool HasComment, StringView Where,
                                           StringView Message, StringView Keyword) {
  IStreamToken Open = Next();
  IStreamToken Word = Next();
  if (Open->GetDataType() != KindOpen || Word->GetDataType() != dtAtom || Word->GetText() != Keyword)
    ParseError(Where, Message);
  IStreamToken NameToken = Next();
  if (NameToken->GetDataType() != dtAtom) ParseError(Where, SMissingName);
  Name = NameToken->GetText();
  return FinishHeader(Name, Comment, HasComment, Keyword);
}

IStreamToken TTavoClipsParser::ParseHeader(String& Name, String& Module, String& Comment, bool HasComment,
                                           StringView Where, StringView Message, StringView Keyword) {
  IStreamToken Open = Next();
  IStreamToken Word = Next();
  if (Open->GetDataType() != KindOpen || Word->GetDataType() != dtAtom || Word->GetText() != Keyword)
    ParseError(Where, Message);
  Name = ParseFullName(Module);
  if (FOwner) {
    const IModule& Current = FOwner->GetCurrentModule();
    String CurrentName = Current ? Current->GetName() : String();
    if (FIgnoreModuleQualifier || Module.empty())
      Module = CurrentName;
    else if (Module != CurrentName)
      FOwner->SetCurrentModule(FOwner->GetModules().GetModule(Module));
  }
  return FinishHeader(Name, Comment, HasComment, Keyword);
}

String TTavoClipsParser::GenerateVarName(int Index, const IFactTemplate&, const String& Prefix, const IFactSlot& Slot) {
  String Name = Prefix;
  if (Slot) Name += Slot->GetName();
  if (Index > 0) Name += IntToStr(Index);
  return Name;
}

ITavoValue TTavoClipsParser::GenerateVariable(const TStrings* Names, const IFactTemplate& Template, bool Unique,
                                              const String& SlotName, const String& Prefix) {
  IFactSlot Slot;
  if (!SlotName.empty() && Template) Slot = Template->GetSlot(SlotName);
  int Index = 0;
  String Name = GenerateVarName(Index, Template, Prefix, Slot);
  while (Unique && Names && Names->IndexOf(Name) >= 0)
    Name = GenerateVarName(++Index, Template, Template ? Template->GetTemplateName() : Prefix, Slot);
  return Make<TTavoValue>(Name, dtVariable);
}

ITavoValue TTavoClipsParser::GenerateVariable(const TStrings* Names, const IFactTemplate& Template, bool Unique,
                                              const String& SlotName) {
  return GenerateVariable(Names, Template, Unique, SlotName, Template ? Template->GetTemplateName() : String());
}

// Values.

ITavoValue TTavoClipsParser::ParseValue() {
  ITavoValue Result;
  IValueVector Vector;
  IStreamToken Token = Next();
  while (Token->GetDataType() != KindEOF && Token->GetDataType() != KindClose) {
    if (Result) {
      if (!Vector) Vector = Make<TValueVector>();
      Vector->Add(Result);
    }
    int Kind = Token->GetDataType();
    if (Kind == KindOpenBracket || Kind == KindCloseBracket) {
      Result = Make<TTavoValue>(Token->GetText(), dtAtom);
    } else if (Kind == KindOpen) {
      IStreamToken Second = Next();
      PutBack(Second);
      PutBack(Token);
      Result = Second->GetDataType() == KindOpen ? Make<TTavoValue>(ParseSingletons()) : FunCallValue();
    } else if (IsValueToken(Token)) {
      Result = TokenValue(Token);
    } else if (Vector) {
      break;
    } else {
      ParseError(u"ParseValue", SBadArgument, Token->ToString());
    }
    Token = Next();
  }
  PutBack(Token);
  if (Vector) {
    // A stray punctuation token after two values adds the last one twice,
    // as it stands.
    if (Result) Vector->Add(Result);
    Result = Make<TTavoValue>(Vector);
  }
  return Result;
}

IValueVector TTavoClipsParser::ParseList() {
  IValueVector Vector = Make<TValueVector>();
  IStreamToken Token = Next();
  while (Token->GetDataType() != KindEOF && Token->GetDataType() != KindClose) {
    int Kind = Token->GetDataType();
    if (Kind == KindOpenBracket || Kind == KindCloseBracket) {
      Vector->Add(Make<TTavoValue>(Token->GetText(), dtAtom));
    } else if (Kind == KindEquals) {
      IStreamToken Open = Next();
      if (Open->GetDataType() != KindOpen) ParseError(u"ParseList", SAtomNotEquals);
      PutBack(Open);
      Vector->Add(FunCallValue());
    } else if (Kind == KindOpen) {
      IStreamToken Second = Next();
      PutBack(Second);
      PutBack(Token);
      Vector->Add(Second->GetDataType() == KindOpen ? Make<TTavoValue>(ParseSingletons()) : FunCallValue());
    } else if (IsValueToken(Token)) {
      Vector->Add(TokenValue(Token));
    } else {
      ParseError(u"ParseList", SBadSlotValue, Token->ToString());
    }
    Token = Next();
  }
  PutBack(Token);
  return Vector;
}

ITavoValue TTavoClipsParser::CheckedValue(ITavoValue Value, TTavoTypes Types, const ITavoDefinedType& DefinedType) {
  if (!FTypeCheck || !Value || TavoAlwaysValidTypes.Contains(Value->GetDType())) return Value;
  if (DefinedType) {
    if (!DefinedType->IsValid(Value))
      ParseError(u"ParseValue(SlotTypes)", StringView(DefinedType->GetInvalidValueString(Value)));
    return Value;
  }
  TTavoType Type = Value->GetDType();
  if (Types.Contains(Type)) return Value;
  if (Type == dtFloat && Types.Contains(dtInteger)) {
    Value->SetAsInteger(Value->GetAsInteger());
  } else if (Type == dtInteger && Types.Contains(dtFloat)) {
    Value->SetAsFloat(Value->GetAsNumeric());
  } else {
    String Inner = Format(SNotCorrectType, UpperCase(SetToString(Types)), Value->ToString(), GetTavoTypeName(Type));
    ParseError(u"ParseValue(SlotTypes)", SInvalidSlotValue, Inner, u"ParseValue");
  }
  return Value;
}

ITavoValue TTavoClipsParser::ParseValue(TTavoTypes Types, const ITavoDefinedType& DefinedType) {
  auto Fuzzy = [&](const ITavoValue& Value) {
    if (!DefinedType || !FOwner) ParseError(u"ParseValue", SNeedFuzzyType);
    return FOwner->EvalFuzzyExpression(DefinedType->GetFuzzyType(), Value, nullptr);
  };
  if (Types.Contains(dtMultiSlot)) {
    ITavoValue Result = Make<TTavoValue>(ParseList());
    if (!FTypeCheck || !Types.Contains(dtFuzzy)) return CheckedValue(Result, Types, DefinedType);
    ITavoValue Sets = Fuzzy(Result);
    if (!Sets || Sets == FCNil) ParseError(u"ParseValue", SInvalidFuzzyExpression, Result->ToString());
    if (Sets->GetDType() == dtList) return Sets;
    IValueVector One = Make<TValueVector>();
    One->Add(Sets);
    return Make<TTavoValue>(One);
  }
  if (Types.Contains(dtFuzzy)) return Fuzzy(ParseValue());
  ITavoValue Result;
  IStreamToken Token = Next();
  int Kind = Token->GetDataType();
  if (Kind == KindOpen) {
    PutBack(Token);
    Result = FunCallValue();
  } else if (Kind == KindEquals) {
    IStreamToken Open = Next();
    if (Open->GetDataType() != KindOpen) ParseError(u"ParseValue", SAtomNotEquals);
    PutBack(Open);
    Result = FunCallValue();
  } else if (IsValueToken(Token)) {
    Result = TokenValue(Token);
  } else {
    ParseError(u"ParseValue", SBadSlotValue, Token->ToString());
  }
  return CheckedValue(Result, Types, DefinedType);
}

ITavoValue TTavoClipsParser::ParseValue(const IFactSlot& Slot) {
  ITavoValue Value = ParseValue(Slot->GetSlotType(), Slot->GetExtendedTypeInfo());
  if (FTypeCheck && !Slot->IsValid(Value)) {
    if (Value && Value->GetDType() == dtInteger && Slot->GetSlotType().Contains(dtFloat))
      Value->SetAsFloat(Value->GetAsNumeric());
    else
      ParseError(u"ParseValue(Fact Slot)", StringView(Slot->GetInvalidValueString(Value)));
  }
  return Value;
}

IValueVector TTavoClipsParser::ParseValuePair() {
  IValueVector Pair = Make<TValueVector>();
  IStreamToken Open = Next();
  IStreamToken Name = Next();
  if (Open->GetDataType() != KindOpen || Name->GetDataType() != dtAtom) ParseError(u"ParseValuePair", SExpectedAtom);
  Pair->Add(Make<TTavoValue>(Name->GetText(), dtAtom));
  ITavoValue Value = ParseValue();
  if (!Value) ParseError(u"ParseValuePair", SExpectedValue);
  Pair->Add(Value);
  if (Next()->GetDataType() != KindClose) ParseError(u"ParseValuePair", SExpectedChar, u")");
  return Pair;
}

ISingletonsVector TTavoClipsParser::ParseSingletons() {
  TDepthGuard Guard(FDepth);
  if (FDepth > MaxParseDepth) ParseError(u"ParseFuzzyPoints", SNestingTooDeep, MaxParseDepth);
  // Printed in the plain form until the engine prints singletons itself.
  ISingletonsVector Singletons = Make<TSingletonsVector>();
  if (Next()->GetDataType() != KindOpen) ParseError(u"ParseFuzzyPoints", SExpectedChar, u"(");
  auto Point = [this](const IStreamToken& Token) -> ITavoValue {
    int Kind = Token->GetDataType();
    if (Kind == dtInteger || Kind == dtVariable || Kind == dtFloat) return Token->Value();
    if (Kind == KindOpen) {
      PutBack(Token);
      return FunCallValue();
    }
    ParseError(u"ParseFuzzyPoints", SExpectedNumVarFun);
    __builtin_unreachable();
  };
  IStreamToken Token = Next();
  while (Token->GetDataType() == KindOpen) {
    ITavoValue X = Point(Next());
    ITavoValue Y = Point(Next());
    Singletons->Add(X, Y);
    if (Next()->GetDataType() != KindClose) ParseError(u"ParseFuzzyPoints", SExpectedChar, u")");
    Token = Next();
  }
  if (Token->GetDataType() != KindClose) ParseError(u"ParseFuzzyPoints", SExpectedChar, u")");
  return Singletons;
}

// Calls.

IFunCall TTavoClipsParser::ParseFunCall() {
  TDepthGuard Guard(FDepth);
  if (FDepth > MaxParseDepth) ParseError(u"ParseFunCall", SNestingTooDeep, MaxParseDepth);
  IStreamToken Open = Next();
  if (Open->GetDataType() != KindOpen) ParseError(u"ParseFunCall", SExpectedChar, u"(");
  String Comment = Trim(Open->GetWhitespace());
  IStreamToken Head = Next();
  String Name;
  ITavoValue HeadVariable;
  int HeadKind = Head->GetDataType();
  if (HeadKind == dtAtom || HeadKind == KindEquals) {
    Name = Head->GetText();
  } else if (HeadKind == dtVariable || HeadKind == dtMultiVariable) {
    Name = u"__get-var";
    HeadVariable = Head->Value();
  } else {
    ParseError(u"ParseFunCall", SMissingName);
  }
  int SlotIndex = FSlotFunctions.IndexOf(Name);
  TSlotArgRecord Slot = SlotIndex >= 0 ? FSlotFunctions.GetData(SlotIndex) : TSlotArgRecord{};
  bool FactFunction = SlotIndex >= 0 && Slot.Start == 0;
  bool SlotFunction = SlotIndex >= 0 && Slot.Start > 0;
  int SlotEnd = Slot.End == 0 ? 65535 : Slot.End;
  IFunCall Call = Make<TFunctionCall>(static_cast<IReasoner*>(FOwner), Name);
  Call->SetComment(Comment);
  if (HeadVariable) Call->AddArgument(HeadVariable);
  IStreamToken Token = Next();
  while (Token->GetDataType() != KindClose) {
    int Kind = Token->GetDataType();
    if (Kind == KindEOF) {
      ParseError(u"ParseFunCall", SUnexpectedEOF);
    } else if (Kind == KindOpen) {
      IStreamToken Second = Next();
      PutBack(Second);
      PutBack(Token);
      int Position = Call->GetArgumentCount() + 1;
      if (FactFunction)
        Call->AddArgument(ParseFact());
      else if (SlotFunction && Position >= Slot.Start && Position <= SlotEnd)
        Call->AddArgument(ParseValuePair());
      else if (Second->GetDataType() == KindOpen)
        Call->AddArgument(Make<TTavoValue>(ParseSingletons()));
      else
        Call->AddArgument(ParseFunCall());
    } else if (IsValueToken(Token)) {
      Call->AddArgument(Token->Value());
    } else {
      Call->AddArgument(KindText(Kind), dtString);
    }
    Token = Next();
  }
  if (OnParseFunCall) OnParseFunCall(this, Call);
  return Call;
}

ITavoValue TTavoClipsParser::ParseNExecuteFunCall() {
  IFunCall Call = ParseFunCall();
  return Call->Execute(FOwner ? FOwner->GetGlobalContext() : nullptr);
}

ITavoValue TTavoClipsParser::ParseVariable(String& Name) {
  IStreamToken Token = Next();
  if (Token->GetDataType() != dtVariable) ParseError(u"ParseVariable", SMissingName);
  const String& Text = Token->GetText();
  if (Text.size() < 2 || Text.front() != u'*' || Text.back() != u'*')
    ParseError(u"ParseVariable", SBadVariableName, Text);
  Name = Text;
  if (Next()->GetDataType() != KindEquals) ParseError(u"ParseVariable", SExpectedChar, u"=");
  Token = Next();
  ITavoValue Result;
  if (Token->GetDataType() == KindOpen) {
    PutBack(Token);
    Result = FunCallValue();
  } else {
    Result = Token->Value();
  }
  if (OnParseVariable) OnParseVariable(this, Name, Result);
  return Result;
}

String TTavoClipsParser::ParseFullName(String& Module) {
  IStreamToken Token = Next();
  if (Token->GetDataType() != dtAtom) ParseError(u"ParseFullName", SMissingName);
  const String& Text = Token->GetText();
  size_t Separator = Text.find(u"::");
  if (Separator == String::npos) {
    Module.clear();
    return Text;
  }
  Module = Text.substr(0, Separator);
  if (FOwner && (!FOwner->GetCurrentModule() || FOwner->GetCurrentModule()->GetName() != Module) &&
      FOwner->GetModules().IndexOf(Module) < 0)
    ParseError(u"ParseFullName", SNoSuchModule, Module);
  return Text.substr(Separator + 2);
}

// Facts.

IFact TTavoClipsParser::ParseFact() {
  IStreamToken Open = Next();
  IStreamToken Name = Next();
  if (Open->GetDataType() != KindOpen || Name->GetDataType() != dtAtom) ParseError(u"ParseFact", SExpectedAtom);
  IFactTemplate Template;
  if (FExplicitCreateTemplates) {
    Template = FOwner ? FOwner->FindFactTemplate(Name->GetText()) : nullptr;
    if (!Template) ParseError(u"ParseFact", SUnknownFactTemplate, Name->GetText());
  } else {
    if (!FOwner) ParseError(u"ParseFact", SUnknownEngine);
    Template = FOwner->CreateFactTemplate(Name->GetText());
  }
  IFact Fact = Template->NewFact();
  IStreamToken Token = Next();
  while (Token->GetDataType() != KindClose && Token->GetDataType() != KindEOF) {
    String SlotName;
    ParseFactSlot(Fact, SlotName);
    Token = Stream().GetCurrentToken();
    if (Template->IsOrdered()) break;
  }
  if (Token->GetDataType() != KindClose) ParseError(u"ParseFact", SExpectedChar, u")");
  if (OnParseFact) OnParseFact(this, Fact);
  return Fact;
}

void TTavoClipsParser::ParseFactSlot(const IFact& Fact, String& Name) {
  const IFactTemplate& Template = Fact->GetTemplate();
  IStreamToken Token = Stream().GetCurrentToken();
  if (Template->IsOrdered()) {
    Name = SDefaultSlotName;
    PutBack(Token);
  } else {
    if (Token->GetDataType() != KindOpen) ParseError(u"ParseFactSlot", SExpectedChar, u"(");
    IStreamToken SlotToken = Next();
    if (SlotToken->GetDataType() != dtAtom) ParseError(u"ParseFactSlot", SBadSlotName, SlotToken->ToString());
    Name = SlotToken->GetText();
  }
  const IFactSlot& Slot = Template->GetSlot(Name);
  Fact->SetValue(Name, ParseValue(Slot));
  if (Next()->GetDataType() != KindClose) ParseError(u"ParseFactSlot", SExpectedChar, u")");
  if (!Template->IsOrdered()) Next();
}

bool TTavoClipsParser::LoadFacts() {
  if (!FOwner) return false;
  for (IStreamToken Token = Next(); Token->GetDataType() != KindEOF; Token = Next()) {
    PutBack(Token);
    FOwner->Assert(ParseFact(), false);
  }
  return true;
}

// Constructs.

IInterpretedFunction TTavoClipsParser::ParseFunction() {
  String Name, Comment;
  IStreamToken Token =
      ParseHeader(Name, Comment, true, u"ParseFunction", SExpectedDefFunction, u"deffunction");
  IInterpretedFunction Function = Make<TInterpretedFunction>(Name);
  Function->SetComment(Comment);
  if (Token->GetDataType() != KindOpen) ParseError(u"ParseFunction", SExpectedChar, u"(");
  for (Token = Next(); Token->GetDataType() == dtVariable || Token->GetDataType() == dtMultiVariable;
       Token = Next())
    Function->AddArgument(Token->GetText(), TTavoType(Token->GetDataType()));
  if (Token->GetDataType() != KindClose) ParseError(u"ParseFunction", SExpectedChar, u")");
  Token = Next();
  if (Token->GetDataType() == dtString) {
    Function->SetComment(Token->GetText());
    Token = Next();
  }
  while (Token->GetDataType() != KindClose) {
    if (Token->GetDataType() == KindOpen) {
      PutBack(Token);
      Function->AddStatement(ParseFunCall());
    } else if (IsValueToken(Token)) {
      Function->AddStatement(Token->Value());
    } else {
      ParseError(u"ParseFunction", SUnexpectedCharacter, KindText(Token->GetDataType()));
    }
    Token = Next();
  }
  if (OnParseFunction) OnParseFunction(this, Function);
  return Function;
}

void TTavoClipsParser::ParseGlobalVariables() {
  IStreamToken Open = Next();
  IStreamToken Word = Next();
  if (Open->GetDataType() != KindOpen || Word->GetText() != u"defglobal")
    ParseError(u"ParseGlobalVariables", SExpectedDefGlobal);
  for (IStreamToken Token = Next(); Token->GetDataType() != KindClose; Token = Next()) {
    PutBack(Token);
    String Name;
    ITavoValue Value = ParseVariable(Name);
    if (FOwner) FOwner->GetGlobalVariables()->AddOrSetValue(Name, Value);
  }
}

// Definition constructs.

TTavoContext* TTavoClipsParser::GlobalContext() const { return FOwner ? FOwner->GetContext() : nullptr; }

namespace {

IReasoner* ReasonerOf(TInferenceEngine* Engine) { return Engine; }

}  // namespace

IFactTemplate TTavoClipsParser::ParseFactTemplate() {
  const StringView Where = u"ParseFactTemplate";
  String Name, Module, Comment;
  IStreamToken Token = ParseHeader(Name, Module, Comment, true, Where, SExpectedDefTemplate, u"deftemplate");
  String ParentName;
  ITavoDefinedType IsA;
  if (Token->GetDataType() == dtAtom) {
    if (Token->GetText() == u"extends") {
      IStreamToken Parent = Next();
      if (Parent->GetDataType() != dtAtom) ParseError(Where, SMissingParentTemplateName);
      ParentName = Parent->GetText();
    } else if (Token->GetText() == u"is-a") {
      IStreamToken TypeName = Next();
      if (TypeName->GetDataType() != dtAtom) ParseError(Where, SMissingIsaTypeName);
      IsA = FOwner ? FOwner->FindDefinedType(TypeName->GetText()) : nullptr;
      if (!IsA) ParseError(Where, SUnknownTypeName, TypeName->GetText());
    } else {
      ParseError(Where, SExpectedExtends);
    }
    Token = Next();
  }
  // An unknown parent is no error: the template then has none.
  IFactTemplate Parent = !ParentName.empty() && FOwner ? FOwner->FindFactTemplate(ParentName) : nullptr;
  IFactTemplate Template;
  if (Parent) {
    Template = Make<TFactTemplate>(FOwner, Parent, Comment, Name);
  } else {
    Template = Make<TFactTemplate>(FOwner, Name);
    Template->SetComment(Comment);
  }
  if (IsA) {
    // An ordered template of the type: no slot definitions follow.
    Template->AddMultiSlot(SDefaultSlotName, FCNilList)->SetExtendedTypeInfo(IsA);
  } else {
    while (Token->GetDataType() == KindOpen) {
      PutBack(Token);
      Template->AddSlot(ParseFactTemplateSlot());
      Token = Next();
    }
  }
  if (Token->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  if (OnParseFactTemplate) OnParseFactTemplate(this, Template);
  return Template;
}

ITavoDefinedType TTavoClipsParser::ImplicitType(const IFactSlot& Slot) {
  const ITavoDefinedType& Present = Slot->GetExtendedTypeInfo();
  if (Present && Present->GetImplicit()) return Present;
  // A named type is never changed: the slot gets a copy of its own.
  ITavoDefinedType Type = Make<TTavoDefinedType>(ReasonerOf(FOwner));
  if (Present) Type->Assign(Present.Get());
  Slot->SetExtendedTypeInfo(Type);
  Type->SetImplicit(true);
  return Type;
}

IFactSlot TTavoClipsParser::ParseFactTemplateSlot() {
  const StringView Where = u"ParseFactTemplateSlot";
  if (Next()->GetDataType() != KindOpen) ParseError(Where, SExpectedChar, u"(");
  IStreamToken Kind = Next();
  const String& Word = Kind->GetText();
  if (Kind->GetDataType() != dtAtom || (Word != u"slot" && Word != u"field" && Word != u"multislot"))
    ParseError(Where, SInvalidSlotType, Kind->ToString());
  const bool Multi = Word == u"multislot";
  TTavoTypes Types = Multi ? TavoSlotTypes + TavoMultiSlotTypes : TavoSlotTypes;
  IStreamToken NameToken = Next();
  if (NameToken->GetDataType() != dtAtom) ParseError(Where, SBadSlotName, NameToken->ToString());
  IFactSlot Slot = Make<TFactSlot>();
  Slot->SetName(NameToken->GetText());

  ITavoValue Default;
  bool HasDefault = false;
  IStreamToken Token = Next();
  while (Token->GetDataType() == KindOpen) {
    IStreamToken Opener = Token;
    IStreamToken Qualifier = Next();
    // This one message goes out as it stands, placeholder and all.
    if (Qualifier->GetDataType() != dtAtom) ParseError(Where, StringView(SInvalidSlotQualifier));
    const String Name = LowerCase(Qualifier->GetText());
    if (Name == u"default" || Name == u"default-dynamic") {
      ITavoValue Value = Types.Contains(dtMultiSlot) ? Make<TTavoValue>(ParseList())
                                                      : ParseValue(Types, Slot->GetExtendedTypeInfo());
      if (Name == u"default") {
        // Variables and calls of a plain default are evaluated now.
        if (Value) Value = Value->Resolve(GlobalContext());
      } else {
        Slot->SetDefaultDynamic(true);
      }
      Default = Value;
      HasDefault = true;
    } else if (Name == u"type") {
      ITavoDefinedType Named;
      Types = ParseSlotTypes(Named);
      if (Multi) Types = Types + TavoMultiSlotTypes;
      if (Named) Slot->SetExtendedTypeInfo(Named);
    } else if (Name == u"range" || Name == u"cardinality" || Name == u"units" || Name.starts_with(u"allowed-")) {
      // The fuzzy check reads the slot's stored type, which is set only at
      // the end of the slot.
      if (Name != u"cardinality" && Slot->GetSlotType().Contains(dtFuzzy)) ParseError(Where, SFuzzyDefinitionError);
      ITavoDefinedType Type = ImplicitType(Slot);
      if (Name == u"units") {
        Type->SetUnits(Next()->ToString());
      } else {
        PutBack(Qualifier);
        PutBack(Opener);
        if (Name == u"range" || Name == u"cardinality")
          ParseRangeAndCardinality(Type, Name == u"cardinality", true);
        else
          ParseAllowedEnumerations(Type);
        PutBack(Stream().GetCurrentToken());
      }
    } else {
      ParseError(Where, SInvalidSlotQualifier, Qualifier->GetText());
    }
    if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
    Token = Next();
  }
  if (Token->GetDataType() != KindClose) ParseError(u"ParseFactTemplate", SExpectedChar, u")");
  Slot->SetSlotType(Types);
  if (FTypeCheck && HasDefault && Default && Default != FCNil && Default != FCNilList && !Slot->IsValid(Default)) {
    if (Default->GetDType() == dtInteger && Types.Contains(dtFloat))
      Default->SetAsFloat(Default->GetAsNumeric());
    else
      ParseError(Where, StringView(Slot->GetInvalidValueString(Default)));
  }
  if (HasDefault)
    Slot->SetSlotDefault(Default);
  else if (FTypeCheck && !Slot->IsValid(Slot->GetSlotDefault()))
    Slot->SetSlotDefault(Slot->CreateValidDefault(Types.Contains(dtList)));
  return Slot;
}

TTavoTypes TTavoClipsParser::ParseSlotTypes(ITavoDefinedType& Named) {
  const StringView Where = u"ParseSlotTypes";
  static const struct {
    const char16_t* Word;
    TTavoTypes Types;
  } Words[] = {{u"SYMBOL", {dtAtom}},
               {u"ATOM", {dtAtom}},
               {u"STRING", {dtString}},
               {u"LEXEME", {dtAtom, dtString}},
               {u"INTEGER", {dtInteger}},
               {u"FLOAT", {dtFloat}},
               {u"NUMBER", {dtInteger, dtFloat}},
               {u"CLASS", {dtClass, dtInteger}},
               {u"DESCRIPTOR", {dtDescriptor, dtInteger}},
               {u"OBJECT", {dtObject, dtInteger}},
               {u"EXTERNALADDRESS", {dtExternalAddress, dtInteger}},
               {u"FUZZY", {dtFuzzy}},
               {u"FACTID", {dtFactId, dtInteger}},
               {u"FACT", {dtFact}}};
  TTavoTypes Types;
  Named = nullptr;
  IStreamToken Token = Next();
  while (Token->GetDataType() != KindClose) {
    const int Kind = Token->GetDataType();
    if (Kind != dtAtom && Kind != dtVariable) ParseError(Where, SInvalidSlotType, Token->ToString());
    bool Known = false;
    if (Kind == dtVariable && Token->ToString() == u"?VARIABLE") {
      Types = TavoSlotTypes;
      Known = true;
    }
    for (const auto& Entry : Words)
      if (!Known && Token->GetText() == Entry.Word && Kind == dtAtom) {
        Types = Types + Entry.Types;
        Known = true;
      }
    if (!Known) {
      ITavoValue TypeName = Token->Value(GlobalContext());
      ITavoDefinedType Type = FOwner && TypeName ? FOwner->FindDefinedType(TypeName->GetAsString()) : nullptr;
      if (!Type) ParseError(Where, SInvalidSlotType, Token->ToString());
      if (Named) ParseError(Where, SNoMultiTypeInheritance);
      Named = Type;
      Types = Types + Type->GetBaseTypes();
    }
    Token = Next();
  }
  PutBack(Token);
  if (Types.Contains(dtFuzzy) && Types != TTavoTypes{dtFuzzy}) ParseError(Where, SCannotMixFuzzy);
  return Types;
}

void TTavoClipsParser::ParseRangeAndCardinality(const ITavoDefinedType& Type, bool IsCardinality,
                                                bool AllowVariables, const IFuzzyVariable& Variable) {
  const StringView Where = u"ParseDefinedType";
  if (!Type) IsCardinality = false;
  if (Next()->GetDataType() != KindOpen) ParseError(Where, SExpectedChar, u"(");
  IStreamToken Word = Next();
  if (Word->GetDataType() != dtAtom || (!IsCardinality && Word->GetText() != u"range"))
    ParseError(Where, SMissingRange);
  if (IsCardinality)
    Type->SetCardinalityLimited(true);
  else if (Type)
    Type->SetRangeLimited(true);
  IStreamToken First = Next();
  const int Kind = First->GetDataType();
  if (Kind != dtInteger && Kind != dtVariable && Kind != dtFloat && Kind != KindOpen)
    ParseError(Where, SExpectedIntVarFun, IsCardinality ? u"cardinality" : u"range");
  auto TakeBound = [&](const IStreamToken& Token, bool Minimum) {
    ITavoValue Value;
    switch (Token->GetDataType()) {
      case dtInteger:
      case dtFloat:
        Value = Token->Value();
        break;
      case KindOpen:
        PutBack(Token);
        Value = ParseNExecuteFunCall();
        break;
      case dtVariable: {
        if (!AllowVariables) ParseError(Where, SExpectedValue);
        // "?VARIABLE" leaves the bound open.
        if (Token->ToString() == u"?VARIABLE") return;
        // Any other variable bounds the range, even in a cardinality.
        ITavoValue Bound = Token->Value(GlobalContext());
        if (Type) {
          if (Minimum)
            Type->SetMinRange(Bound->GetAsNumeric());
          else
            Type->SetMaxRange(Bound->GetAsNumeric());
        } else if (Variable) {
          if (Minimum)
            Variable->SetMinimum(Bound->GetAsNumeric());
          else
            Variable->SetMaximum(Bound->GetAsNumeric());
        }
        return;
      }
      default:
        // Only the first bound is checked: any other second token is passed by.
        return;
    }
    if (!Value) Value = FCNil;
    if (IsCardinality) {
      if (Minimum)
        Type->SetMinCardinality(Value->GetAsInteger());
      else
        Type->SetMaxCardinality(Value->GetAsInteger());
    } else if (Type) {
      if (Minimum)
        Type->SetMinRange(Value->GetAsNumeric());
      else
        Type->SetMaxRange(Value->GetAsNumeric());
    } else if (Variable) {
      if (Minimum)
        Variable->SetMinimum(Value->GetAsNumeric());
      else
        Variable->SetMaximum(Value->GetAsNumeric());
    }
  };
  TakeBound(First, true);
  TakeBound(Next(), false);
  if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
}

IFuzzyVariable TTavoClipsParser::ParseFuzzyVariable() {
  const StringView Where = u"ParseFuzzyVariable";
  IFuzzyVariable Variable = Make<TTavoFuzzyVariable>();
  if (FOwner) Variable->SetParser(static_cast<IFuzzyParser*>(FOwner));
  IStreamToken Token = Next();
  while (Token->GetDataType() != KindClose) {
    IStreamToken Word = Next();
    if (Token->GetDataType() != KindOpen || Word->GetDataType() != dtAtom)
      ParseError(Where, SExpectedKeyword, u"range, units, or values");
    const String& Text = Word->GetText();
    if (Text == u"range") {
      PutBack(Word);
      PutBack(Token);
      ParseRangeAndCardinality(nullptr, false, false, Variable);
    } else if (Text == u"units") {
      Variable->SetUnits(Next()->ToString());
      if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
    } else if (Text == u"values") {
      Token = Next();
      while (Token->GetDataType() != KindClose) {
        PutBack(Token);
        IFuzzySet Term = ParseFuzzySet(Variable);
        Variable->AddFuzzySet(Term);
        Token = Next();
      }
    } else {
      ParseError(Where, SExpectedKeyword, u"range, units, or values");
    }
    Token = Next();
  }
  PutBack(Token);
  if (OnParseFuzzyVariable) OnParseFuzzyVariable(this, Variable);
  return Variable;
}

ITavoValue TTavoClipsParser::ParseFuzzyValue(const IFuzzyVariable& Variable, StringView Where, StringView Missing) {
  ITavoValue Value = ParseValue();
  if (Value) Value = Value->Resolve(GlobalContext());
  if (Value && Value->GetDType() == dtFuzzy) return Value;
  if (!Variable || !FOwner) ParseError(Where, Missing);
  return FOwner->EvalFuzzyExpression(Variable, Value, nullptr);
}

IFuzzySet TTavoClipsParser::ParseFuzzySet(const IFuzzyVariable& Variable) {
  const StringView Where = u"ParseFuzzySet";
  String Name, Comment;
  // The header reads one token past the name: the expression starts there.
  PutBack(ParseHeader(Name, Comment, false, Where, SExpectedFuzzySet, u"term"));
  ITavoValue Value = ParseFuzzyValue(Variable, Where, SUndefinedFuzzyVariable);
  if (!Value || Value->GetDType() != dtFuzzy) ParseError(Where, SInvalidFuzzyExpression, Value ? Value->ToString() : String());
  // A term is a set of its own, never one shared with another term.
  IFuzzySet Set = Value->GetAsFuzzy();
  if (Set->IsTerm() || Set->GetVariable()) Set = Set->CloneSet();
  Set->SetName(Name);
  if (FOwner) Set->SetParser(static_cast<IFuzzyParser*>(FOwner));
  if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  if (OnParseFuzzySet) OnParseFuzzySet(this, Set);
  return Set;
}

void TTavoClipsParser::ParseAllowedEnumerations(const ITavoDefinedType& Type) {
  const StringView Where = u"ParseDefinedType";
  enum TConversion { cvNone, cvLexeme, cvString, cvAtom, cvNumber, cvInteger, cvFloat };
  static const struct {
    const char16_t* Word;
    TValueConstraints Mask;
    TConversion Conversion;
  } Words[] = {{u"allowed-values", {vcAtom, vcString, vcInteger, vcFloat}, cvNone},
               {u"allowed-lexemes", {vcAtom, vcString}, cvLexeme},
               {u"allowed-strings", {vcString}, cvString},
               {u"allowed-symbols", {vcAtom}, cvAtom},
               {u"allowed-numbers", {vcInteger, vcFloat}, cvNumber},
               {u"allowed-integers", {vcInteger}, cvInteger},
               {u"allowed-floats", {vcFloat}, cvFloat}};
  if (Next()->GetDataType() != KindOpen) ParseError(Where, SExpectedChar, u"(");
  IStreamToken Word = Next();
  if (Word->GetDataType() != dtAtom) ParseError(Where, SMissingAllowedEnumeration, Word->ToString());
  const auto* Entry = std::find_if(std::begin(Words), std::end(Words),
                                   [&](const auto& Item) { return Word->GetText() == Item.Word; });
  if (Entry == std::end(Words)) ParseError(Where, SMissingAllowedEnumeration, Word->ToString());
  Type->SetConstraints(Type->GetConstraints() + Entry->Mask);
  for (IStreamToken Token = Next(); Token->GetDataType() != KindClose; Token = Next()) {
    if (Token->GetDataType() == KindEOF) ParseError(Where, SExpectedChar, u")");
    ITavoValue Value;
    if (Token->GetDataType() == KindOpen) {
      PutBack(Token);
      Value = ParseNExecuteFunCall();
    } else {
      Value = Token->Value(GlobalContext());
    }
    if (!Value) Value = FCNil;
    // Converted into a new value: a call may give a shared constant.
    const TTavoType Kind = Value->GetDType();
    switch (Entry->Conversion) {
      case cvNone:
        break;
      case cvLexeme:
        if (Kind != dtAtom && Kind != dtString) Value = Make<TTavoValue>(Value->GetAsString(), dtString);
        break;
      case cvString:
        if (Kind != dtString) Value = Make<TTavoValue>(Value->GetAsString(), dtString);
        break;
      case cvAtom:
        if (Kind != dtAtom) Value = Make<TTavoValue>(Value->GetAsString(), dtAtom);
        break;
      case cvNumber:
        if (Kind != dtInteger && Kind != dtFloat) Value = Make<TTavoValue>(Value->GetAsInteger(), dtInteger);
        break;
      case cvInteger:
        if (Kind != dtInteger) Value = Make<TTavoValue>(Value->GetAsInteger(), dtInteger);
        break;
      case cvFloat:
        if (Kind != dtFloat) Value = Make<TTavoValue>(Value->GetAsNumeric());
        break;
    }
    Type->AddConstraint(Value);
  }
}

ITavoDefinedType TTavoClipsParser::ParseDefinedType() {
  const StringView Where = u"ParseDefinedType";
  String Name, Module, Comment;
  IStreamToken Token = ParseHeader(Name, Module, Comment, true, Where, SExpectedDefType, u"deftype");
  ITavoDefinedType Type = Make<TTavoDefinedType>(ReasonerOf(FOwner));
  Type->SetName(Name);
  Type->SetComment(Comment);
  if (Token->GetText() != u"extends") ParseError(Where, SExpectedKeyword, u"extends");
  if (Next()->GetDataType() != KindOpen) ParseError(Where, SExpectedChar, u"(");
  if (Next()->GetText() != u"type") ParseError(Where, SExpectedKeyword, u"type");
  ITavoDefinedType Ancestor;
  Type->SetBaseTypes(ParseSlotTypes(Ancestor));
  if (Ancestor) {
    TTavoTypes Own = Type->GetBaseTypes();
    Type->Assign(Ancestor.Get());
    Type->SetAncestor(Ancestor);
    Type->SetBaseTypes(Own + Type->GetBaseTypes());
    // The assignment took the ancestor's name and comment.
    Type->SetName(Name);
    Type->SetComment(Comment);
  }
  if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  if (Type->GetBaseTypes().Contains(dtFuzzy)) {
    // A fuzzy type describes its variable: universe, units and terms.
    IFuzzyVariable Variable = ParseFuzzyVariable();
    Variable->SetName(Name);
    Type->SetFuzzyType(Variable);
    Type->SetUnits(Variable->GetUnits());
    Token = Next();
    if (Token->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
    if (OnParseDefinedType) OnParseDefinedType(this, Type);
    return Type;
  }
  Token = Next();
  while (Token->GetDataType() == KindOpen) {
    IStreamToken Word = Next();
    const String& Text = Word->GetText();
    if (Text == u"units") {
      Type->SetUnits(Next()->ToString());
      if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
    } else {
      PutBack(Word);
      PutBack(Token);
      if (Text == u"range" || Text == u"cardinality")
        ParseRangeAndCardinality(Type, Text == u"cardinality", true);
      else
        ParseAllowedEnumerations(Type);
    }
    Token = Next();
  }
  if (Token->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  if (OnParseDefinedType) OnParseDefinedType(this, Type);
  return Type;
}

TFactSet* TTavoClipsParser::ParseFactSet() {
  const StringView Where = u"ParseFactSet";
  String Name, Module, Comment;
  IStreamToken Token = ParseHeader(Name, Module, Comment, true, Where, SExpectedDeffacts, u"deffacts");
  // Freed unless the whole construct reads.
  std::unique_ptr<TFactSet> FactSet(new TFactSet(FOwner));
  FactSet->SetEngine(nullptr);
  FactSet->SetFactSetName(Name);
  FactSet->SetComment(Comment);
  FactSet->SetModule(Module);
  while (Token->GetDataType() == KindOpen) {
    PutBack(Token);
    FactSet->AddFact(ParseFact());
    Token = Next();
  }
  if (Token->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  if (OnParseFactSet) OnParseFactSet(this, FactSet.get());
  return FactSet.release();
}

IModule TTavoClipsParser::ParseModule() {
  const StringView Where = u"ParseModule";
  String Name, Comment;
  IStreamToken Token = ParseHeader(Name, Comment, true, Where, SExpectedDefModule, u"defmodule");
  IModule Module = Make<TModule>(FOwner, Name == SMainModuleName);
  Module->SetName(Name);
  Module->SetComment(Comment);
  while (Token->GetDataType() == KindOpen) {
    IStreamToken Word = Next();
    const bool Export = Word->GetText() == u"export";
    if (!Export && Word->GetText() != u"import") ParseError(Where, SInvalidModulekeyword, Word->GetText());
    IModuleImport Target;
    bool NewImport = false;
    if (Export) {
      Target = Module->GetExportItems();
    } else {
      IStreamToken From = Next();
      if (From->GetDataType() != dtAtom || !FOwner || FOwner->GetModules().IndexOf(From->GetText()) < 0)
        ParseError(Where, SModuleNotExist, From->GetText());
      Target = Module->FindImport(From->GetText());
      if (!Target) {
        Target = Make<TModuleImportExport>(Module.Get(), From->GetText());
        NewImport = true;
      }
    }
    IStreamToken Item = Next();
    const String& Text = Item->GetText();
    const int Kind = Item->GetDataType();
    if ((Kind != dtAtom && Kind != dtVariable) ||
        (Text != u"ALL" && Text != u"NONE" && Text != u"deftype" && Text != u"deftemplate"))
      ParseError(Where, SMissingModuleExportID, Item->ToString());
    if (Kind == dtVariable) {
      if (Text != u"ALL" && Text != u"NONE") ParseError(Where, SUnknownVariable, Text);
      const TSharedConstructs Mode = Text == u"ALL" ? mieAll : mieNone;
      Target->SetDefinedTypesShared(Mode);
      Target->SetFactTemplatesShared(Mode);
    } else {
      // "ALL" and "NONE" as a word are no shorthand: they name templates.
      const bool DefinedTypes = Text == u"deftype";
      IStreamToken First = Next();
      const int FirstKind = First->GetDataType();
      if (FirstKind != dtAtom && FirstKind != dtVariable) ParseError(Where, SMissingModuleExportID, First->ToString());
      if (FirstKind == dtVariable) {
        if (First->GetText() != u"ALL" && First->GetText() != u"NONE")
          ParseError(Where, SMissingModuleExportID, First->ToString());
        const TSharedConstructs Mode = First->GetText() == u"ALL" ? mieAll : mieNone;
        if (DefinedTypes)
          Target->SetDefinedTypesShared(Mode);
        else
          Target->SetFactTemplatesShared(Mode);
      } else {
        PutBack(First);
        ParseNameList(*Target, DefinedTypes);
      }
    }
    if (NewImport) Module->AddImport(Target);
    if (Next()->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
    Token = Next();
  }
  if (Token->GetDataType() != KindClose) ParseError(Where, SExpectedChar, u")");
  if (OnParseModule) OnParseModule(this, Module);
  return Module;
}

void TTavoClipsParser::ParseNameList(TModuleImportExport& Target, bool DefinedTypes) {
  IStreamToken Token = Next();
  for (; Token->GetDataType() != KindClose && Token->GetDataType() != KindEOF; Token = Next()) {
    if (Token->GetDataType() != dtAtom && Token->GetDataType() != dtString)
      ParseError(u"ParseModule", SBadNameList, Token->ToString());
    if (DefinedTypes)
      Target.AddDefinedType(Token->GetText());
    else
      Target.AddFactTemplate(Token->GetText());
  }
  PutBack(Token);
}

// Printers

String TTavoClipsParser::PrettyPrint(const TFactSet& FactSet) { return tavo::PrettyPrint(FactSet, FPrintModuleQualifiers); }
String TTavoClipsParser::PrettyPrint(const IFact& Fact) { return tavo::PrettyPrint(Fact); }
String TTavoClipsParser::PrettyPrint(const IFact& Fact, const String& SlotName) {
  return PrettyPrintFactSlot(Fact, SlotName);
}
String TTavoClipsParser::PrettyPrint(const IFact& Fact, const String& SlotName, const ITavoValue& Value) {
  return PrettyPrintFactSlot(Fact, SlotName, Value);
}
String TTavoClipsParser::PrettyPrint(const IFact& Fact, const String& SlotName, const String& ValueText) {
  return PrettyPrintFactSlot(Fact, SlotName, ValueText);
}
String TTavoClipsParser::PrettyPrint(const IFactSlot& Slot) { return tavo::PrettyPrint(Slot); }
String TTavoClipsParser::PrettyPrint(const IFactTemplate& Template) {
  return tavo::PrettyPrint(Template, FPrintModuleQualifiers);
}
String TTavoClipsParser::PrettyPrint(const IFunCall& Call, bool SpecialForm) {
  return tavo::PrettyPrint(Call, SpecialForm);
}
String TTavoClipsParser::PrettyPrint(const IFuzzySet& Set, bool AsTerm) { return tavo::PrettyPrint(Set, AsTerm); }
String TTavoClipsParser::PrettyPrint(const IFuzzyVariable& Variable) { return tavo::PrettyPrint(Variable); }
String TTavoClipsParser::PrettyPrint(const IModule& Module) { return tavo::PrettyPrint(Module); }
String TTavoClipsParser::PrettyPrint(const TRule& Rule) { return tavo::PrettyPrint(Rule, FPrintModuleQualifiers); }
String TTavoClipsParser::PrettyPrint(const TRule& Rule, TRuleConstruct Half) { return tavo::PrettyPrint(Rule, Half); }
String TTavoClipsParser::PrettyPrint(const TTavoPattern& Pattern) {
  return tavo::PrettyPrint(Pattern, dynamic_cast<IRuleEngine*>(FOwner));
}
String TTavoClipsParser::PrettyPrint(const String& Name, const ITavoValue& Value) {
  return PrettyPrintVariable(Name, Value);
}
String TTavoClipsParser::PrettyPrint(const ISingletonsVector& Singletons) { return tavo::PrettyPrint(Singletons); }
String TTavoClipsParser::PrettyPrint(const IUserFunction& Function) { return tavo::PrettyPrint(Function); }
String TTavoClipsParser::PrettyPrint(const IInterpretedFunction& Function) { return tavo::PrettyPrint(Function); }
String TTavoClipsParser::PrettyPrint(const ITavoDefinedType& Type) {
  return tavo::PrettyPrint(Type, FPrintModuleQualifiers);
}
String TTavoClipsParser::PrettyPrint(const TValueHashTable& Globals) { return tavo::PrettyPrint(Globals); }
String TTavoClipsParser::PrettyPrint(TParsedType Type) { return tavo::PrettyPrint(Type); }

}  // namespace tavo
