#include "engine/TavoModule.h"

#include "core/TavoHelperFunctions.h"
#include "engine/InferenceEngine.h"

namespace tavo {

namespace {
constexpr char16_t SMainModuleName[] = u"MAIN";
}

// TModule

TModule::TModule(TInferenceEngine* Engine, bool IsMain) : FIsMain(IsMain), FEngine(Engine) {}

void TModule::SetName(const String& Value) {
  if (Value == FName) return;
  if (FIsMain != (Value == SMainModuleName)) throw ETavoException(SModuleMAINReserved);
  CheckConstructName(Value);
  // Only a module the engine holds competes for names: a new one replaces
  // its namesake when it is added.
  if (FEngine && FEngine->GetModules().IndexOf(IModule(this)) >= 0) {
    int Index = FEngine->GetModules().IndexOf(Value);
    if (Index >= 0 && FEngine->GetModules().Get(Index).Get() != this)
      throw ETavoException(Format(SDuplicateModuleNames, Value));
  }
  String OldName = FName;
  FName = Value;
  if (FEngine) FEngine->RenameModule(OldName, Value);
}

void TModule::Initialize() {
  if (!FEngine) return;
  IModule Remembered = FEngine->GetCurrentModule();
  FocusModule();
  if (FIsMain) FName = SMainModuleName;
  // The module's own knowledge objects are made here as they arrive.
  FocusModule();
  if (Remembered) Remembered->FocusModule();
}

void TModule::Release() {}

void TModule::FocusModule() {
  if (FEngine) FEngine->FCurrentModule = IModule(this);
}

// TModules

size_t TModules::CheckIndex(int Index) const {
  if (Index < 0 || Index >= Count()) throw EMekException(Format(SListIndexError, Index));
  return size_t(Index);
}

const IModule& TModules::Get(int Index) const { return FItems[CheckIndex(Index)]; }

void TModules::Put(int Index, const IModule& Module) { FItems[CheckIndex(Index)] = Module; }

int TModules::Add(const IModule& Module) {
  FItems.push_back(Module);
  return Count() - 1;
}

void TModules::Insert(int Index, const IModule& Module) {
  if (Index < 0 || Index > Count()) throw EMekException(Format(SListIndexError, Index));
  FItems.insert(FItems.begin() + Index, Module);
}

void TModules::Delete(int Index) { FItems.erase(FItems.begin() + ptrdiff_t(CheckIndex(Index))); }

int TModules::Remove(const IModule& Module) {
  int Index = IndexOf(Module);
  if (Index >= 0) Delete(Index);
  return Index;
}

int TModules::IndexOf(const IModule& Module) const {
  for (size_t I = 0; I < FItems.size(); ++I)
    if (FItems[I] == Module) return int(I);
  return -1;
}

int TModules::IndexOf(StringView Name) const {
  for (size_t I = 0; I < FItems.size(); ++I)
    if (FItems[I]->GetName() == Name) return int(I);
  return -1;
}

const IModule& TModules::GetModule(StringView Name) const {
  int Index = IndexOf(Name);
  if (Index < 0) throw ETavoException(Format(SNoSuchModule, Name));
  return FItems[size_t(Index)];
}

String TModules::ToNamesString() const {
  String Result;
  for (const IModule& Module : FItems) {
    if (!Result.empty()) Result += u' ';
    Result += Module->GetName();
  }
  return Result;
}

}  // namespace tavo
