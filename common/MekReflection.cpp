#include "MekReflection.h"

#include <cmath>
#include <mutex>
#include <shared_mutex>

#include "MekFormat.h"
#include "MekHashTables.h"

namespace tavo {

// TEnumInfo

TEnumInfo::TEnumInfo(String TypeName, std::initializer_list<const char16_t*> Names)
    : FTypeName(std::move(TypeName)) {
  FNames.reserve(Names.size());
  for (const char16_t* Name : Names) FNames.emplace_back(Name);
}

const String& TEnumInfo::GetName(int64_t Value) const {
  if (Value < 0 || Value >= GetCount()) throw EMekException(Format(SEnumOutOfRange, Value, FTypeName));
  return FNames[size_t(Value)];
}

int TEnumInfo::GetValue(StringView Name) const {
  for (size_t I = 0; I < FNames.size(); ++I)
    if (FNames[I] == Name) return int(I);
  for (size_t I = 0; I < FNames.size(); ++I)
    if (SameText(FNames[I], Name)) return int(I);
  return -1;
}

const TEnumInfo& TypeKindInfo() {
  static const TEnumInfo Info(u"TTypeKind", {u"tkInteger", u"tkChar", u"tkEnumeration", u"tkFloat", u"tkString",
                                             u"tkSet", u"tkClass", u"tkMethod", u"tkInt64", u"tkUtf8String"});
  return Info;
}

const TEnumInfo& BooleanInfo() {
  static const TEnumInfo Info(u"Boolean", {u"FALSE", u"TRUE"});
  return Info;
}

// TPropInfo

namespace {

// The alternative of TPropInfo::TAccessor that each kind keeps.
size_t StorageOf(TTypeKind Kind) {
  switch (Kind) {
    case tkFloat:
      return 1;
    case tkString:
    case tkUtf8String:
      return 2;
    case tkClass:
      return 3;
    case tkMethod:
      return 4;
    default:
      return 0;
  }
}

String ObjectText(const TObject* Object) { return Object ? u"<Object: " + Object->ClassName() + u">" : u"nil"; }

String ValueText(const TPropValue& Value) {
  if (const auto* Integer = std::get_if<int64_t>(&Value)) return IntToStr(*Integer);
  if (const auto* Float = std::get_if<double>(&Value)) return Format(u"%g", *Float);
  if (const auto* Text = std::get_if<String>(&Value)) return *Text;
  return ObjectText(std::get<TObject*>(Value));
}

}  // namespace

TPropInfo::TPropInfo(String Name, TTypeKind Kind, TAccessor Access, const TEnumInfo* EnumInfo,
                     const TClass* PropClass, int64_t Min, int64_t Max)
    : FName(std::move(Name)),
      FKind(Kind),
      FAccess(std::move(Access)),
      FEnumInfo(EnumInfo ? std::make_shared<const TEnumInfo>(*EnumInfo) : nullptr),
      FPropClass(PropClass),
      FMin(Min),
      FMax(Max) {
  if (FAccess.index() != StorageOf(FKind)) InvalidType();
  if ((FKind == tkEnumeration || FKind == tkSet) && !FEnumInfo)
    throw EMekException(Format(u"Property %s needs the names of its values", FName));
  if (FKind == tkSet && FEnumInfo->GetCount() > 63)
    throw EMekException(Format(u"Property %s has more than 63 members", FName));
  if (FKind == tkClass && !FPropClass) throw EMekException(Format(u"Property %s needs its class", FName));
}

bool TPropInfo::IsReadOnly() const {
  return std::visit([](const auto& Access) { return !Access.Set; }, FAccess);
}

void TPropInfo::InvalidType() const {
  throw EMekException(Format(SInvalidPropertyType, GetEnumName(TypeKindInfo(), FKind)));
}

void TPropInfo::InvalidValue(StringView Text) const {
  throw EMekException(Format(SInvalidPropertyValue, FName, Text));
}

void TPropInfo::InvalidObject(const TObject* Value) const {
  throw EMekException(Format(SInvalidPropertyObject, FName, String(FPropClass->Name), ObjectText(Value)));
}

template <class V>
const TPropInfo::TAccess<V>& TPropInfo::Access() const {
  const auto* Access = std::get_if<TAccess<V>>(&FAccess);
  if (!Access) InvalidType();
  return *Access;
}

template <class V>
const TPropInfo::TAccess<V>& TPropInfo::Writable() const {
  const TAccess<V>& Result = Access<V>();
  if (!Result.Set) throw EMekException(Format(SReadOnlyProperty, FName));
  return Result;
}

int64_t TPropInfo::GetOrd(const TObject& Instance) const { return Access<int64_t>().Get(Instance); }

void TPropInfo::SetOrd(TObject& Instance, int64_t Value) const {
  const TAccess<int64_t>& Access = Writable<int64_t>();
  const bool InRange = FKind == tkSet ? (uint64_t(Value) >> FEnumInfo->GetCount()) == 0
                                      : Value >= FMin && Value <= FMax;
  if (!InRange) InvalidValue(IntToStr(Value));
  Access.Set(Instance, Value);
}

String TPropInfo::GetEnum(const TObject& Instance) const {
  if (FKind != tkEnumeration) InvalidType();
  return FEnumInfo->GetName(GetOrd(Instance));
}

String TPropInfo::GetSet(const TObject& Instance, bool Brackets) const {
  if (FKind != tkSet) InvalidType();
  const uint64_t Bits = uint64_t(GetOrd(Instance));
  String Result;
  if (Brackets) Result += u'[';
  bool First = true;
  for (int Member = 0; Member < FEnumInfo->GetCount(); ++Member) {
    if (!(Bits & (uint64_t(1) << Member))) continue;
    if (!First) Result += u',';
    First = false;
    Result += FEnumInfo->GetName(Member);
  }
  if (Brackets) Result += u']';
  return Result;
}

double TPropInfo::GetFloat(const TObject& Instance) const { return Access<double>().Get(Instance); }

void TPropInfo::SetFloat(TObject& Instance, double Value) const { Writable<double>().Set(Instance, Value); }

String TPropInfo::GetStr(const TObject& Instance) const { return Access<String>().Get(Instance); }

void TPropInfo::SetStr(TObject& Instance, const String& Value) const { Writable<String>().Set(Instance, Value); }

TObject* TPropInfo::GetObject(const TObject& Instance) const { return Access<TObject*>().Get(Instance); }

void TPropInfo::SetObject(TObject& Instance, TObject* Value) const {
  const TAccess<TObject*>& Access = Writable<TObject*>();
  if (Value && !Value->InheritsFrom(*FPropClass)) InvalidObject(Value);
  Access.Set(Instance, Value);
}

TNotifyEvent TPropInfo::GetMethod(const TObject& Instance) const { return Access<TNotifyEvent>().Get(Instance); }

void TPropInfo::SetMethod(TObject& Instance, TNotifyEvent Value) const {
  Writable<TNotifyEvent>().Set(Instance, std::move(Value));
}

namespace {

// A number read as an integer: a float truncated toward zero, a text as an
// integer or else as a float.
bool IntegerOf(const TPropValue& Value, int64_t& Result) {
  double Float;
  if (const auto* Integer = std::get_if<int64_t>(&Value)) {
    Result = *Integer;
    return true;
  }
  if (const auto* Number = std::get_if<double>(&Value)) {
    Float = *Number;
  } else if (const auto* Text = std::get_if<String>(&Value)) {
    if (TryStrToInt64(*Text, Result)) return true;
    if (!TryStrToFloat(*Text, Float)) return false;
  } else {
    return false;
  }
  // 2^63 itself is out of range; the bound below it is exact in a double.
  if (!(std::fabs(Float) < 9223372036854775808.0)) return false;
  Result = int64_t(std::trunc(Float));
  return true;
}

bool FloatOf(const TPropValue& Value, double& Result) {
  if (const auto* Integer = std::get_if<int64_t>(&Value)) {
    Result = double(*Integer);
    return true;
  }
  if (const auto* Number = std::get_if<double>(&Value)) {
    Result = *Number;
    return true;
  }
  const auto* Text = std::get_if<String>(&Value);
  return Text && TryStrToFloat(*Text, Result);
}

// The bits of a set written as names separated by commas, in brackets or
// not, with blanks around the names.
bool SetBitsOf(const TEnumInfo& Info, StringView Text, int64_t& Bits) {
  String Names = Trim(Text);
  StringView Rest = Names;
  if (Rest.size() >= 2 && Rest.front() == u'[' && Rest.back() == u']') Rest = Rest.substr(1, Rest.size() - 2);
  Bits = 0;
  if (Trim(Rest).empty()) return true;
  while (true) {
    const size_t Comma = Rest.find(u',');
    const int Member = Info.GetValue(Trim(Rest.substr(0, Comma)));
    if (Member < 0) return false;
    Bits |= int64_t(1) << Member;
    if (Comma == StringView::npos) return true;
    Rest = Rest.substr(Comma + 1);
  }
}

}  // namespace

void TPropInfo::SetValue(TObject& Instance, const TPropValue& Value) const {
  const auto* Text = std::get_if<String>(&Value);
  int64_t Ordinal = 0;
  switch (FKind) {
    case tkInteger:
    case tkInt64:
      if (!IntegerOf(Value, Ordinal)) InvalidValue(ValueText(Value));
      SetOrd(Instance, Ordinal);
      return;
    case tkChar:
      // A character is written as itself, or as its code unit.
      if (Text && Text->size() == 1)
        Ordinal = (*Text)[0];
      else if (const auto* Integer = std::get_if<int64_t>(&Value))
        Ordinal = *Integer;
      else
        InvalidValue(ValueText(Value));
      SetOrd(Instance, Ordinal);
      return;
    case tkEnumeration:
      if (Text)
        Ordinal = FEnumInfo->GetValue(*Text);
      else if (const auto* Integer = std::get_if<int64_t>(&Value))
        Ordinal = *Integer;
      else
        Ordinal = -1;
      if (Ordinal < 0) InvalidValue(ValueText(Value));
      SetOrd(Instance, Ordinal);
      return;
    case tkSet:
      if (Text) {
        if (!SetBitsOf(*FEnumInfo, *Text, Ordinal)) InvalidValue(*Text);
      } else if (const auto* Integer = std::get_if<int64_t>(&Value)) {
        Ordinal = *Integer;
      } else {
        InvalidValue(ValueText(Value));
      }
      SetOrd(Instance, Ordinal);
      return;
    case tkFloat: {
      double Float = 0;
      if (!FloatOf(Value, Float)) InvalidValue(ValueText(Value));
      SetFloat(Instance, Float);
      return;
    }
    case tkString:
    case tkUtf8String:
      if (std::holds_alternative<TObject*>(Value)) InvalidValue(ValueText(Value));
      SetStr(Instance, ValueText(Value));
      return;
    case tkClass:
      if (!std::holds_alternative<TObject*>(Value)) InvalidValue(ValueText(Value));
      SetObject(Instance, std::get<TObject*>(Value));
      return;
    case tkMethod:
      break;
  }
  InvalidType();
}

// The registry

// Every registered class by name, with its record. Classes register at a
// host's start, engines look up while they run, possibly in several
// threads: look-ups share the lock, registrations take it alone. Records
// and properties are never removed, so the pointers handed out stay valid
// without the lock.
class TClassRegistry {
 public:
  static TClassRegistry& Instance();

  TTypeInfo& Register(const TClass& Class);
  void AddProp(TTypeInfo& Info, std::unique_ptr<TPropInfo> Prop);
  const TClass* GetClass(StringView Name) const;
  const TTypeInfo* ClassInfo(const TClass& Class) const;
  std::vector<const TPropInfo*> Props(const TTypeInfo& Info) const;
  const TPropInfo* FindProp(const TClass& Class, StringView Name) const;

 private:
  TClassRegistry() = default;
  void RegisterOwnClasses();
  // The lock is held by the callers of these.
  const TTypeInfo* RecordOf(const TClass* Class) const;
  const TPropInfo* FindPropLocked(const TClass& Class, StringView Name) const;

  mutable std::shared_mutex FLock;
  TMekDictionary<String, const TClass*> FClasses;
  TMekDictionary<const TClass*, TTypeInfo*> FRecords;
  std::vector<std::unique_ptr<TTypeInfo>> FOwned;
};

TClassRegistry& TClassRegistry::Instance() {
  // Never destroyed: objects may be reflected on during the process's end.
  static TClassRegistry* Registry = [] {
    auto* Result = new TClassRegistry();
    Result->RegisterOwnClasses();
    return Result;
  }();
  return *Registry;
}

// The classes of this layer that hosts build on: a component publishes its
// name, an action its handler.
void TClassRegistry::RegisterOwnClasses() {
  Register(TObject::StaticClass());
  Register(TPersistent::StaticClass());
  TClassBuilder<TComponent>(Register(TComponent::StaticClass()))
      .Property(u"Name", &TComponent::GetName, &TComponent::SetName);
  TClassBuilder<TBasicAction>(Register(TBasicAction::StaticClass())).Property(u"OnExecute", &TBasicAction::OnExecute);
}

TTypeInfo& TClassRegistry::Register(const TClass& Class) {
  std::unique_lock Lock(FLock);
  if (TTypeInfo* const* Found = FRecords.Find(&Class)) return **Found;
  if (FClasses.ContainsKey(StringView(Class.Name))) throw EMekException(Format(SDuplicateClassName, Class.Name));
  FOwned.push_back(std::make_unique<TTypeInfo>(*this, Class));
  FClasses.Add(String(Class.Name), &Class);
  FRecords.Add(&Class, FOwned.back().get());
  return *FOwned.back();
}

void TClassRegistry::AddProp(TTypeInfo& Info, std::unique_ptr<TPropInfo> Prop) {
  std::unique_lock Lock(FLock);
  const String& Name = Prop->GetName();
  bool Taken = FindPropLocked(Info.FClass, Name) != nullptr;
  // A descendant registered first may publish the name already.
  for (const auto& Record : FOwned)
    if (!Taken && Record->FClass.InheritsFrom(Info.FClass))
      for (const auto& Own : Record->FProps) Taken = Taken || Own->GetName() == Name;
  if (Taken) throw EMekException(Format(SDuplicateProperty, Info.FClass.Name, Name));
  Info.FProps.push_back(std::move(Prop));
}

const TClass* TClassRegistry::GetClass(StringView Name) const {
  std::shared_lock Lock(FLock);
  const TClass* const* Found = FClasses.Find(Name);
  return Found ? *Found : nullptr;
}

const TTypeInfo* TClassRegistry::RecordOf(const TClass* Class) const {
  TTypeInfo* const* Found = FRecords.Find(Class);
  return Found ? *Found : nullptr;
}

const TTypeInfo* TClassRegistry::ClassInfo(const TClass& Class) const {
  std::shared_lock Lock(FLock);
  const TTypeInfo* Nearest = nullptr;
  for (const TClass* Ancestor = &Class; Ancestor; Ancestor = Ancestor->Parent) {
    const TTypeInfo* Record = RecordOf(Ancestor);
    if (!Record) continue;
    if (!Nearest) Nearest = Record;
    if (!Record->FProps.empty()) return Nearest;
  }
  return nullptr;
}

std::vector<const TPropInfo*> TClassRegistry::Props(const TTypeInfo& Info) const {
  std::shared_lock Lock(FLock);
  std::vector<const TTypeInfo*> Chain;
  for (const TClass* Ancestor = &Info.FClass; Ancestor; Ancestor = Ancestor->Parent)
    if (const TTypeInfo* Record = RecordOf(Ancestor)) Chain.push_back(Record);
  std::vector<const TPropInfo*> Result;
  for (auto Record = Chain.rbegin(); Record != Chain.rend(); ++Record)
    for (const auto& Prop : (*Record)->FProps) Result.push_back(Prop.get());
  return Result;
}

const TPropInfo* TClassRegistry::FindProp(const TClass& Class, StringView Name) const {
  std::shared_lock Lock(FLock);
  return FindPropLocked(Class, Name);
}

// A class publishes a handful of properties: a scan of each list up the
// chain is quicker than hashing the name.
const TPropInfo* TClassRegistry::FindPropLocked(const TClass& Class, StringView Name) const {
  for (const TClass* Ancestor = &Class; Ancestor; Ancestor = Ancestor->Parent)
    if (const TTypeInfo* Record = RecordOf(Ancestor))
      for (const auto& Prop : Record->FProps)
        if (Prop->GetName() == Name) return Prop.get();
  return nullptr;
}

// The operations

TTypeInfo& RegisterClassInfo(const TClass& Class) { return TClassRegistry::Instance().Register(Class); }

void AddPropInfo(TTypeInfo& Info, std::unique_ptr<TPropInfo> Prop) { Info.FRegistry.AddProp(Info, std::move(Prop)); }

const TClass* GetClass(StringView Name) { return TClassRegistry::Instance().GetClass(Name); }

const TClass& FindClass(StringView Name) {
  const TClass* Class = GetClass(Name);
  if (!Class) throw EMekException(Format(SClassNotFound, Name));
  return *Class;
}

TObject* CreateObject(const TClass& Class) {
  std::unique_ptr<TObject> Result(Class.Create ? Class.Create() : nullptr);
  if (!Result) throw EMekException(Format(SCannotCreateInstance, Class.Name));
  Result->AfterConstruction();
  return Result.release();
}

bool IsClass(const TObject* Instance, const TClass& Class) { return Instance && Instance->InheritsFrom(Class); }

const TTypeInfo* ClassInfo(const TClass& Class) { return TClassRegistry::Instance().ClassInfo(Class); }

std::vector<const TPropInfo*> GetPropInfos(const TTypeInfo& Info) { return TClassRegistry::Instance().Props(Info); }

std::vector<String> GetPropList(const TTypeInfo& Info) {
  std::vector<String> Result;
  for (const TPropInfo* Prop : GetPropInfos(Info)) Result.push_back(Prop->GetName());
  return Result;
}

const TPropInfo* GetPropInfo(const TObject& Instance, StringView Name) {
  return TClassRegistry::Instance().FindProp(Instance.ClassType(), Name);
}

const TPropInfo& FindPropInfo(const TObject& Instance, StringView Name) {
  const TPropInfo* Prop = GetPropInfo(Instance, Name);
  if (!Prop) throw EMekException(Format(SUnknownProperty, Instance.ClassName(), Name));
  return *Prop;
}

bool IsPublishedProp(const TObject& Instance, StringView Name) { return GetPropInfo(Instance, Name) != nullptr; }

TTypeKind PropType(const TObject& Instance, StringView Name) { return FindPropInfo(Instance, Name).GetKind(); }

int64_t GetOrdProp(const TObject& Instance, StringView Name) { return FindPropInfo(Instance, Name).GetOrd(Instance); }

void SetOrdProp(TObject& Instance, StringView Name, int64_t Value) {
  FindPropInfo(Instance, Name).SetOrd(Instance, Value);
}

String GetStrProp(const TObject& Instance, StringView Name) { return FindPropInfo(Instance, Name).GetStr(Instance); }

void SetStrProp(TObject& Instance, StringView Name, const String& Value) {
  FindPropInfo(Instance, Name).SetStr(Instance, Value);
}

String GetEnumProp(const TObject& Instance, StringView Name) { return FindPropInfo(Instance, Name).GetEnum(Instance); }

void SetEnumProp(TObject& Instance, StringView Name, StringView Value) {
  const TPropInfo& Prop = FindPropInfo(Instance, Name);
  if (Prop.GetKind() != tkEnumeration) Prop.InvalidType();
  Prop.SetValue(Instance, String(Value));
}

String GetSetProp(const TObject& Instance, StringView Name, bool Brackets) {
  return FindPropInfo(Instance, Name).GetSet(Instance, Brackets);
}

void SetSetProp(TObject& Instance, StringView Name, StringView Value) {
  const TPropInfo& Prop = FindPropInfo(Instance, Name);
  if (Prop.GetKind() != tkSet) Prop.InvalidType();
  Prop.SetValue(Instance, String(Value));
}

double GetFloatProp(const TObject& Instance, StringView Name) {
  return FindPropInfo(Instance, Name).GetFloat(Instance);
}

void SetFloatProp(TObject& Instance, StringView Name, double Value) {
  FindPropInfo(Instance, Name).SetFloat(Instance, Value);
}

TObject* GetObjectProp(const TObject& Instance, StringView Name) {
  return FindPropInfo(Instance, Name).GetObject(Instance);
}

void SetObjectProp(TObject& Instance, StringView Name, TObject* Value) {
  FindPropInfo(Instance, Name).SetObject(Instance, Value);
}

TNotifyEvent GetMethodProp(const TObject& Instance, StringView Name) {
  return FindPropInfo(Instance, Name).GetMethod(Instance);
}

void SetMethodProp(TObject& Instance, StringView Name, TNotifyEvent Value) {
  FindPropInfo(Instance, Name).SetMethod(Instance, std::move(Value));
}

void SetPropValue(TObject& Instance, StringView Name, const TPropValue& Value) {
  FindPropInfo(Instance, Name).SetValue(Instance, Value);
}

}  // namespace tavo
