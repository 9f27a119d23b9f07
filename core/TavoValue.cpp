#include "core/TavoValue.h"

#include "common/MekBlockCache.h"

#include <charconv>
#include <cmath>
#include <cstring>
#include <limits>
#include <mutex>
#include <new>
#include <typeinfo>
#include <utility>

#include "common/MekSanitizer.h"

#include "core/TavoContext.h"
#include "core/TavoFunctions.h"
#include "core/TavoFuzzy.h"
#include "core/TavoVectors.h"

namespace tavo {

namespace {

ITavoValue MakeAtom(const char16_t* Text) { return Make<TTavoValue>(Text, dtAtom); }

// The constants outlive every other static object that might hold them;
// the list constant's vector goes with it.
ITavoValue Immortal(ITavoValue Value) {
  Value->MakeImmortal();
  if (Value->GetDType() == dtList) Value->GetValue().VInterface->MakeImmortal();
  return Value;
}

// dtString texts are seldom compared against each other; the other text
// kinds are names, and interning makes their equality one comparison.
TSharedText* NewText(TTavoType Type, StringView Text) {
  return Type == dtString ? TSharedText::Create(Text) : TSharedText::Intern(Text);
}

String FloatText(double Value) { return Format(u"%.4f", Value); }

}  // namespace

const ITavoValue FCTrue = Immortal(MakeAtom(u"TRUE"));
const ITavoValue FCFalse = Immortal(MakeAtom(u"FALSE"));
const ITavoValue FCEmptyString = Immortal(MakeAtom(u""));
const ITavoValue FCNil = Immortal(MakeAtom(u""));
const ITavoValue FCNilList = Immortal(Make<TTavoValue>(Make<TValueVector>()));
const ITavoValue FCCatch = Immortal(MakeAtom(u"catch"));
const ITavoValue FCFinally = Immortal(MakeAtom(u"finally"));
const ITavoValue FCExcept = Immortal(MakeAtom(u"except"));
const ITavoValue FCElse = Immortal(MakeAtom(u"else"));
const ITavoValue FCDo = Immortal(MakeAtom(u"do"));
const ITavoValue FCEOF = Immortal(MakeAtom(u"EOF"));
const ITavoValue FCThen = Immortal(MakeAtom(u"then"));
const ITavoValue FCPI = Immortal(Make<TTavoValue>(3.141592653589793));
const ITavoValue FCZero = Immortal(Make<TTavoValue>(0.0));
const ITavoValue FCPopFocus = Immortal(MakeAtom(u"pop-focus"));

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

// Out of line: the change event and the nexus of the few values that have
// them, found by the value's address.

struct TTavoValue::TExtras {
  TTavoValueChangeEvent OnChange;
  std::unique_ptr<TTavoValueNexus> Nexus;
};

namespace {

std::mutex& ExtrasLock() {
  static std::mutex Lock;
  return Lock;
}

// Never destroyed: values die during the process's end as well.
template <class TExtras>
TMekDictionary<const TTavoValue*, TExtras*>& ExtrasTable() {
  static auto* Table = new TMekDictionary<const TTavoValue*, TExtras*>();
  return *Table;
}

}  // namespace

TTavoValue::TExtras* TTavoValue::GetExtras(bool Create) const {
  if (!(FPacked.Flags & vfHasExtras) && !Create) return nullptr;
  std::lock_guard<std::mutex> Lock(ExtrasLock());
  auto& Table = ExtrasTable<TExtras>();
  if (TExtras* const* Found = Table.Find(this)) return *Found;
  auto* Extras = new TExtras();
  Table.Add(this, Extras);
  const_cast<TTavoValue*>(this)->FPacked.Flags |= vfHasExtras;
  return Extras;
}

void TTavoValue::FreeExtras() noexcept {
  if (!(FPacked.Flags & vfHasExtras)) return;
  TExtras* Extras = nullptr;
  {
    std::lock_guard<std::mutex> Lock(ExtrasLock());
    ExtrasTable<TExtras>().TryExtract(this, Extras);
  }
  FPacked.Flags &= uint8_t(~vfHasExtras);
  delete Extras;
}

TTavoValueChangeEvent TTavoValue::GetOnChange() const {
  TExtras* Extras = GetExtras(false);
  return Extras ? Extras->OnChange : nullptr;
}

void TTavoValue::SetOnChange(TTavoValueChangeEvent Value) {
  if (!Value && !(FPacked.Flags & vfHasExtras)) return;
  GetExtras(true)->OnChange = std::move(Value);
}

// Value blocks come from a cache of the thread.
namespace {
thread_local bool ValueCacheGone = false;
thread_local TBlockCache<sizeof(TTavoValue), 4096> ValueCache(ValueCacheGone);
}  // namespace

void* TTavoValue::operator new(size_t Size) {
  return ValueCacheGone ? ::operator new(Size) : ValueCache.Allocate(Size);
}

void TTavoValue::operator delete(void* Block, size_t Size) noexcept {
  if (ValueCacheGone)
    ::operator delete(Block);
  else
    ValueCache.Release(Block, Size);
}

// Construction.

TTavoValue::TTavoValue(const TClass* Class) {
  SetKind(dtClass);
  FValue.VClass = Class;
}

TTavoValue::TTavoValue(int32_t Value, TTavoType Type) {
  if (!TavoIntegerTypes.Contains(Type)) throw ETavoException(SInvalidValueType);
  SetKind(Type);
  FValue.VExtended = 0;
  FValue.VInteger = Value;
}

TTavoValue::TTavoValue(StringView Text, TTavoType Type) {
  if (!TavoStringTypes.Contains(Type)) throw ETavoException(SInvalidValueType);
  FValue.VText = NewText(Type, Text);
  SetKind(Type);
}

TTavoValue::TTavoValue(double Value) {
  SetKind(dtFloat);
  FValue.VExtended = Value;
}

TTavoValue::TTavoValue(const ITavoValue& Source) {
  FValue.VExtended = 0;
  if (!Source) throw ETavoException(SIntfCastError);
  CopyFromInterface(Source.Get());
}

TTavoValue::TTavoValue(TObject* Object, bool Owns) {
  FValue.VExtended = 0;
  if (Owns) {
    StoreOwnedObject(Object);
  } else {
    SetObject(Object);
  }
}

TTavoValue::~TTavoValue() {
  if (FPacked.Flags & vfHasExtras) GetExtras(false)->OnChange = nullptr;
  Reset();
  FreeExtras();
}

void TTavoValue::DropPayload() noexcept {
  TTavoType Type = GetDType();
  if (TavoStringTypes.Contains(Type)) {
    FValue.VText->ReleaseReference();
  } else if (HoldsInterface()) {
    if (FValue.VInterface) FValue.VInterface->ReleaseReference();
  } else {
    return;
  }
  FValue.VExtended = 0;
}

// Ownership.

void TTavoValue::SetObject(TObject* Object) {
  SetKind(dtObject);
  FValue.VObject = Object;
  // Told apart once here, so that evaluation needs no cast.
  if (dynamic_cast<TBindingInfo*>(Object))
    FPacked.Flags |= vfBindingInfo;
  else
    FPacked.Flags &= uint8_t(~vfBindingInfo);
}

void TTavoValue::StoreOwnedObject(TObject* Object, bool Adopt) {
  SetObject(Object);
  // Only a component can tell the value that it went away, so only a
  // component is owned; any other object is merely referenced.
  if (TComponent* Component = dynamic_cast<TComponent*>(Object)) {
    TExtras* Extras = GetExtras(true);
    Extras->Nexus = std::make_unique<TTavoValueNexus>(this);
    FPacked.Flags |= vfOwning;
    Extras->Nexus->FreeNotification(Component);
  } else if (Adopt) {
    FPacked.Flags |= vfOwning;
  }
}

bool TTavoValue::AdoptsPlainObject() const {
  return IsOwningObject() && !dynamic_cast<TComponent*>(FValue.VObject);
}

void TTavoValue::FreeOwnedObject() {
  FPacked.Flags &= uint8_t(~vfOwning);
  TObject* Object = FValue.VObject;
  TComponent* Component = dynamic_cast<TComponent*>(Object);
  if (!Component) {
    // An owned plain object: a compiled variable's coordinates.
    FValue.VObject = nullptr;
    SetKind(dtNone);
    delete Object;
    return;
  }
  // Take the nexus out before freeing it: this may run inside its Notification.
  std::unique_ptr<TTavoValueNexus> Nexus = std::move(GetExtras(true)->Nexus);
  FValue.VObject = nullptr;
  SetKind(dtNone);
  if (Nexus) Nexus->RemoveFreeNotification(Component);
  Nexus.reset();
  if (!Component->IsDestroying()) delete Component;
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
  TTavoType Type = GetDType();
  if (Type == dtObject && IsOwningObject()) {
    FreeOwnedObject();
  } else if (HoldsInterface()) {
    DropPayload();
    SetKind(dtNone);
  }
}

void TTavoValue::Changed() {
  if (!(FPacked.Flags & vfHasExtras)) return;
  TTavoValueChangeEvent Handler = GetExtras(false)->OnChange;
  if (Handler) Handler(ITavoValue(this));
}

void TTavoValue::Reset() {
  Changing(dtNone);
  DropPayload();
  FValue.VExtended = 0;
  SetKind(dtNone);
}

void TTavoValue::Notification(TComponent* Component, TOperation Operation) {
  if (Operation == opRemove && GetDType() == dtObject && FValue.VObject == Component) Reset();
}

// Setters.

void TTavoValue::SetText(TTavoType Type, StringView Value) {
  TSharedText* Text = NewText(Type, Value);
  Changing(Type);
  DropPayload();
  SetKind(Type);
  FValue.VText = Text;
  Changed();
}

void TTavoValue::SetInteger(TTavoType Type, int32_t Value) {
  Changing(Type);
  DropPayload();
  SetKind(Type);
  FValue.VExtended = 0;
  FValue.VInteger = Value;
  Changed();
}

void TTavoValue::SetInterface(TTavoType Type, ICloneableObject Value) {
  if (Type != dtFunCall && Type != dtFact && Type != dtList && Type != dtSingletons &&
      Type != dtFuzzy)
    throw ETavoException(SInvalidValueType);
  Changing(Type);
  DropPayload();
  SetKind(Type);
  FValue.VInterface = Value.Detach();
  Changed();
}

void TTavoValue::SetAsFloat(double Value) {
  Changing(dtFloat);
  DropPayload();
  SetKind(dtFloat);
  FValue.VExtended = Value;
  Changed();
}

void TTavoValue::SetAsExternalAddress(void* Value) {
  Changing(dtExternalAddress);
  DropPayload();
  SetKind(dtExternalAddress);
  FValue.VPointer = Value;
  Changed();
}

void TTavoValue::SetAsObject(TObject* Value) {
  Changing(dtObject);
  DropPayload();
  SetObject(Value);
  Changed();
}

void TTavoValue::SetAsOwnedObject(TObject* Value) {
  Changing(dtObject);
  DropPayload();
  StoreOwnedObject(Value);
  Changed();
}

void TTavoValue::AdoptObject(TObject* Value) {
  Changing(dtObject);
  DropPayload();
  StoreOwnedObject(Value, true);
  Changed();
}

void TTavoValue::SetAsClass(const TClass* Value) {
  Changing(dtClass);
  DropPayload();
  SetKind(dtClass);
  FValue.VClass = Value;
  Changed();
}

// Readers.

void TTavoValue::NotCorrectType(const char16_t* Word) const {
  throw ETavoException(Format(SNotCorrectType, Word, GetToString(), GetTavoTypeName(GetDType())));
}

TCloneableObject* TTavoValue::CheckedInterface(TTavoType Type, const char16_t* Word) const {
  if (GetDType() != Type) NotCorrectType(Word);
  return FValue.VInterface;
}

String TTavoValue::GetAsString() const {
  if (TavoStringTypes.Contains(GetDType())) return String(FValue.VText->View());
  switch (GetDType()) {
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
  switch (GetDType()) {
    case dtAtom:
    case dtString: {
      int32_t Result;
      if (TryStrToInt(FValue.VText->View(), Result)) return Result;
      double Number;
      if (TryStrToFloat(FValue.VText->View(), Number)) return TruncToInt32(Number);
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
    case dtFuzzy:
      // The defuzzified number to the nearest integer, ties to even.
      if (FValue.VInterface)
        return TruncToInt32(std::nearbyint(static_cast<const TIFuzzySet*>(FValue.VInterface)->Defuzzify()));
      break;
    default:
      break;
  }
  NotCorrectType(u"integer");
}

double TTavoValue::GetAsNumeric() const {
  switch (GetDType()) {
    case dtAtom:
    case dtString: {
      if (this == FCNil.Get()) return 0.0;
      double Result;
      if (TryStrToFloat(FValue.VText->View(), Result)) return Result;
      break;
    }
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
      return FValue.VInteger;
    case dtFloat:
      return FValue.VExtended;
    case dtFuzzy:
      if (FValue.VInterface) return static_cast<const TIFuzzySet*>(FValue.VInterface)->Defuzzify();
      break;
    default:
      break;
  }
  NotCorrectType(u"numeric");
}

int32_t TTavoValue::GetAsFactId() const {
  if (!TavoFactTypes.Contains(GetDType())) NotCorrectType(u"fact id");
  if (GetDType() != dtFloat) return FValue.VInteger;
  // A float gives the low 32 bits of its stored double, as it stands.
  uint64_t Bits;
  std::memcpy(&Bits, &FValue.VExtended, sizeof Bits);
  return int32_t(uint32_t(Bits));
}

int32_t TTavoValue::GetAsDescriptor() const {
  if (GetDType() != dtDescriptor) NotCorrectType(u"descriptor");
  return FValue.VInteger;
}

void* TTavoValue::GetAsExternalAddress() const {
  if (GetDType() != dtObject && GetDType() != dtExternalAddress) NotCorrectType(u"External Address");
  return GetDType() == dtObject ? static_cast<void*>(FValue.VObject) : FValue.VPointer;
}

TObject* TTavoValue::GetAsObject() const {
  if (GetDType() != dtObject) NotCorrectType(u"object");
  return FValue.VObject;
}

const TClass* TTavoValue::GetAsClass() const {
  if (GetDType() != dtClass) NotCorrectType(u"class");
  return FValue.VClass;
}

// Text.

String TTavoValue::GetToString() const {
  String Result;
  AppendOwnText(Result);
  return Result;
}

void TTavoValue::AppendText(String& Out) const {
  // A class of the host's may print in its own way.
  if (!IsPlainClass())
    Out += GetToString();
  else
    AppendOwnText(Out);
}

// The text of GetToString, by tag.
void TTavoValue::AppendOwnText(String& Out) const {
  switch (GetDType()) {
    case dtNone:
      Out += FCNil->GetText();
      break;
    case dtAtom:
    case dtSlot:
    case dtMultiSlot:
      Out += FValue.VText->View();
      break;
    case dtString:
      // Backslashes doubled, then a backslash before each double quote.
      Out.push_back(u'"');
      for (char16_t C : FValue.VText->View()) {
        if (C == u'\\' || C == u'"') Out.push_back(u'\\');
        Out.push_back(C);
      }
      Out.push_back(u'"');
      break;
    case dtInteger: {
      char Digits[16];
      char* End = std::to_chars(Digits, Digits + sizeof Digits, FValue.VInteger).ptr;
      for (const char* C = Digits; C != End; ++C) Out.push_back(char16_t(*C));
      break;
    }
    case dtVariable:
      Out += u'?';
      Out += FValue.VText->View();
      break;
    case dtMultiVariable:
      Out += u"$?";
      Out += FValue.VText->View();
      break;
    case dtFactId:
      Out += u"<Fact-" + IntToStr(FValue.VInteger) + u">";
      break;
    case dtFloat:
      AppendFixed(Out, FValue.VExtended, 4);
      break;
    case dtList:
      // The vector's text: each member's text and a blank.
      if (FValue.VInterface)
        for (const ITavoValue& Item : *static_cast<const TValueVector*>(FValue.VInterface)) {
          if (Item) Item->AppendText(Out);
          Out.push_back(u' ');
        }
      break;
    case dtFunCall:
    case dtFact:
    case dtSingletons:
    case dtFuzzy:
      if (FValue.VInterface) Out += FValue.VInterface->ToString();
      break;
    case dtObject: {
      TObject* Object = FValue.VObject;
      if (!Object) break;
      if (dynamic_cast<TBindingInfo*>(Object))
        Out += u"<" + Object->ClassName() + u": " + Object->ToString() + u">";
      else
        Out += u"<Object: " + Object->ClassName() + u">";
      break;
    }
    case dtClass:
      if (FValue.VClass) Out += FValue.VClass->Name;
      break;
    case dtExternalAddress:
      Out += u"<External-Address: " + IntToStr(reinterpret_cast<intptr_t>(FValue.VPointer)) + u">";
      break;
    default:
      Out += u"<UNKNOWN>";
      break;
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
  TTavoType Self = GetDType();
  if (Other->GetDType() != Self && Self != dtFuzzy) {
    // A number against a fuzzy value is answered by the fuzzy side.
    if (Other->GetDType() == dtFuzzy) return Other->EqualsValue(this);
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
      return FValue.VInterface && FValue.VInterface->Equals(Theirs.VInterface);
    case dtSingletons:
      // Compared with the other value, not with what it holds.
      return FValue.VInterface && FValue.VInterface->Equals(Other);
    case dtFuzzy:
      return FValue.VInterface && FuzzyMatches(*static_cast<const TIFuzzySet*>(FValue.VInterface), Other);
    case dtObject:
      // Compiled variables are equal where their coordinates are.
      if (HoldsBindingInfo() && Other->HoldsBindingInfo())
        return static_cast<TBindingInfo*>(FValue.VObject)->Equals(Other->FValue.VObject);
      return FValue.VObject == Theirs.VObject;
    case dtExternalAddress:
      return FValue.VPointer == Theirs.VPointer;
    case dtClass:
      return false;
    default:
      return TSharedText::Same(FValue.VText, Theirs.VText);
  }
}

bool TTavoValue::EqualsStar(const ITavoValue& Other) const {
  TTavoType Self = GetDType();
  TTavoType Theirs = Other->GetDType();
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
      return FValue.VInterface && FValue.VInterface->Equals(Other.Get());
    case dtFuzzy:
      return FValue.VInterface && FuzzyMatches(*static_cast<const TIFuzzySet*>(FValue.VInterface), Other.Get());
    case dtObject:
      return FValue.VObject == Other->GetAsObject();
    case dtExternalAddress:
      return FValue.VPointer == Other->GetAsExternalAddress();
    case dtClass:
      return false;
    default:
      return FValue.VText->View() == StringView(Other->GetAsString());
  }
}

int32_t TTavoValue::GetHashCode() const {
  switch (GetDType()) {
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
      return FValue.VText->Hash();
  }
}

// Copying.

void TTavoValue::Assign(const TPersistent* Source) {
  const TTavoValue* Value = dynamic_cast<const TTavoValue*>(Source);
  if (!Value) {
    TCloneableObject::Assign(Source);
    return;
  }
  AssignValue(Value);
}

void TTavoValue::AssignValue(const TTavoValue* Value) {
  if (Value == this) return;
  Reset();
  if (Value->IsOwningObject())
    Value->AdoptsPlainObject() ? AdoptObject(Value->CloneOwnedObject()) : SetAsOwnedObject(Value->CloneOwnedObject());
  else
    CopyPayload(Value);
  SetTag(Value->GetTag());
  Changed();
}

void TTavoValue::Assign(const ICloneableObject& Source) {
  const TTavoValue* Value = dynamic_cast<const TTavoValue*>(Source.Get());
  if (!Value) throw ETavoException(SIntfCastError);
  if (Value == this) return;
  Reset();
  CopyFromInterface(Value);
  Changed();
}

// Takes the tag and payload of a value that owns nothing, sharing its text
// or interface; this value is reset.
void TTavoValue::CopyPayload(const TTavoValue* Value) {
  FValue = Value->FValue;
  SetKind(Value->GetDType());
  if (GetDType() == dtObject) SetObject(FValue.VObject);
  if (TavoStringTypes.Contains(GetDType()))
    FValue.VText->AddReference();
  else if (HoldsInterface() && FValue.VInterface)
    FValue.VInterface->AddReference();
}

// Copies through the source's readers into this value, which is reset.
void TTavoValue::CopyFromInterface(const TTavoValue* Value) {
  TTavoType Type = Value->GetDType();
  SetTag(Value->GetTag());
  switch (Type) {
    case dtNone:
    case dtClass:  // the class is not copied, as it stands
      SetKind(Type);
      break;
    case dtInteger:
    case dtFactId:
    case dtDescriptor:
    case dtFloat:
    case dtExternalAddress:
      SetKind(Type);
      FValue = Value->FValue;
      break;
    case dtList:
      SetKind(Type);
      FValue.VInterface = Value->GetAsList()->CloneVector().Detach();
      break;
    case dtFunCall:
    case dtFact:
    case dtSingletons:
    case dtFuzzy:
      CopyPayload(Value);
      break;
    case dtObject:
      if (Value->IsOwningObject()) {
        StoreOwnedObject(Value->CloneOwnedObject(), Value->AdoptsPlainObject());
      } else {
        SetKind(Type);
        SetObject(Value->FValue.VObject);
      }
      break;
    default:
      CopyPayload(Value);
      break;
  }
}

void TTavoValue::AssignTo(TPersistent* Dest) const {
  TTavoValue* Target = dynamic_cast<TTavoValue*>(Dest);
  if (!Target) {
    TCloneableObject::AssignTo(Dest);
    return;
  }
  switch (GetDType()) {
    case dtNone:
      Target->Reset();
      break;
    case dtAtom:
      Target->SetAsAtom(String(FValue.VText->View()));
      break;
    case dtString:
      Target->SetAsString(String(FValue.VText->View()));
      break;
    case dtVariable:
      Target->SetAsVariable(String(FValue.VText->View()));
      break;
    case dtMultiVariable:
      Target->SetAsMultiVariable(String(FValue.VText->View()));
      break;
    case dtSlot:
      Target->SetAsSlot(String(FValue.VText->View()));
      break;
    case dtMultiSlot:
      Target->SetAsMultiSlot(String(FValue.VText->View()));
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
      Target->SetInterface(GetDType(), FValue.VInterface);
      break;
    case dtObject:
      if (AdoptsPlainObject())
        Target->AdoptObject(CloneOwnedObject());
      else if (IsOwningObject())
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
  // Values of this very class, which facts copy by the million, are made
  // directly; a descendant clones into its own class.
  if (IsPlainClass()) {
    ITavoValue Result = Make<TTavoValue>();
    Result->AssignValue(this);
    return Result;
  }
  ITavoValue Result(static_cast<TTavoValue*>(ClonePersistentClass(this, ClassType()).release()));
  Result->AfterConstruction();
  return Result;
}

void TTavoValue::AfterConstruction() {
  if (typeid(*this) == typeid(TTavoValue)) FPacked.Flags |= vfPlainClass;
}

}  // namespace tavo
