#include "core/TavoFunctions.h"

#include <algorithm>
#include <cmath>

namespace tavo {

// TBaseReasonerList

IReasoner* TBaseReasonerList::Get(int Index) const {
  if (Index < 0 || Index >= Count()) throw EMekException(Format(SListIndexError, Index));
  return FItems[size_t(Index)];
}

int TBaseReasonerList::IndexOf(const IReasoner* Reasoner) const {
  auto It = std::find(FItems.begin(), FItems.end(), Reasoner);
  return It == FItems.end() ? -1 : int(It - FItems.begin());
}

int TBaseReasonerList::Add(IReasoner* Reasoner) {
  if (int Index = IndexOf(Reasoner); Index >= 0) return Index;
  FItems.push_back(Reasoner);
  if (FOwner) FOwner->ReasonerNotification(Reasoner, raAdded);
  return Count() - 1;
}

void TBaseReasonerList::Delete(int Index) {
  IReasoner* Reasoner = Get(Index);
  FItems.erase(FItems.begin() + Index);
  if (FOwner) FOwner->ReasonerNotification(Reasoner, raRemoved);
}

void TBaseReasonerList::Clear() {
  while (!FItems.empty()) Delete(Count() - 1);
}

// TTavoUserFunction

TTavoUserFunction::~TTavoUserFunction() = default;

void TTavoUserFunction::AfterConstruction() {
  if (!FPendingName.empty()) SetFunctionName(std::exchange(FPendingName, String()));
  InitMetaData();
}

void TTavoUserFunction::SetFunctionName(const String& Value) {
  if (Value == FFunctionName) return;
  IUserFunction Self(this);
  for (int I = 0; I < FReasoners.Count(); ++I) FReasoners.Get(I)->RemoveUserFunction(Self);
  FFunctionName = Value;
  for (int I = 0; I < FReasoners.Count(); ++I) FReasoners.Get(I)->AddUserFunction(Self);
}

void TTavoUserFunction::SetMetaData(const String& Name, const String& Comment, const String& ArgumentString,
                                    int Min, int Max) {
  SetFunctionName(Name);
  FComment = Format(CommentFormat, Comment);
  FArgumentString = ArgumentString;
  SetMinArgumentCount(Min);
  SetMaxArgumentCount(Max);
}

void TTavoUserFunction::SetMinArgumentCount(int Value) {
  if (Value == FMinArgumentCount) return;
  FMinArgumentCount = Value;
  if (FMaxArgumentCount < Value) FMaxArgumentCount = Value;
}

void TTavoUserFunction::SetMaxArgumentCount(int Value) {
  if (Value == FMaxArgumentCount) return;
  FMaxArgumentCount = Value;
  if (FMinArgumentCount > Value) FMinArgumentCount = Value;
}

void TTavoUserFunction::DeleteReasoner(const IReasoner* Reasoner) {
  int Index = FReasoners.IndexOf(Reasoner);
  if (Index >= 0) FReasoners.Delete(Index);
}

void TTavoUserFunction::ReasonerNotification(IReasoner* Reasoner, TReasonerAction Action) {
  IUserFunction Self(this);
  if (Action == raAdded)
    Reasoner->AddUserFunction(Self);
  else
    Reasoner->RemoveUserFunction(Self);
}

void TTavoUserFunction::Call(const IFunCall& FunCall, TObject* Context, ITavoValue& Result) {
  TTavoContext* Scope = dynamic_cast<TTavoContext*>(Context);
  if (Context && !Scope) throw EMekException(SIntfCastError);
  CallChecked(*FunCall, Scope, Result);
}

void TTavoUserFunction::CallChecked(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  int Count = FunCall.GetArgumentCount();
  if (Count < FMinArgumentCount) throw ETavoException(Format(STooFewArgs, FFunctionName));
  if (Count > FMaxArgumentCount) throw ETavoException(Format(STooManyArgs, FFunctionName));
  Call(FunCall, Context, Result);
}

void TTavoUserFunction::Call(TFunctionCall&, TTavoContext*, ITavoValue& Result) { Result.Reset(); }

bool TTavoUserFunction::CallNumeric(const TFunctionCall&, TTavoContext*, TNumber&) { return false; }

bool TTavoUserFunction::CallTruth(const TFunctionCall&, TTavoContext*, bool&) { return false; }

void TTavoUserFunction::Assign(const TPersistent* Source) {
  auto* Function = dynamic_cast<const TTavoUserFunction*>(Source);
  if (!Function) {
    TPersistent::Assign(Source);
    return;
  }
  SetFunctionName(Function->FFunctionName);
  FComment = Function->FComment;
  FArgumentString = Function->FArgumentString;
  FMinArgumentCount = Function->FMinArgumentCount;
  FMaxArgumentCount = Function->FMaxArgumentCount;
}

String TTavoUserFunction::ToString(IReasoner*) const {
  // The help text of a function: its comment and its syntax line.
  String Result = u";; deffunction " + FFunctionName;
  if (!FComment.empty()) Result += u"\r\n;; " + FComment;
  return Result + u"\r\n;; " +
         Format(SyntaxFormat, Format(CLIPSSyntaxFormat, FFunctionName + FArgumentString));
}

// TFunctionCall

int TFunctionCall::AddArgument(const ITavoValue& Value) { return FArguments.Add(Value); }

int TFunctionCall::AddArgument(double Value, TTavoType Type) {
  if (Type == dtInteger) return FArguments.Add(Make<TTavoValue>(int32_t(std::lround(Value)), dtInteger));
  if (Type == dtFloat) return FArguments.Add(Make<TTavoValue>(Value));
  throw ETavoException(Format(SNotCorrectType, u"Float", Format(u"%.4f", Value), GetTavoTypeName(Type)));
}

int TFunctionCall::AddArgument(int32_t Value, TTavoType Type) {
  if (Type == dtInteger) return FArguments.Add(Make<TTavoValue>(Value, dtInteger));
  if (Type == dtFloat) return FArguments.Add(Make<TTavoValue>(double(Value)));
  throw ETavoException(Format(SNotCorrectType, u"Integer", IntToStr(Value), GetTavoTypeName(Type)));
}

int TFunctionCall::AddArgument(const String& Value, TTavoType Type) {
  if (!TavoStringTypes.Contains(Type))
    throw ETavoException(Format(SNotCorrectType, u"String", Value, GetTavoTypeName(Type)));
  return FArguments.Add(Make<TTavoValue>(Value, Type));
}

void TFunctionCall::SetUserFunction(const IUserFunction& Function) {
  FUserFunction = Function;
  FName = InternName(Function ? StringView(Function->GetFunctionName()) : StringView());
}

namespace {

void UnbindValue(const ITavoValue& Value) {
  if (Value && Value->GetDType() == dtFunCall)
    if (auto* Call = static_cast<TFunctionCall*>(Value->GetValue().VInterface)) Call->Unbind();
}

}  // namespace

void TFunctionCall::Unbind() {
  FUserFunction.Reset();
  for (const ITavoValue& Argument : FArguments) UnbindValue(Argument);
}

void TInterpretedFunction::UnbindCalls() {
  for (const ITavoValue& Statement : FStatements) UnbindValue(Statement);
}

bool TFunctionCall::Equals(const TCloneableObject* Other) const {
  auto* Call = dynamic_cast<const TFunctionCall*>(Other);
  if (!Call) return false;
  if (Call == this) return true;
  if (Call->FName.Get() != FName.Get() || Call->GetArgumentCount() != GetArgumentCount()) return false;
  for (int I = 0; I < GetArgumentCount(); ++I) {
    const ITavoValue& Mine = FArguments.Get(I);
    const ITavoValue& Theirs = Call->FArguments.Get(I);
    if (Mine != Theirs && (!Mine || !Mine->Equals(Theirs))) return false;
  }
  return true;
}

int32_t TFunctionCall::GetHashCode() const {
  uint32_t Hash = uint32_t(FName ? FName.Get()->Hash() : CalculateHash(StringView()));
  for (const ITavoValue& Argument : FArguments)
    if (Argument) Hash += uint32_t(Argument->GetHashCode());
  return int32_t(Hash);
}

const String& TFunctionCall::GetComment() const {
  static const String Empty;
  return FComment ? *FComment : Empty;
}

void TFunctionCall::SetComment(const String& Value) {
  if (Value.empty())
    FComment.reset();
  else
    FComment = std::make_unique<String>(Value);
}

String TFunctionCall::ToString() const { return FunCallToString(*this); }

void TFunctionCall::Assign(const TPersistent* Source) {
  auto* Call = dynamic_cast<const TFunctionCall*>(Source);
  if (!Call) {
    TCloneableObject::Assign(Source);
    return;
  }
  if (Call == this) return;
  FName = Call->FName;
  FComment = Call->FComment ? std::make_unique<String>(*Call->FComment) : nullptr;
  SetTag(Call->GetTag());
  TInterfaceList<TTavoValue> Arguments;
  for (const ITavoValue& Argument : Call->FArguments) Arguments.Add(Argument ? Argument->CloneValue() : nullptr);
  FArguments = std::move(Arguments);
}

ICloneableObject TFunctionCall::Clone() const { return CloneCall(); }

IFunCall TFunctionCall::CloneCall() const {
  IFunCall Result = Make<TFunctionCall>(FReasoner, GetName());
  Result->Assign(this);
  return Result;
}

String FunCallToString(const TFunctionCall& Call) {
  String Result;
  if (!Call.GetComment().empty()) {
    String Rest = Call.GetComment();
    size_t Start = 0;
    while (Start <= Rest.size()) {
      size_t End = Rest.find_first_of(u"\r\n", Start);
      String Line = Trim(StringView(Rest).substr(Start, End == String::npos ? String::npos : End - Start));
      if (!Line.empty()) Result += (Line[0] == u';' ? Line : u"; " + Line) + u"\r\n";
      if (End == String::npos) break;
      Start = End + ((Rest[End] == u'\r' && End + 1 < Rest.size() && Rest[End + 1] == u'\n') ? 2 : 1);
    }
  }
  Result += u"(";
  Result += Call.GetName();
  for (int I = 0; I < Call.GetArgumentCount(); ++I) {
    Result += u' ';
    if (const ITavoValue& Argument = Call.GetArgument(I))
      Result += Argument->GetDType() == dtAtom && Argument->GetAsAtom().empty() ? u"nil" : Argument->GetToString();
  }
  return TrimRight(Result) + u")";
}

// TInterpretedFunction

void TInterpretedFunction::AddArgument(const String& Name, TTavoType Type) {
  static constexpr TTavoTypes Accepted{dtAtom, dtVariable, dtMultiVariable};
  if (!Accepted.Contains(Type))
    throw ETavoException(Format(SInvalidArgType, GetTavoTypeName(Type), u"dtAtom, dtVariable, dtMultiVariable"));
  FArguments.Add(Make<TTavoValue>(Name, Type));
  FLayoutReady = false;
}

void TInterpretedFunction::AddStatement(const IFunCall& Statement) {
  FStatements.Add(Make<TTavoValue>(Statement));
  FLayoutReady = false;
}

void TInterpretedFunction::AddStatement(const ITavoValue& Statement) {
  FStatements.Add(Statement);
  FLayoutReady = false;
}

int TInterpretedFunction::GetMinArgumentCount() const { return GetArgumentCount(); }

int TInterpretedFunction::GetMaxArgumentCount() const {
  int Count = GetArgumentCount();
  if (Count > 0 && FArguments.Last()->GetDType() == dtMultiVariable) return 2147483647;
  return Count;
}

void TInterpretedFunction::Assign(const TPersistent* Source) {
  TTavoUserFunction::Assign(Source);
  if (auto* Function = dynamic_cast<const TInterpretedFunction*>(Source)) {
    FArguments.Clear();
    for (const ITavoValue& Argument : Function->FArguments) FArguments.Add(Argument->CloneValue());
    FStatements.Clear();
    for (const ITavoValue& Statement : Function->FStatements) FStatements.Add(Statement->CloneValue());
    FOrder = Function->FOrder;
    FLayoutReady = false;
  }
}

}  // namespace tavo

namespace tavo {

// IReasoner

IFact IReasoner::ParseFact(const String& /*Text*/) { throw ETavoException(Format(SParseTypeError, u"facts")); }

int IReasoner::Assert(const IFact& /*Fact*/, bool /*Unconditional*/) { throw ETavoException(SUnknownEngine); }

ITavoValue IReasoner::EvalFuzzyExpression(const IFuzzyVariable& /*Variable*/, const ITavoValue& Value,
                                          TTavoContext* /*Context*/) {
  return Value;
}

}  // namespace tavo
