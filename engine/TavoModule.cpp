#include "engine/TavoModule.h"

#include "core/TavoHelperFunctions.h"
#include "engine/InferenceEngine.h"

namespace tavo {

namespace {
constexpr char16_t SMainModuleName[] = u"MAIN";
}

void TavoAddReference(const TModule* Module) noexcept { Module->AddReference(); }
void TavoReleaseReference(const TModule* Module) noexcept { Module->ReleaseReference(); }

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

int TModules::IndexOf(StringView Name) const {
  for (int I = 0; I < Count(); ++I)
    if (FItems[size_t(I)]->GetName() == Name) return I;
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
