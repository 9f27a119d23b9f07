#include "core/TavoValue.h"

#include <cmath>
#include <cstring>
#include <limits>

#include "core/TavoContext.h"
#include "core/TavoFunctions.h"
#include "core/TavoVectors.h"

namespace tavo {

namespace {

ITavoValue MakeAtom(const char16_t* Text) { return Make<TTavoValue>(String(Text), dtAtom); }

String FloatText(double Value) { return Format(u"%.4f", Value); }

// A dtString prints in double quotes, backslashes doubled first, then a
// backslash put before each double quote.
String QuotedText(const String& Text) {
  String Result;
  Result.reserve(Text.size() + 2);
  Result += u'"';
  for (char16_t C : Text) {
    if (C == u'\\')
      Result += u"\\\\";
    else if (C == u'"')
      Result += u"\\\"";
    else
      Result += C;
  }
  Result += u'"';
  return Result;
}

}  // namespace

const ITavoValue FCTrue = MakeAtom(u"TRUE");
const ITavoValue FCFalse = MakeAtom(u"FALSE");
const ITavoValue FCEmptyString = MakeAtom(u"");
const ITavoValue FCNil = MakeAtom(u"");
const ITavoValue FCNilList = Make<TTavoValue>(Make<TValueVector>());
const ITavoValue FCCatch = MakeAtom(u"catch");
const ITavoValue FCFinally = MakeAtom(u"finally");
const ITavoValue FCExcept = MakeAtom(u"except");
const ITavoValue FCElse = MakeAtom(u"else");
const ITavoValue FCDo = MakeAtom(u"do");
const ITavoValue FCEOF = MakeAtom(u"EOF");
const ITavoValue FCThen = MakeAtom(u"then");
const ITavoValue FCPI = Make<TTavoValue>(3.141592653589793);
const ITavoValue FCZero = Make<TTavoValue>(0.0);
const ITavoValue FCPopFocus = MakeAtom(u"pop-focus");

bool IsValueConstant(const TTavoValue* Value) {
  if (!Value) return false;
  for (const ITavoValue* Constant :
       {&FCTrue, &FCFalse, &FCEmptyString, &FCNil, &FCNilList, &FCCatch, &FCFinally, &FCExcept,
        &FCElse, &FCDo, &FCEOF, &FCThen, &FCPI, &FCZero})
    if (Constant->Get() == Value) return true;
  return false;
}

bool IsValueConstant(const ITavoValue& Value) { return IsValueConstant(Value.Get()); }

int32_t TruncToInt32(double Value) {
  if (std::isnan(Value)) return 0;
  constexpr double Limit = 9223372036854775807.0;
  int64_t Whole = Value >= Limit    ? std::numeric_limits<int64_t>::max()
                  : Value <= -Limit ? std::numeric_limits<int64_t>::min()
                                    : int64_t(Value);
  return int32_t(uint32_t(uint64_t(Whole)));
}

// Construction.

TTavoValue::TTavoValue(const TClass* Class) {
  FTavoType = dtClass;
  FValue.VClass = Class;
}

TTavoValue::TTavoValue(int32_t Value, TTavoType Type) {
  if (!TavoIntegerTypes.Contains(Type)) throw ETavoException(SInvalidValueType);
  FTavoType = Type;
  FValue.VInteger = Value;
}

TTavoValue::TTavoValue(String Text, TTavoType Type) {
  if (!TavoStringTypes.Contains(Type)) throw ETavoException(SInvalidValueType);
  FTavoType = Type;
  FValue.Str = std::move(Text);
}

TTavoValue::TTavoValue(double Value) {
  FTavoType = dtFloat;
  FValue.VExtended = Value;
}

TTavoValue::TTavoValue(const ITavoValue& Source) {
  if (!Source) throw EMekException(SIntfCastError);
  CopyFromInterface(Source.Get());
}

TTavoValue::TTavoValue(TObject* Object, bool Owns) {
  if (Owns) {
    StoreOwnedObject(Object);
  } else {
    FTavoType = dtObject;
    FValue.VObject = Object;
  }
}

TTavoValue::~TTavoValue() {
  FOnChange = nullptr;
  Reset();
  FNexus.reset();
}

// Ownership.

void TTavoValue::StoreOwnedObject(TObject* Object) {
  FTavoType = dtObject;
  FValue.VObject = Object;
  // Only a component can tell the value that it went away, so only a
  // component is owned; any other object is merely referenced.
  if (TComponent* Component = dynamic_cast<TComponent*>(Object)) {
    FNexus = std::make_unique<TTavoValueNexus>(this);
    FNexus->FreeNotification(Component);
  }
}

void TTavoValue::FreeOwnedObject() {
  // Take the nexus out before freeing it: this may run inside its Notification.
  std::unique_ptr<TTavoValueNexus> Nexus = std::move(FNexus);
  TComponent* Component = dynamic_cast<TComponent*>(FValue.VObject);
  FValue.VObject = nullptr;
  FTavoType = dtNone;
  if (Component) Nexus->RemoveFreeNotification(Component);
  Nexus.reset();
  if (Component && !Component->IsDestroying()) delete Component;
}

TObject* TTavoValue::CloneOwnedObject() const {
  TObject* Object = FValue.VObject;
  if (const TComponent* Component = dynamic_cast<const TComponent*>(Object)) {
    if (TComponent* Copy = CloneComponent(Component)) return Copy;
  } else if (const TPersistent* Persistent = dynamic_cast<const TPersistent*>(Object)) {
    return ClonePersistentClass(Persistent, Persistent->ClassType()).release();
  }
  // The message carries no placeholder for the class name.
  throw ETavoException(SUncloneableValue);
}

void TTavoValue::Changing(TTavoType /*NewType*/) {
  if (FTavoType == dtObject && FNexus) {
    FreeOwnedObject();
  } else if (FTavoType == dtFunCall || FTavoType == dtFact || FTavoType == dtList ||
             FTavoType == dtSingletons || FTavoType == dtFuzzy) {
    FValue.VInterface.Reset();
    FTavoType = dtNone;
  }
}

void TTavoValue::Changed() {
  if (FOnChange) FOnChange(ITavoValue(this));
}

void TTavoValue::Reset() {
  Changing(dtNone);
  FValue.VExtended = 0;
  FValue.Str.clear();
  FTavoType = dtNone;
}

void TTavoValue::Notification(TComponent* Component, TOperation Operation) {
  if (Operation == opRemove && FTavoType == dtObject && FValue.VObject == Component) Reset();
}

// Setters.

void TTavoValue::SetText(TTavoType Type, const String& Value) {
  Changing(Type);
  FTavoType = Type;
  FValue.Str = Value;
  Changed();
}

void TTavoValue::SetInteger(TTavoType Type, int32_t Value) {
  Changing(Type);
  FTavoType = Type;
  FValue.VExtended = 0;
  FValue.VInteger = Value;
  Changed();
}

void TTavoValue::SetInterface(TTavoType Type, ICloneableObject Value) {
  if (Type != dtFunCall && Type != dtFact && Type != dtList && Type != dtSingletons &&
      Type != dtFuzzy)
    throw ETavoException(SInvalidValueType);
  Changing(Type);
  FTavoType = Type;
  FValue.VInterface = std::move(Value);
  Changed();
}

void TTavoValue::SetAsFloat(double Value) {
  Changing(dtFloat);
  FTavoType = dtFloat;
  FValue.VExtended = Value;
  Changed();
}

void TTavoValue::SetAsExternalAddress(void* Value) {
  Changing(dtExternalAddress);
  FTavoType = dtExternalAddress;
  FValue.VPointer = Value;
  Changed();
}

void TTavoValue::SetAsObject(TObject* Value) {
  Changing(dtObject);
  FTavoType = dtObject;
  FValue.VObject = Value;
  Changed();
}

void TTavoValue::SetAsOwnedObject(TObject* Value) {
  Changing(dtObject);
  StoreOwnedObject(Value);
  Changed();
}

void TTavoValue::SetAsClass(const TClass* Value) {
  Changing(dtClass);
  FTavoType = dtClass;
  FValue.VClass = Value;
  Changed();
}

// Readers.

void TTavoValue::NotCorrectType(const char16_t* Word) const {
  throw ETavoException(Format(SNotCorrectType, Word, GetToString(), GetTavoTypeName(FTavoType)));
}

TCloneableObject* TTavoValue::CheckedInterface(TTavoType Type, const char16_t* Word) const {
  if (FTavoType != Type) NotCorrectType(Word);
  return FValue.VInterface.Get();
}

String TTavoValue::GetAsString() const {
  if (TavoStringTypes.Contains(FTavoType)) return FValue.Str;
  switch (FTavoType) {
    case dtInteger:
      return IntToStr(FValue.VInteger);
    case dtFloat:
      return FloatText(FValue.VExtended);
    case dtFuzzy:
      return FValue.VInterface->ToString();
    default:
      NotCorrectType(u"string");
  }
}

int32_t TTavoValue::GetAsInteger() const {
  switch (FTavoType) {
    case dtAtom:
    case dtString: {
      int32_t Result;
      if (TryStrToInt(FValue.Str, Result)) return Result;
      double Number;
      if (TryStrToFloat(FValue.Str, Number)) return TruncToInt32(Number);
      break;
    }
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
      return FValue.VInteger;
    case dtExternalAddress:
      return int32_t(uint32_t(reinterpret_cast<uintptr_t>(FValue.VPointer)));
    case dtFloat:
      return TruncToInt32(FValue.VExtended);
    default:
      // A fuzzy value reads as its defuzzified number once fuzzy sets exist.
      break;
  }
  NotCorrectType(u"integer");
}

double TTavoValue::GetAsNumeric() const {
  switch (FTavoType) {
    case dtAtom:
    case dtString: {
      if (this == FCNil.Get()) return 0.0;
      double Result;
      if (TryStrToFloat(FValue.Str, Result)) return Result;
      break;
    }
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
      return FValue.VInteger;
    case dtFloat:
      return FValue.VExtended;
    default:
      // A fuzzy value reads as its defuzzified number once fuzzy sets exist.
      break;
  }
  NotCorrectType(u"numeric");
}

int32_t TTavoValue::GetAsFactId() const {
  if (!TavoFactTypes.Contains(FTavoType)) NotCorrectType(u"fact id");
  if (FTavoType != dtFloat) return FValue.VInteger;
  // A float gives the low 32 bits of its stored double, as it stands.
  uint64_t Bits;
  std::memcpy(&Bits, &FValue.VExtended, sizeof Bits);
  return int32_t(uint32_t(Bits));
}

int32_t TTavoValue::GetAsDescriptor() const {
  if (FTavoType != dtDescriptor) NotCorrectType(u"descriptor");
  return FValue.VInteger;
}

void* TTavoValue::GetAsExternalAddress() const {
  if (FTavoType != dtObject && FTavoType != dtExternalAddress) NotCorrectType(u"External Address");
  return FTavoType == dtObject ? static_cast<void*>(FValue.VObject) : FValue.VPointer;
}

TObject* TTavoValue::GetAsObject() const {
  if (FTavoType != dtObject) NotCorrectType(u"object");
  return FValue.VObject;
}

const TClass* TTavoValue::GetAsClass() const {
  if (FTavoType != dtClass) NotCorrectType(u"class");
  return FValue.VClass;
}

// Text.

String TTavoValue::GetToString() const {
  switch (FTavoType) {
    case dtNone:
      return FCNil->FValue.Str;
    case dtAtom:
    case dtSlot:
    case dtMultiSlot:
      return FValue.Str;
    case dtString:
      return QuotedText(FValue.Str);
    case dtInteger:
      return IntToStr(FValue.VInteger);
    case dtVariable:
      return u"?" + FValue.Str;
    case dtMultiVariable:
      return u"$?" + FValue.Str;
    case dtFactId:
      return u"<Fact-" + IntToStr(FValue.VInteger) + u">";
    case dtFloat:
      return FloatText(FValue.VExtended);
    case dtFunCall:
    case dtFact:
    case dtList:
    case dtSingletons:
    case dtFuzzy:
      return FValue.VInterface ? FValue.VInterface->ToString() : String();
    case dtObject: {
      TObject* Object = FValue.VObject;
      if (!Object) return String();
      if (dynamic_cast<TBindingInfo*>(Object))
        return u"<" + Object->ClassName() + u": " + Object->ToString() + u">";
      return u"<Object: " + Object->ClassName() + u">";
    }
    case dtClass:
      return FValue.VClass ? String(FValue.VClass->Name) : String();
    case dtExternalAddress:
      return u"<External-Address: " + IntToStr(reinterpret_cast<intptr_t>(FValue.VPointer)) + u">";
    default:
      return u"<UNKNOWN>";
  }
}

// Equality and hashing.

bool TTavoValue::Equals(const TCloneableObject* Other) const {
  const TTavoValue* Value = dynamic_cast<const TTavoValue*>(Other);
  return Value && EqualsValue(Value);
}

bool TTavoValue::EqualsValue(const TTavoValue* Other) const {
  if (Other == this) return true;
  if (!Other) return false;
  TTavoType Self = FTavoType;
  if (Other->FTavoType != Self && Self != dtFuzzy) {
    // A number against a fuzzy value is answered by the fuzzy side.
    if (Other->FTavoType == dtFuzzy) return Other->EqualsValue(this);
    return false;
  }
  const TTavoValueRec& Theirs = Other->FValue;
  switch (Self) {
    case dtNone:
      return true;
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
      return FValue.VInteger == Theirs.VInteger;
    case dtFloat:
      return !(FValue.VExtended < Theirs.VExtended) && !(FValue.VExtended > Theirs.VExtended);
    case dtFunCall:
    case dtFact:
    case dtList:
      return FValue.VInterface && FValue.VInterface->Equals(Theirs.VInterface.Get());
    case dtSingletons:
    case dtFuzzy:
      // Compared with the other value, not with what it holds.
      return FValue.VInterface && FValue.VInterface->Equals(Other);
    case dtObject:
      return FValue.VObject == Theirs.VObject;
    case dtExternalAddress:
      return FValue.VPointer == Theirs.VPointer;
    case dtClass:
      return false;
    default:
      return FValue.Str == Theirs.Str;
  }
}

bool TTavoValue::EqualsStar(const ITavoValue& Other) const {
  TTavoType Self = FTavoType;
  TTavoType Theirs = Other->FTavoType;
  if (Self == dtFunCall && Theirs != dtFunCall) return false;
  if (Self != dtFuzzy && Theirs == dtFuzzy) return Other->EqualsStar(ITavoValue(const_cast<TTavoValue*>(this)));
  switch (Self) {
    case dtNone:
      return true;
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
      return FValue.VInteger == Other->GetAsInteger();
    case dtFloat: {
      double Number = Other->GetAsFloat();
      return !(FValue.VExtended < Number) && !(FValue.VExtended > Number);
    }
    case dtFunCall:
    case dtFact:
    case dtList:
      return FValue.VInterface &&
             FValue.VInterface->Equals(Other->CheckedInterface(
                 Self, Self == dtList ? u"list" : Self == dtFact ? u"fact" : u"function call"));
    case dtSingletons:
    case dtFuzzy:
      return FValue.VInterface && FValue.VInterface->Equals(Other.Get());
    case dtObject:
      return FValue.VObject == Other->GetAsObject();
    case dtExternalAddress:
      return FValue.VPointer == Other->GetAsExternalAddress();
    case dtClass:
      return false;
    default:
      return FValue.Str == Other->GetAsString();
  }
}

int32_t TTavoValue::GetHashCode() const {
  switch (FTavoType) {
    case dtNone:
      return 0;
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
    case dtExternalAddress:
    case dtFloat:
      return GetAsInteger();
    case dtFunCall:
    case dtFact:
    case dtList:
    case dtSingletons:
      return FValue.VInterface ? FValue.VInterface->GetHashCode() : 0;
    case dtFuzzy:
      return CalculateHash(GetAsString());
    case dtObject:
      return int32_t(uint32_t(reinterpret_cast<uintptr_t>(FValue.VObject)));
    case dtClass:
      return int32_t(uint32_t(reinterpret_cast<uintptr_t>(FValue.VClass)));
    default:
      return CalculateHash(FValue.Str);
  }
}

// Copying.

void TTavoValue::Assign(const TPersistent* Source) {
  const TTavoValue* Value = dynamic_cast<const TTavoValue*>(Source);
  if (!Value) {
    TCloneableObject::Assign(Source);
    return;
  }
  if (Value == this) return;
  Reset();
  if (Value->IsOwningObject()) {
    SetAsOwnedObject(Value->CloneOwnedObject());
  } else {
    FTavoType = Value->FTavoType;
    FValue = Value->FValue;
  }
  FTag = Value->FTag;
  Changed();
}

void TTavoValue::Assign(const ICloneableObject& Source) {
  const TTavoValue* Value = dynamic_cast<const TTavoValue*>(Source.Get());
  if (!Value) throw EMekException(SIntfCastError);
  if (Value == this) return;
  Reset();
  CopyFromInterface(Value);
  Changed();
}

// Copies through the source's readers into this value, which is reset.
void TTavoValue::CopyFromInterface(const TTavoValue* Value) {
  TTavoType Type = Value->FTavoType;
  FTavoType = Type;
  FTag = Value->FTag;
  switch (Type) {
    case dtNone:
    case dtClass:  // the class is not copied, as it stands
      break;
    case dtInteger:
      FValue.VInteger = Value->GetAsInteger();
      break;
    case dtFactId:
      FValue.VInteger = Value->GetAsFactId();
      break;
    case dtDescriptor:
      FValue.VInteger = Value->GetAsDescriptor();
      break;
    case dtFloat:
      FValue.VExtended = Value->GetAsFloat();
      break;
    case dtList:
      FValue.VInterface = Value->GetAsList()->CloneVector();
      break;
    case dtFunCall:
    case dtFact:
    case dtSingletons:
    case dtFuzzy:
      FValue.VInterface = Value->FValue.VInterface;
      break;
    case dtObject:
      if (Value->IsOwningObject()) {
        FTavoType = dtNone;
        StoreOwnedObject(Value->CloneOwnedObject());
      } else {
        FValue.VObject = Value->FValue.VObject;
      }
      break;
    case dtExternalAddress:
      FValue.VPointer = Value->FValue.VPointer;
      break;
    default:
      FValue.Str = Value->GetAsString();
      break;
  }
}

void TTavoValue::AssignTo(TPersistent* Dest) const {
  TTavoValue* Target = dynamic_cast<TTavoValue*>(Dest);
  if (!Target) {
    TCloneableObject::AssignTo(Dest);
    return;
  }
  switch (FTavoType) {
    case dtNone:
      Target->Reset();
      break;
    case dtAtom:
      Target->SetAsAtom(FValue.Str);
      break;
    case dtString:
      Target->SetAsString(FValue.Str);
      break;
    case dtVariable:
      Target->SetAsVariable(FValue.Str);
      break;
    case dtMultiVariable:
      Target->SetAsMultiVariable(FValue.Str);
      break;
    case dtSlot:
      Target->SetAsSlot(FValue.Str);
      break;
    case dtMultiSlot:
      Target->SetAsMultiSlot(FValue.Str);
      break;
    case dtInteger:
      Target->SetAsInteger(FValue.VInteger);
      break;
    case dtFactId:
      Target->SetAsFactId(FValue.VInteger);
      break;
    case dtDescriptor:
      Target->SetAsDescriptor(FValue.VInteger);
      break;
    case dtFloat:
      Target->SetAsFloat(FValue.VExtended);
      break;
    case dtList:
      Target->SetAsList(GetAsList()->CloneVector());
      break;
    case dtFunCall:
    case dtFact:
    case dtSingletons:
    case dtFuzzy:
      Target->SetInterface(FTavoType, FValue.VInterface);
      break;
    case dtObject:
      if (IsOwningObject())
        Target->SetAsOwnedObject(CloneOwnedObject());
      else
        Target->SetAsObject(FValue.VObject);
      break;
    case dtExternalAddress:
      Target->SetAsExternalAddress(FValue.VPointer);
      break;
    case dtClass:  // writes nothing, as it stands
      break;
  }
}

ICloneableObject TTavoValue::Clone() const { return CloneValue(); }

ITavoValue TTavoValue::CloneValue() const {
  // A descendant clones into its own class.
  return ITavoValue(static_cast<TTavoValue*>(ClonePersistentClass(this, ClassType()).release()));
}

// Resolving.

ITavoValue TTavoValue::Resolve(TObject* Context) {
  switch (FTavoType) {
    case dtVariable:
    case dtMultiVariable: {
      auto* Scope = dynamic_cast<TTavoContext*>(Context);
      if (!Scope) throw ETavoException(Format(SNoContext, GetTavoTypeName(FTavoType)));
      TBinding* Binding = Scope->FindBinding(FValue.Str);
      if (!Binding || !Binding->GetValue()) throw ETavoException(Format(SCorruptedVariable, FValue.Str));
      return Binding->GetValue();
    }
    case dtFunCall:
      if (auto* Call = static_cast<TFunctionCall*>(FValue.VInterface.Get())) return Call->Execute(Context);
      break;
    case dtObject:
      if (auto* Info = dynamic_cast<TBindingInfo*>(FValue.VObject)) {
        auto* Scope = dynamic_cast<TTavoContext*>(Context);
        if (!Scope) throw ETavoException(Format(SNoContext, GetTavoTypeName(FTavoType)));
        return Scope->ResolveBindingInfo(*Info);
      }
      break;
    default:
      // Singletons become a fuzzy set once the fuzzy library has sets.
      break;
  }
  return ITavoValue(this);
}

}  // namespace tavo
