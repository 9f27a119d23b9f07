// The object package: rules reach the live objects of their host. They
// create and free them, read and write their published properties, walk an
// owner's components and run actions. dtObject and dtClass values hold the
// objects and classes; what a rule reaches is what the host has registered
// with the reflection registry (common/MekReflection.h).
//
// nil, an empty value and a null object reference all stand for no object:
// a property of no object reads FALSE, is-class of it is FALSE, freeing it
// does nothing. Any other value where an object belongs fails with the
// value's own message, as does an object of the wrong class.
#pragma once

#include "packages/TavoPackages.h"

namespace tavo {

// create-object: a new instance of a class, made by the class's factory.
class TCreateObjectFunction : public TTavoUserFunction {
  TAVO_CLASS(TCreateObjectFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// execute-action: runs an action; TRUE when it had something to do.
class TExecuteActionFunction : public TTavoUserFunction {
  TAVO_CLASS(TExecuteActionFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// free-object: frees each object given; nil and null references are skipped.
class TFreeObjectFunction : public TTavoUserFunction {
  TAVO_CLASS(TFreeObjectFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// get-component: a component of an owner by its name, nil when it has none.
class TGetComponentFunction : public TTavoUserFunction {
  TAVO_CLASS(TGetComponentFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// get-components: the components of an owner, in their order.
class TGetComponentsFunction : public TTavoUserFunction {
  TAVO_CLASS(TGetComponentsFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// get-class: the registered class of a name.
class TGetClassFunction : public TTavoUserFunction {
  TAVO_CLASS(TGetClassFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// get-property: a published property's value, read by its kind.
class TGetPropertyFunction : public TTavoUserFunction {
  TAVO_CLASS(TGetPropertyFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// get-properties: the names of an object's published properties.
class TGetPropertiesFunction : public TTavoUserFunction {
  TAVO_CLASS(TGetPropertiesFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// set-property: writes a published property and answers the value.
class TSetPropertyFunction : public TTavoUserFunction {
  TAVO_CLASS(TSetPropertyFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// is-class: whether an object is of a class or of a descendant.
class TIsClassFunction : public TTavoUserFunction {
  TAVO_CLASS(TIsClassFunction, TTavoUserFunction)
 public:
  void InitMetaData() override;
  void Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) override;
  using TTavoUserFunction::Call;
};

// The package makes no trigger-event: that name stays an unknown function.
class TObjectPackage : public TUserPackage {
  TAVO_CLASS(TObjectPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
