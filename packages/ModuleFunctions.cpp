// The standard package's functions on modules: the focus stack and the
// current module.
#include "engine/InferenceEngine.h"
#include "packages/StandardPackage.h"

namespace tavo {

namespace {

ITavoValue NameValue(const IModule& Module) { return Make<TTavoValue>(Module->GetName(), dtAtom); }

// A module named by an argument's value; SNoSuchModule when none is.
IModule ModuleNamed(TInferenceEngine& Engine, const ITavoValue& Name) {
  return Engine.GetModules().GetModule(Name ? Name->GetAsString() : String());
}

}  // namespace

TAVO_SETUP void TFocusModuleFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  switch (FType) {
    case fmfFocus:
      SetMetaData(u"focus", u"Pushes the modules on the focus stack, so that the first ends on top",
                  u"<module-name-expression>+", 1, AnyArgumentCount);
      break;
    case fmfClearFocusStack:
      SetMetaData(u"clear-focus-stack", u"Empties the focus stack, which stops the run", u"", 0, 0);
      break;
    case fmfGetFocus:
      SetMetaData(u"get-focus", u"Returns the name of the module on top of the focus stack, or FALSE", u"", 0, 0);
      break;
    case fmfGetFocusStack:
      SetMetaData(u"get-focus-stack", u"Returns the names of the modules on the focus stack, the top first", u"", 0,
                  0);
      break;
    case fmfPopFocus:
      SetMetaData(u"pop-focus", u"Takes the top module off the focus stack and returns its name, or FALSE", u"", 0,
                  0);
      break;
  }
}

void TFocusModuleFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  switch (FType) {
    case fmfFocus: {
      // Every name is found before the first push, so that an unknown one
      // leaves the stack as it was.
      std::vector<IModule> Modules;
      for (int I = FunCall.GetArgumentCount() - 1; I >= 0; --I)
        Modules.push_back(ModuleNamed(Engine, FunCall.EvaluateArgument(I, Context)));
      for (const IModule& Module : Modules) Engine.PushFocus(Module);
      Result = FCTrue;
      break;
    }
    case fmfClearFocusStack:
      Engine.ClearFocusStack();
      Result = FCNil;
      break;
    case fmfGetFocus: {
      IModule Top = Engine.PeekFocus();
      Result = Top ? NameValue(Top) : FCFalse;
      break;
    }
    case fmfGetFocusStack: {
      IValueVector Names = Make<TValueVector>();
      for (const IModule& Module : Engine.GetFocusStack()) Names->Add(NameValue(Module));
      Result = Make<TTavoValue>(Names);
      break;
    }
    case fmfPopFocus: {
      IModule Popped = Engine.PopFocus();
      Result = Popped ? NameValue(Popped) : FCFalse;
      break;
    }
  }
}

TAVO_SETUP void TCurrentModuleFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  if (FType == cmfGetCurrentModule)
    SetMetaData(u"get-current-module", u"Returns the name of the current module", u"", 0, 0);
  else
    SetMetaData(u"set-current-module", u"Makes the named module current and returns its name",
                u"<module-name-expression>", 1, 1);
}

void TCurrentModuleFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  if (FType == cmfSetCurrentModule) Engine.SetCurrentModule(ModuleNamed(Engine, FunCall.EvaluateArgument(0, Context)));
  const IModule& Current = Engine.GetCurrentModule();
  Result = Current ? NameValue(Current) : FCNil;
}

}  // namespace tavo
