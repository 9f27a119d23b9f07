// Enough of an engine to own templates, for the knowledge tests.
#pragma once

#include "core/TavoInterfaces.h"
#include "knowledge/TavoDefinedType.h"

namespace tavo {

struct TOwnerEngine : TObject, IReasoner {
  const IModule& GetCurrentModule() const override { return Module; }
  void RenameDefinedType(const String&, const String&) override {}
  void RenameModule(const String&, const String&) override {}
  void RenameFactTemplate(const String&, const String&) override {}
  TTypeChecks GetTypeChecks() const override { return Checks; }
  int GetFactIdCounter() const override { return Counter; }
  TObject* GetGlobalContext() const override { return nullptr; }
  ITavoDefinedType FindDefinedType(StringView) const override { return nullptr; }
  void AddUserFunction(const IUserFunction&) override {}
  void RemoveUserFunction(const IUserFunction&) override {}
  bool ContainsUserFunction(StringView, IUserFunction&) const override { return false; }
  IModule Module;
  TTypeChecks Checks;
  int Counter = 0;
};

}  // namespace tavo
