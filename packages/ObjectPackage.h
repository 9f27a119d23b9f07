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
TAVO_FUNCTION(TCreateObjectFunction)

// execute-action: runs an action; TRUE when it had something to do.
TAVO_FUNCTION(TExecuteActionFunction)

// free-object: frees each object given; nil and null references are skipped.
TAVO_FUNCTION(TFreeObjectFunction)

// get-component: a component of an owner by its name, nil when it has none.
TAVO_FUNCTION(TGetComponentFunction)

// get-components: the components of an owner, in their order.
TAVO_FUNCTION(TGetComponentsFunction)

// get-class: the registered class of a name.
TAVO_FUNCTION(TGetClassFunction)

// get-property: a published property's value, read by its kind.
TAVO_FUNCTION(TGetPropertyFunction)

// get-properties: the names of an object's published properties.
TAVO_FUNCTION(TGetPropertiesFunction)

// set-property: writes a published property and answers the value.
TAVO_FUNCTION(TSetPropertyFunction)

// is-class: whether an object is of a class or of a descendant.
TAVO_FUNCTION(TIsClassFunction)

// The package makes no trigger-event: that name stays an unknown function.
class TObjectPackage : public TUserPackage {
  TAVO_CLASS(TObjectPackage, TUserPackage)
 public:
  using TUserPackage::TUserPackage;

 protected:
  void CreateFunctions() override;
};

}  // namespace tavo
