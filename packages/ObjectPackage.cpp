#include "packages/ObjectPackage.h"

#include "common/MekReflection.h"
#include "engine/InferenceEngine.h"

namespace tavo {

namespace {

const ITavoValue& BooleanValue(bool Value) { return Value ? FCTrue : FCFalse; }

// The object a value stands for, or null for no object: nil, an empty value
// and a null reference are none. Any other kind fails in GetAsObject.
TObject* OptionalObject(const TTavoValue& Value) {
  if (Value.GetDType() == dtNone || (Value.GetDType() == dtAtom && Value.GetText().empty())) return nullptr;
  return Value.GetAsObject();
}

[[noreturn]] void NotOfClass(const TTavoValue& Value, const TClass& Class) {
  throw ETavoException(Format(SNotCorrectType, Class.Name, Value.GetToString(), GetTavoTypeName(Value.GetDType())));
}

// The object as an instance of T: the value's own failure for another kind,
// and in its words, with T's name, for no object or one of another class.
template <class T>
T& ObjectAs(const TTavoValue& Value) {
  auto* Result = dynamic_cast<T*>(Value.GetAsObject());
  if (!Result) NotOfClass(Value, T::StaticClass());
  return *Result;
}

const TClass& ClassOf(const TTavoValue& Value) {
  // A class value copied through an interface keeps no class.
  const TClass* Class = Value.GetAsClass();
  if (!Class) NotOfClass(Value, TObject::StaticClass());
  return *Class;
}

[[noreturn]] void InvalidPropertyType(TTypeKind Kind) {
  throw ETavoException(Format(SInvalidPropertyType, GetEnumName(TypeKindInfo(), Kind)));
}

// The owner whose components get-component and get-components walk: the
// first argument when FromArgument, which has to be a component, else the
// engine's own owner. That is the component under which the host made the
// engine: the root of the named components it lets rules reach.
TComponent& ComponentOwner(const String& Name, TFunctionCall& FunCall, bool FromArgument, TTavoContext* Context) {
  TComponent* Owner = nullptr;
  if (FromArgument) {
    const ITavoValue Value = ResolvedArgument(FunCall, 0, Context);
    if (Value->GetDType() == dtObject) Owner = dynamic_cast<TComponent*>(Value->GetAsObject());
  } else {
    Owner = EngineOf(FunCall, Context).GetOwner();
  }
  if (!Owner) throw ETavoException(Format(SMissingComponent, Name));
  return *Owner;
}

ITavoValue ObjectValue(TObject* Object) { return Make<TTavoValue>(Object, false); }

// Whether freeing Object would free the engine that runs the call: the
// engine itself, a component it owns (rules, packages) or one that owns it.
bool HoldsEngine(const TObject* Object, const TFunctionCall& FunCall, TTavoContext* Context) {
  const auto* Component = dynamic_cast<const TComponent*>(Object);
  IReasoner* Reasoner = Context ? Context->GetEngine() : nullptr;
  if (!Reasoner) Reasoner = FunCall.GetReasoner();
  const auto* Engine = dynamic_cast<const TInferenceEngine*>(Reasoner);
  if (!Component || !Engine) return false;
  for (const TComponent* Up = Component; Up; Up = Up->GetOwner())
    if (Up == Engine) return true;
  for (const TComponent* Up = Engine->GetOwner(); Up; Up = Up->GetOwner())
    if (Up == Component) return true;
  return false;
}

}  // namespace

TAVO_SETUP void TCreateObjectFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"create-object", u"Creates an object of a class and returns it; the rules free it with free-object",
              u" <TClass-expression>", 1, 1);
}

void TCreateObjectFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const TClass& Class = ClassOf(*ResolvedArgument(FunCall, 0, Context));
  Result = ObjectValue(CreateObject(Class));
}

TAVO_SETUP void TExecuteActionFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"execute-action", u"Executes an action; returns TRUE when the action had something to do, else FALSE",
              u" <TBasicAction-expression>", 1, 1);
}

void TExecuteActionFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = BooleanValue(ObjectAs<TBasicAction>(*ResolvedArgument(FunCall, 0, Context)).Execute());
}

TAVO_SETUP void TFreeObjectFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"free-object", u"Frees each object; values that refer to one afterwards are left dangling",
              u" <TObject-expression>*", 0, AnyArgumentCount);
}

void TFreeObjectFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) {
    const ITavoValue Value = ResolvedArgument(FunCall, I, Context);
    TObject* Object = OptionalObject(*Value);
    if (!Object) continue;
    if (HoldsEngine(Object, FunCall, Context))
      throw ETavoException(Format(SFreeEngineObject, Value->GetToString()));
    // A value that owns a component hears of its end and lets it go.
    delete Object;
  }
}

TAVO_SETUP void TGetComponentFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"get-component",
              u"Returns the component of that name of the given owner, or of the engine's owner; nil when there is "
              u"none",
              u" [<component-name>] | \r\n [<TComponent-expression> <component-name>]", 0, 2);
}

void TGetComponentFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const int Count = FunCall.GetArgumentCount();
  if (Count == 0) {
    Result = Make<TTavoValue>();
    return;
  }
  TComponent& Owner = ComponentOwner(FFunctionName, FunCall, Count == 2, Context);
  const String Name = ResolvedArgument(FunCall, Count - 1, Context)->GetAsString();
  // The component as an object value; nil, like an unknown property, when
  // the owner has none of that name.
  TComponent* Found = Owner.FindComponent(Name);
  Result = Found ? ObjectValue(Found) : FCNil;
}

TAVO_SETUP void TGetComponentsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"get-components",
              u"Returns the components of the given owner, or of the engine's owner, as a multifield in their order",
              u" [<TComponent-expression>]", 0, 1);
}

void TGetComponentsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TComponent& Owner = ComponentOwner(FFunctionName, FunCall, FunCall.GetArgumentCount() == 1, Context);
  IValueVector Components = Make<TValueVector>();
  for (int I = 0; I < Owner.GetComponentCount(); ++I) Components->Add(ObjectValue(Owner.GetComponent(I)));
  Result = Make<TTavoValue>(Components);
}

TAVO_SETUP void TGetClassFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"get-class", u"Returns the class registered under the name", u" <class-name>", 1, 1);
}

void TGetClassFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  Result = Make<TTavoValue>(&FindClass(ResolvedArgument(FunCall, 0, Context)->GetAsString()));
}

TAVO_SETUP void TGetPropertyFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"get-property",
              u"Returns the value of a published property of the object; FALSE for no object or one that publishes "
              u"nothing, nil for a name it does not publish",
              u" <TObject-expression> <property-name>", 2, 2);
}

void TGetPropertyFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TObject* Object = OptionalObject(*ResolvedArgument(FunCall, 0, Context));
  const String Name = ResolvedArgument(FunCall, 1, Context)->GetAsString();
  if (!Object || !ClassInfo(*Object)) {
    Result = FCFalse;
    return;
  }
  const TPropInfo* Prop = GetPropInfo(*Object, Name);
  if (!Prop) {
    Result = FCNil;
    return;
  }
  ITavoValue Value = Make<TTavoValue>();
  switch (Prop->GetKind()) {
    case tkFloat:
      Value->SetAsFloat(Prop->GetFloat(*Object));
      break;
    case tkInteger:
    case tkChar:
      // Both kinds fit in 32 bits; a 64-bit integer has no place here.
      Value->SetAsInteger(int32_t(Prop->GetOrd(*Object)));
      break;
    case tkString:
    case tkUtf8String:
      Value->SetAsString(Prop->GetStr(*Object));
      break;
    case tkEnumeration:
      Value->SetAsAtom(Prop->GetEnum(*Object));
      break;
    case tkSet:
      Value->SetAsString(Prop->GetSet(*Object));
      break;
    case tkClass:
      Value->SetAsObject(Prop->GetObject(*Object));
      break;
    default:
      InvalidPropertyType(Prop->GetKind());
  }
  Result = Value;
}

TAVO_SETUP void TGetPropertiesFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"get-properties",
              u"Returns the names of the published properties of the object as a multifield of strings, its "
              u"ancestors' first; nil when it publishes nothing",
              u" <TObject-expression>", 1, 1);
}

void TGetPropertiesFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TObject* Object = OptionalObject(*ResolvedArgument(FunCall, 0, Context));
  const TTypeInfo* Info = Object ? ClassInfo(*Object) : nullptr;
  if (!Info) return;
  IValueVector Names = Make<TValueVector>();
  for (const String& Name : GetPropList(*Info)) Names->Add(Make<TTavoValue>(Name, dtString));
  Result = Make<TTavoValue>(Names);
}

TAVO_SETUP void TSetPropertyFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"set-property",
              u"Sets a published property of the object to the value and returns the value; nothing happens for no "
              u"object or a name it does not publish",
              u" <TObject-expression> <property-name> <expression>", 3, 3);
}

void TSetPropertyFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TObject* Object = OptionalObject(*ResolvedArgument(FunCall, 0, Context));
  const String Name = ResolvedArgument(FunCall, 1, Context)->GetAsString();
  const TPropInfo* Prop = Object && ClassInfo(*Object) ? GetPropInfo(*Object, Name) : nullptr;
  if (!Prop) return;
  const ITavoValue Value = ResolvedArgument(FunCall, 2, Context);
  switch (Prop->GetKind()) {
    case tkInteger:
    case tkInt64:
      Prop->SetValue(*Object, int64_t(Value->GetAsInteger()));
      break;
    case tkChar:
    case tkEnumeration:
    case tkSet:
    case tkString:
    case tkUtf8String:
      Prop->SetValue(*Object, Value->GetAsString());
      break;
    case tkFloat:
      Prop->SetValue(*Object, Value->GetAsNumeric());
      break;
    case tkClass:
      Prop->SetObject(*Object, OptionalObject(*Value));
      break;
    default:
      InvalidPropertyType(Prop->GetKind());
  }
  Result = Value;
}

TAVO_SETUP void TIsClassFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"is-class", u"Returns TRUE if the object is of the class or of a class descended from it, else FALSE",
              u" <TObject-expression> <TClass-expression>", 2, 2);
}

void TIsClassFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const TObject* Object = OptionalObject(*ResolvedArgument(FunCall, 0, Context));
  const TClass& Class = ClassOf(*ResolvedArgument(FunCall, 1, Context));
  Result = BooleanValue(IsClass(Object, Class));
}

void TObjectPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();
  Functions.Add(Make<TCreateObjectFunction>());
  Functions.Add(Make<TExecuteActionFunction>());
  Functions.Add(Make<TFreeObjectFunction>());
  Functions.Add(Make<TGetComponentFunction>());
  Functions.Add(Make<TGetComponentsFunction>());
  Functions.Add(Make<TGetClassFunction>());
  Functions.Add(Make<TGetPropertyFunction>());
  Functions.Add(Make<TGetPropertiesFunction>());
  Functions.Add(Make<TSetPropertyFunction>());
  Functions.Add(Make<TIsClassFunction>());
}

}  // namespace tavo
