#include "MekObjects.h"

#include <algorithm>
#include <mutex>

#include "MekExceptions.h"
#include "MekFormat.h"
#include "MekHashTables.h"

namespace tavo {

bool TClass::InheritsFrom(const TClass& Other) const {
  for (const TClass* Class = this; Class; Class = Class->Parent)
    if (Class == &Other) return true;
  return false;
}

const TClass& TObject::StaticClass() {
  static const TClass Class{u"TObject", nullptr, &TClassFactory<TObject>::Create};
  return Class;
}

void TPersistent::Assign(const TPersistent* Source) {
  if (Source)
    Source->AssignTo(this);
  else
    AssignError(nullptr);
}

void TPersistent::AssignTo(TPersistent* Dest) const { Dest->AssignError(this); }

void TPersistent::AssignError(const TPersistent* Source) const {
  String SourceName = Source ? Source->ClassName() : String(u"nil");
  throw EMekException(Format(u"Cannot assign a %s to a %s", SourceName, ClassName()));
}

ICloneableObject TCloneableObject::Clone() const {
  std::unique_ptr<TPersistent> Copy = ClonePersistentClass(this, ClassType());
  return ICloneableObject(static_cast<TCloneableObject*>(Copy.release()));
}

namespace {

// The tags of the shared objects that have one. Never destroyed: objects
// die during the process's end as well.
struct TTagTable {
  std::mutex Lock;
  TMekDictionary<const TCloneableObject*, intptr_t> Tags;
};

TTagTable& Tags() {
  static TTagTable* Table = new TTagTable();
  return *Table;
}

}  // namespace

TCloneableObject::~TCloneableObject() {
  if (FPacked.Flags & HasTagFlag) {
    TTagTable& Table = Tags();
    std::lock_guard<std::mutex> Lock(Table.Lock);
    Table.Tags.Remove(this);
  }
}

intptr_t TCloneableObject::LookupTag() const {
  TTagTable& Table = Tags();
  std::lock_guard<std::mutex> Lock(Table.Lock);
  const intptr_t* Tag = Table.Tags.Find(this);
  return Tag ? *Tag : 0;
}

void TCloneableObject::SetTag(intptr_t Value) {
  if (!Value && !(FPacked.Flags & HasTagFlag)) return;
  TTagTable& Table = Tags();
  std::lock_guard<std::mutex> Lock(Table.Lock);
  if (Value) {
    Table.Tags.AddOrSetValue(this, Value);
    FPacked.Flags |= HasTagFlag;
  } else {
    Table.Tags.Remove(this);
    FPacked.Flags &= uint8_t(~HasTagFlag);
  }
}

int32_t TCloneableObject::GetHashCode() const {
  return int32_t(reinterpret_cast<uintptr_t>(this));
}

std::unique_ptr<TPersistent> ClonePersistentClass(const TPersistent* Source, const TClass& Class) {
  TObject* Instance = Class.Create ? Class.Create() : nullptr;
  std::unique_ptr<TPersistent> Result(dynamic_cast<TPersistent*>(Instance));
  if (!Result) {
    delete Instance;
    throw EMekException(Format(SCannotCreateInstance, String(Class.Name)));
  }
  Result->AfterConstruction();
  Result->Assign(Source);
  return Result;
}

namespace {

// The names of the components that have one. Never destroyed, as the tags.
struct TNameTable {
  std::mutex Lock;
  TMekDictionary<const TComponent*, String> Names;
};

TNameTable& ComponentNames() {
  static TNameTable* Table = new TNameTable();
  return *Table;
}

// The component of Owner other than Except that is called Name; the
// table's lock is held.
const TComponent* FindNamed(const TNameTable& Table, const std::vector<TComponent*>& Components, StringView Name,
                            const TComponent* Except) {
  if (Name.empty()) return nullptr;
  for (const TComponent* Component : Components) {
    if (Component == Except || !Component->GetComponentState().Contains(csNamed)) continue;
    const String* Found = Table.Names.Find(Component);
    if (Found && *Found == Name) return Component;
  }
  return nullptr;
}

}  // namespace

TComponent::TComponent(TComponent* AOwner) {
  if (AOwner) AOwner->InsertComponent(this);
}

TComponent::~TComponent() {
  Destroying();
  NotifyFreeing();
  DestroyComponents();
  if (FOwner) FOwner->RemoveComponent(this);
  if (FComponentState.Contains(csNamed)) {
    TNameTable& Table = ComponentNames();
    std::lock_guard<std::mutex> Lock(Table.Lock);
    Table.Names.Remove(this);
  }
}

String TComponent::GetName() const {
  if (!FComponentState.Contains(csNamed)) return String();
  TNameTable& Table = ComponentNames();
  std::lock_guard<std::mutex> Lock(Table.Lock);
  const String* Name = Table.Names.Find(this);
  return Name ? *Name : String();
}

void TComponent::SetName(const String& Value) {
  if (Value.empty() && !FComponentState.Contains(csNamed)) return;
  TNameTable& Table = ComponentNames();
  std::lock_guard<std::mutex> Lock(Table.Lock);
  if (Value.empty()) {
    Table.Names.Remove(this);
    FComponentState.Exclude(csNamed);
    return;
  }
  if (FOwner && FindNamed(Table, FOwner->FComponents, Value, this))
    throw EMekException(Format(SDuplicateComponentName, Value));
  Table.Names.AddOrSetValue(this, Value);
  FComponentState.Include(csNamed);
}

TComponent* TComponent::FindComponent(StringView Name) const {
  TNameTable& Table = ComponentNames();
  std::lock_guard<std::mutex> Lock(Table.Lock);
  return const_cast<TComponent*>(FindNamed(Table, FComponents, Name, nullptr));
}

void TComponent::NotifyFreeing() {
  // A peer may unregister others, or be freed, while it is told.
  while (!FFreeNotifies.empty()) {
    TComponent* Peer = FFreeNotifies.back();
    FFreeNotifies.pop_back();
    Peer->RemoveNotification(this);
    Peer->Notification(this, opRemove);
  }
}

void TComponent::InsertComponent(TComponent* Component) {
  if (Component->FComponentState.Contains(csNamed)) {
    TNameTable& Table = ComponentNames();
    std::lock_guard<std::mutex> Lock(Table.Lock);
    const String* Name = Table.Names.Find(Component);
    if (Name && FindNamed(Table, FComponents, *Name, Component))
      throw EMekException(Format(SDuplicateComponentName, *Name));
  }
  if (Component->FOwner) Component->FOwner->RemoveComponent(Component);
  FComponents.push_back(Component);
  Component->FOwner = this;
  Notification(Component, opInsert);
}

void TComponent::RemoveComponent(TComponent* Component) {
  auto It = std::find(FComponents.begin(), FComponents.end(), Component);
  if (It == FComponents.end()) return;
  Notification(Component, opRemove);
  FComponents.erase(std::find(FComponents.begin(), FComponents.end(), Component));
  Component->FOwner = nullptr;
}

void TComponent::DestroyComponents() {
  while (!FComponents.empty()) {
    TComponent* Component = FComponents.back();
    RemoveComponent(Component);
    delete Component;
  }
}

void TComponent::FreeNotification(TComponent* Component) {
  if (!Component || Component == this) return;
  if (std::find(FFreeNotifies.begin(), FFreeNotifies.end(), Component) == FFreeNotifies.end())
    FFreeNotifies.push_back(Component);
  if (std::find(Component->FFreeNotifies.begin(), Component->FFreeNotifies.end(), this) ==
      Component->FFreeNotifies.end())
    Component->FFreeNotifies.push_back(this);
}

void TComponent::RemoveFreeNotification(TComponent* Component) {
  if (!Component) return;
  RemoveNotification(Component);
  Component->RemoveNotification(this);
}

void TComponent::RemoveNotification(TComponent* Component) {
  auto It = std::find(FFreeNotifies.begin(), FFreeNotifies.end(), Component);
  if (It != FFreeNotifies.end()) FFreeNotifies.erase(It);
}

void TComponent::SetLoading(bool Value) {
  if (Value)
    FComponentState.Include(csLoading);
  else
    FComponentState.Exclude(csLoading);
}

void TComponent::Notification(TComponent* Component, TOperation Operation) {
  if (Operation == opRemove) RemoveNotification(Component);
}

bool TBasicAction::Execute() {
  if (!OnExecute) return false;
  OnExecute(this);
  return true;
}

TComponent* CloneComponent(const TComponent* Source) {
  const TClass& Class = Source->ClassType();
  TObject* Instance = Class.Create ? Class.Create() : nullptr;
  std::unique_ptr<TComponent> Result(dynamic_cast<TComponent*>(Instance));
  if (!Result) {
    delete Instance;
    return nullptr;
  }
  Result->AfterConstruction();
  if (Source->GetOwner()) Source->GetOwner()->InsertComponent(Result.get());
  Result->Assign(Source);
  return Result.release();
}

}  // namespace tavo
