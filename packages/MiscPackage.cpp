#include "packages/MiscPackage.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include "engine/FactList.h"
#include "engine/InferenceEngine.h"
#include "engine/TavoModule.h"
#include "language/TavoPrettyPrinter.h"
#include "matching/ActivationAgenda.h"

namespace tavo {

TAVO_SETUP void TShowFactsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"facts", u"Prints the facts of the current module, of the named one or of all (*)",
              u" [<module-name-expression>|*] [<start-integer-expression> [<end-integer-expression> "
              u"[<max-integer-expression>]]]",
              0, 4);
}

namespace {

// The listing family's shape: the lines of the current module, of the
// module named by the first argument, or of all of them ("*", each under
// its name), then the total. Lines gives one module's lines.
void PrintListing(TInferenceEngine& Engine, const String& ModuleName, bool Sorted, const String& Total,
                  const std::function<std::vector<String>(TModule& Module, bool Current)>& Lines,
                  const String& OutID = String()) {
  std::vector<IModule> Modules;
  if (ModuleName == u"*")
    for (int I = 0; I < Engine.GetModules().Count(); ++I) Modules.push_back(Engine.GetModules().Get(I));
  else if (!ModuleName.empty())
    Modules.push_back(Engine.GetModules().GetModule(ModuleName));
  else
    Modules.push_back(Engine.GetCurrentModule());
  String Text;
  int Count = 0;
  for (const IModule& Module : Modules) {
    std::vector<String> Items = Lines(*Module, Module == Engine.GetCurrentModule());
    if (Sorted) std::sort(Items.begin(), Items.end());
    Count += int(Items.size());
    if (ModuleName == u"*") {
      Text += Module->GetName() + u":\r\n";
      for (const String& Line : Items) Text += u"   " + TrimRight(Line) + u"\r\n";
    } else {
      for (const String& Line : Items) Text += Line + u"\r\n";
    }
  }
  Engine.PrintOut(OutID, Text + Format(Total, Count) + u"\r\n");
}

// The names a construct table holds, imported ones among them.
template <class T>
std::vector<String> Names(const TConstructTable<T>* Table) {
  std::vector<String> Result;
  if (Table)
    for (const auto& Item : *Table) Result.push_back(Item.Key);
  return Result;
}

// The module named by argument Index, if it is given.
String ModuleArgument(TFunctionCall& FunCall, TTavoContext* Context, int Index = 0) {
  return FunCall.GetArgumentCount() > Index ? FunCall.Argument(Index, Context)->GetAsString() : String();
}

}  // namespace

void TShowFactsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  // A first argument that is no number names the module, or all of them.
  int First = 0;
  String ModuleName;
  if (FunCall.GetArgumentCount() > 0) {
    ITavoValue Value = FunCall.EvaluateArgument(0, Context);
    if (!TavoNumericTypes.Contains(Value->GetDType())) {
      ModuleName = Value->GetAsString();
      First = 1;
    }
  }
  auto Bound = [&](int Index, int32_t Default) {
    return First + Index < FunCall.GetArgumentCount() ? FunCall.Argument(First + Index, Context)->GetAsInteger()
                                                      : Default;
  };
  const int32_t Start = Bound(0, 0);
  const int32_t End = Bound(1, INT32_MAX);
  const int32_t Max = Bound(2, INT32_MAX);
  // Ids print padded to one width, so that sorted text is sorted by id.
  PrintListing(Engine, ModuleName, true, u"For a total of %d facts.", [&](TModule& Module, bool Current) {
    std::vector<String> Lines;
    TFacts* Facts = Current ? Engine.GetFacts() : Module.GetFacts();
    for (int I = 0; Facts && I < Facts->Count() && int32_t(Lines.size()) < Max; ++I) {
      const IFact& Fact = Facts->Get(I);
      if (Fact->GetID() >= Start && Fact->GetID() <= End) Lines.push_back(Fact->GetToIDString());
    }
    return Lines;
  });
  Result = FCNil;
}

// agenda, list-defrules and the rest of the listing family: the lines of one
// module, or of every module.

namespace {

// One module's lines; Current says it is the current module, whose tables
// the engine holds.
using TModuleLines = std::vector<String> (*)(TInferenceEngine& Engine, TModule& Module, bool Current);

// A listing of the current module, of the one named by the argument or of
// all ("*").
template <TModuleLines Lines>
void ListModules(TFunctionCall& FunCall, TTavoContext* Context, bool Sorted, const String& Total, ITavoValue& Result) {
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  PrintListing(Engine, ModuleArgument(FunCall, Context), Sorted, Total,
               [&](TModule& Module, bool Current) { return Lines(Engine, Module, Current); });
  Result = FCNil;
}

std::vector<String> ActivationLines(TInferenceEngine& Engine, TModule& Module, bool Current) {
  std::vector<String> Lines;
  TActivationAgenda* Agenda = Current ? Engine.GetAgenda() : Module.GetAgenda();
  for (int I = 0; Agenda && I < Agenda->Count(); ++I) Lines.push_back(Agenda->GetString(I));
  return Lines;
}

std::vector<String> RuleNames(TInferenceEngine& Engine, TModule& Module, bool Current) {
  std::vector<String> Lines;
  TRules* Rules = Current ? Engine.GetRules() : Module.GetRules();
  for (int I = 0; Rules && I < Rules->Count(); ++I) Lines.push_back(Rules->Get(I)->GetRuleName());
  return Lines;
}

std::vector<String> DefinedTypeNames(TInferenceEngine& Engine, TModule& Module, bool Current) {
  return Names(Current ? Engine.GetDefinedTypes() : Module.GetDefinedTypes());
}

std::vector<String> FactSetNames(TInferenceEngine& Engine, TModule& Module, bool Current) {
  std::vector<String> Lines;
  if (TFactSets* Sets = Current ? Engine.GetFactSets() : Module.GetFactSets())
    for (const TFactSet* Set : *Sets) Lines.push_back(Set->GetFactSetName());
  return Lines;
}

// Without the templates every module has for the engine's own facts: they
// were never defined by anyone.
std::vector<String> TemplateNames(TInferenceEngine& Engine, TModule& Module, bool Current) {
  std::vector<String> Lines = Names(Current ? Engine.GetFactTemplates() : Module.GetFactTemplates());
  std::erase_if(Lines,
                [](const String& Name) { return SameText(Name, SInitialFactPattern) || SameText(Name, SNullFact); });
  return Lines;
}

}  // namespace

// A function of the listing family: Sorted says whether its lines are
// sorted, Total is the text of the total, and Lines gives a module's lines.
#define TAVO_LISTING_FUNCTION(ClassName, Name, Comment, Sorted, Total, Lines)           \
  TAVO_DEFINE_FUNCTION(ClassName, Name, Comment, u"[<module-name-expression>|*]", 0, 1, \
                       ListModules<Lines>(FunCall, Context, Sorted, Total, Result))

// The agenda in agenda order, which is what an agenda is read for; the rest
// of the family sorts its names.
TAVO_LISTING_FUNCTION(TAgendaFunction, u"agenda",
                      u"Prints the activations of the current module, of the named one or of all (*)", false,
                      u"for a total of %d activations.", ActivationLines)
TAVO_LISTING_FUNCTION(TListRulesFunction, u"list-defrules",
                      u"Prints the names of the rules of the current module, of the named one or of all (*)", true,
                      u"for a total of %d rules.", RuleNames)
TAVO_LISTING_FUNCTION(TListDefTypesFunction, u"list-deftypes",
                      u"Prints the names of the defined types of the current module, of the named one or of all (*)",
                      true, u"for a total of %d deftypes.", DefinedTypeNames)
TAVO_LISTING_FUNCTION(TListFactSetsFunction, u"list-deffacts",
                      u"Prints the names of the fact sets of the current module, of the named one or of all (*)", true,
                      u"for a total of %d deffacts.", FactSetNames)
TAVO_LISTING_FUNCTION(TListTemplatesFunction, u"list-deftemplates",
                      u"Prints the names of the fact templates of the current module, of the named one or of all (*)",
                      true, u"for a total of %d deftemplates.", TemplateNames)

#undef TAVO_LISTING_FUNCTION

TAVO_SETUP void TListFunctionsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"list-deffunctions", u"Prints the names of the functions defined by deffunction", u"", 0, 0);
}

void TListFunctionsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  // Only what deffunction made: the built-in functions are the same in
  // every engine, and would bury the user's few.
  PrintListing(Engine, String(), true, u"for a total of %d deffunctions.", [&](TModule&, bool) {
    std::vector<String> Lines;
    if (TUserFunctions* Functions = Engine.GetUserFunctions())
      for (const auto& Item : *Functions)
        if (dynamic_cast<const TInterpretedFunction*>(Item.Value.Get())) Lines.push_back(Item.Key);
    return Lines;
  });
  Result = FCNil;
}

TAVO_SETUP void TListDefModulesFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"list-defmodules", u"Prints the names of the modules", u"", 0, 0);
}

void TListDefModulesFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  // In the engine's order, MAIN first: a module comes after those it imports.
  PrintListing(Engine, String(), false, u"for a total of %d defmodules.", [&](TModule&, bool) {
    std::vector<String> Lines;
    for (int I = 0; I < Engine.GetModules().Count(); ++I) Lines.push_back(Engine.GetModules().Get(I)->GetName());
    return Lines;
  });
  Result = FCNil;
}

TAVO_SETUP void TListFocusStackFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"list-focus-stack", u"Prints the modules of the focus stack, the top first", u"", 0, 0);
}

void TListFocusStackFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  // A stack is read for its order, not counted: names only, no total.
  String Text;
  const TModules& Stack = Engine.GetFocusStack();
  for (int I = 0; I < Stack.Count(); ++I) Text += Stack.Get(I)->GetName() + u"\r\n";
  if (!Text.empty()) Engine.PrintOut(Text);
  Result = FCNil;
}

TAVO_SETUP void TShowRulesFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"rules", u"Prints the rules of the current module to the logical name, t by default",
              u"[<logical-name>]", 0, 1);
}

void TShowRulesFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const String OutID = FunCall.GetArgumentCount() > 0 ? FunCall.Argument(0, Context)->GetAsString() : String();
  // In the order they were defined, as a knowledge base is read.
  PrintListing(
      Engine, String(), false, u"For a total of %d rules.",
      [&](TModule&, bool) {
        std::vector<String> Lines;
        TRules* Rules = Engine.GetRules();
        for (int I = 0; Rules && I < Rules->Count(); ++I) Lines.push_back(Rules->Get(I)->ToString());
        return Lines;
      },
      OutID);
  Result = FCNil;
}

TAVO_SETUP void TListVariablesFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  // In the order of TListVariablesFunctionType.
  static constexpr TFunctionMetaData Kinds[] = {
      {u"list-defglobals", u"Prints the global variables and their values", u"", 0, 0},
      {u"list-bindings", u"Prints the variables bound where the call runs, and their values", u"", 0, 0},
  };
  static_assert(std::size(Kinds) == lvBindings + 1);
  SetKindMetaData(*this, Kinds, FType);
}

void TListVariablesFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  auto Line = [](StringView Name, const ITavoValue& Value) {
    return TrimRight(u"?" + String(Name) + u" = " + (Value ? Value->GetToString() : String(u"nil")));
  };
  PrintListing(Engine, String(), true, u"for a total of %d bindings.", [&](TModule&, bool) {
    std::vector<String> Lines;
    if (FType == lvDefGlobals) {
      // The values they hold now, which a reset may give back.
      TGlobalVariables* Globals = Engine.GetGlobalVariables();
      TTavoContext* Global = Engine.GetContext();
      if (Globals)
        for (const auto& Item : *Globals) {
          TBinding* Binding = Global ? Global->FindBinding(Item.Key) : nullptr;
          Lines.push_back(Line(Item.Key, Binding ? Binding->GetValue() : Item.Value));
        }
      return Lines;
    }
    // Scope by scope outwards; an inner binding hides an outer one of the
    // name. The firing rule's name, bound for the engine's own use, is no
    // variable of the user's.
    std::vector<String> Seen;
    auto Take = [&](const TBinding& Binding) {
      StringView Name = Binding.GetName();
      if (!Binding.GetValue() || Name == SRuleBinding) return;
      if (std::find(Seen.begin(), Seen.end(), Name) != Seen.end()) return;
      Seen.emplace_back(Name);
      Lines.push_back(Line(Name, Binding.GetValue()));
    };
    for (TTavoContext* Scope = Context; Scope; Scope = Scope->GetParent()) {
      for (int I = 0; I < Scope->GetFrameCount(); ++I) Take(Scope->GetFrameBinding(I));
      for (const auto& Item : Scope->GetBindings()) Take(*Item.Value);
    }
    return Lines;
  });
  Result = FCNil;
}

TAVO_SETUP void TIsTavoStructFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  // In the order of TIsTavoStructFunctionType.
  static constexpr TFunctionMetaData Kinds[] = {
      {u"is-binding", u"Returns TRUE if the variable is bound where the call runs", u"<variable-name>", 1, 1},
      {u"is-deftype", u"Returns TRUE if the current module has a defined type of the name", u"<defined-type-name>", 1,
       1},
      {u"is-deffunction", u"Returns TRUE if a function of the name exists", u"<function-name>", 1, 1},
      {u"is-defglobal", u"Returns TRUE if a global variable of the name is defined", u"<global-variable-name>", 1, 1},
      {u"is-defrule", u"Returns TRUE if the current module has a rule of the name", u"<rule-name>", 1, 1},
      {u"is-deffacts", u"Returns TRUE if the current module has a fact set of the name", u"<fact-set-name>", 1, 1},
      {u"is-deftemplate", u"Returns TRUE if the current module has a fact template of the name",
       u"<fact-template-name>", 1, 1},
  };
  static_assert(std::size(Kinds) == sfIsDefTemplate + 1);
  SetKindMetaData(*this, Kinds, FType);
}

void TIsTavoStructFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  Result = FCFalse;
  String Name;
  if (FType == sfIsBinding || FType == sfIsDefGlobal) {
    // A variable names itself here: resolving it would ask for the very
    // value whose existence is in question. A text may carry its "?".
    const ITavoValue& Argument = FunCall.GetArgument(0);
    Name = Argument && TavoVariableTypes.Contains(Argument->GetDType())
               ? Argument->GetAsString()
               : FunCall.Argument(0, Context)->GetAsString();
    if (Name.starts_with(u"$?"))
      Name.erase(0, 2);
    else if (Name.starts_with(u"?"))
      Name.erase(0, 1);
  } else {
    Name = FunCall.Argument(0, Context)->GetAsString();
  }
  bool Found = false;
  switch (FType) {
    case sfIsBinding:
      Found = Context && Context->FindBinding(Name);
      break;
    case sfIsDefType:
      Found = Engine.GetDefinedTypes() && Engine.GetDefinedTypes()->ContainsKey(Name);
      break;
    case sfIsDefFunction:
      Found = Engine.GetUserFunctions() && Engine.GetUserFunctions()->ContainsKey(Name);
      break;
    case sfIsDefGlobal:
      Found = Engine.GetGlobalVariables() && Engine.GetGlobalVariables()->ContainsKey(Name);
      break;
    case sfIsDefRule:
      Found = Engine.GetRules() && Engine.GetRules()->Find(Name);
      break;
    case sfIsDefFacts:
      Found = Engine.GetFactSets() && Engine.GetFactSets()->IndexOf(Name) != -1;
      break;
    case sfIsDefTemplate:
      Found = Engine.GetFactTemplates() && Engine.GetFactTemplates()->ContainsKey(Name);
      break;
  }
  if (Found) Result = FCTrue;
}

// Constraint checking.

namespace {

// Turns a check on for an argument of TRUE, else off.
void SetTypeCheck(TTypeCheck Check, TFunctionCall& FunCall, TTavoContext* Context) {
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const bool On = FunCall.EvaluateArgument(0, Context)->Equals(FCTrue);
  TTypeChecks Checks = Engine.GetTypeChecks();
  if (On)
    Checks.Include(Check);
  else
    Checks.Exclude(Check);
  Engine.SetTypeChecks(Checks);
  // The parser takes the engine's settings when it is fetched; fetching it
  // now lets the text still being read follow the new setting.
  if (Check == tcStatic) Engine.GetParserObject();
}

}  // namespace

TAVO_DEFINE_FUNCTION(TGetDynamicCheckFunction, u"get-dynamic-constraint-checking",
                     u"Returns TRUE if slot values are checked against their types when facts get them", u"", 0, 0,
                     Result = EngineOf(FunCall, Context).GetTypeChecks().Contains(tcDynamic) ? FCTrue : FCFalse)
TAVO_DEFINE_FUNCTION(TGetStaticCheckFunction, u"get-static-constraint-checking",
                     u"Returns TRUE if the parser checks values against their types", u"", 0, 0,
                     Result = EngineOf(FunCall, Context).GetTypeChecks().Contains(tcStatic) ? FCTrue : FCFalse)
TAVO_DEFINE_FUNCTION(TSetDynamicCheckFunction, u"set-dynamic-constraint-checking",
                     u"Checks slot values against their types when facts get them (TRUE), or not",
                     u" <boolean-expression>", 1, 1, SetTypeCheck(tcDynamic, FunCall, Context))
TAVO_DEFINE_FUNCTION(TSetStaticCheckFunction, u"set-static-constraint-checking",
                     u"Lets the parser check values against their types (TRUE), or not", u" <boolean-expression>", 1, 1,
                     SetTypeCheck(tcStatic, FunCall, Context))

// set-reset-globals, setgen

TAVO_SETUP void TResetGlobalsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"set-reset-globals",
              u"Lets reset bind the global variables anew (TRUE), or not; without an argument gives the setting",
              u" [<boolean-expression>]", 0, 1);
}

void TResetGlobalsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  if (FunCall.GetArgumentCount() == 0) {
    Result = Engine.GetResetGlobals() ? FCTrue : FCFalse;
    return;
  }
  Result = FunCall.EvaluateArgument(0, Context);
  Engine.SetResetGlobals(Result->Equals(FCTrue));
}

TAVO_SETUP void TSetGenFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"setgen", u"Sets the index from which new symbols are numbered; it never goes back",
              u" <integer-expression>", 1, 1);
}

void TSetGenFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  Engine.SetSymbolIndex(FunCall.Argument(0, Context)->GetAsInteger());
  // The index as it now stands, which differs from the argument when that
  // asked to go back.
  Result = Make<TTavoValue>(int32_t(Engine.GetSymbolIndex()), dtInteger);
}

// guard, parse

TAVO_SETUP void TGuardFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"guard", u"Runs the calls with the firing rule disabled, so that they cannot activate it again",
              u"<function-call-argument>+", 1, AnyArgumentCount);
}

void TGuardFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  TActivation* Firing = Engine.GetCurrentAgendaItem();
  // The flag alone changes: SetEnabled would compile the rule anew, and
  // take the firing activation with it.
  struct TRestore {
    TInferenceEngine& Engine;
    TRule* Rule;
    bool Enabled;
    ~TRestore() {
      // A guarded call may have taken the rule out of the engine.
      if (Rule && Engine.HoldsRule(Rule)) Rule->SetEnabledFlag(Enabled);
    }
  } Restore{Engine, Firing ? Firing->GetRule() : nullptr, true};
  if (Restore.Rule) {
    Restore.Enabled = Restore.Rule->GetEnabled();
    Restore.Rule->SetEnabledFlag(false);
  }
  for (int I = 0; I < FunCall.GetArgumentCount(); ++I) Result = FunCall.EvaluateArgument(I, Context);
}

TAVO_SETUP void TTavoParseFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"parse", u"Reads the text as rule-language constructs and calls; TRUE when it succeeds",
              u"<string-expression>", 1, 1);
}

void TTavoParseFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const String Text = FunCall.Argument(0, Context)->GetAsString();
  Result = FCFalse;
  // A failure of the text passes on to whoever runs the call, as any
  // other failure does.
  if (Engine.Parse(Text)) Result = FCTrue;
}

// The pretty-print family.

TAVO_SETUP void TPrettyPrintFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  // In the order of TPrettyPrintFunctionType.
  static constexpr TFunctionMetaData Kinds[] = {
      {u"ppdeffacts", u"Prints the fact set of the name as a deffacts", u"<deffacts-name>", 1, 1},
      {u"ppdeffunction", u"Prints the function of the name as a deffunction, or a built-in one's help",
       u"<deffunction-name>", 1, 1},
      {u"ppdeftemplate", u"Prints the fact template of the name as a deftemplate", u"<deftemplate-name>", 1, 1},
      {u"ppdefrule", u"Prints the rule of the name as a defrule", u"<rule-name>", 1, 1},
      {u"ppdeftype", u"Prints the defined type of the name as a deftype", u"<deftype-name>", 1, 1},
      {u"ppdefmodule", u"Prints the module of the name as a defmodule", u"<defmodule-name>", 1, 1},
  };
  static_assert(std::size(Kinds) == ppfDefModule + 1);
  SetKindMetaData(*this, Kinds, FType);
}

void TPrettyPrintFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  const String Name = FunCall.Argument(0, Context)->GetAsString();
  auto Unknown = [&](const char16_t* Kind) { return ETavoException(Format(SUnknownName, Kind, Name)); };
  String Text;
  switch (FType) {
    case ppfFactSet: {
      int Index = Engine.GetFactSets() ? Engine.GetFactSets()->IndexOf(Name) : -1;
      if (Index < 0) throw Unknown(u"fact set");
      Text = PrettyPrint(*Engine.GetFactSets()->Get(Index), false);
      break;
    }
    case ppfUserFunction: {
      IUserFunction Function;
      if (!Engine.GetUserFunctions() || !Engine.GetUserFunctions()->TryGetValue(Name, Function) || !Function)
        throw Unknown(u"user function");
      Text = PrettyPrint(Function);
      break;
    }
    case ppfFactTemplate: {
      IFactTemplate Template = Engine.FindFactTemplate(Name);
      if (!Template) throw Unknown(u"fact template");
      Text = PrettyPrint(Template, false);
      break;
    }
    case ppfRule: {
      TRule* Rule = Engine.GetRules() ? Engine.GetRules()->Find(Name) : nullptr;
      if (!Rule) throw Unknown(u"rule");
      Text = PrettyPrint(*Rule, false);
      break;
    }
    case ppfDefType: {
      ITavoDefinedType Type = Engine.FindDefinedType(Name);
      if (!Type) throw Unknown(u"defined type");
      Text = PrettyPrint(Type, false);
      break;
    }
    case ppfDefModule: {
      IModule Module;
      for (int I = 0; I < Engine.GetModules().Count(); ++I)
        if (Engine.GetModules().Get(I)->GetName() == Name) Module = Engine.GetModules().Get(I);
      if (!Module) throw Unknown(u"module");
      Text = PrettyPrint(Module);
      break;
    }
  }
  Engine.PrintOut(Text + u"\r\n");
  Result = FCNil;
}

void TMiscPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  TUserFunctionList& Functions = GetFunctions();
  Functions.Add(Make<TShowFactsFunction>());
  Functions.Add(Make<TAgendaFunction>());
  Functions.Add(Make<TListRulesFunction>());
  Functions.Add(Make<TListDefTypesFunction>());
  Functions.Add(Make<TListFactSetsFunction>());
  Functions.Add(Make<TListTemplatesFunction>());
  Functions.Add(Make<TListFunctionsFunction>());
  Functions.Add(Make<TListDefModulesFunction>());
  Functions.Add(Make<TListFocusStackFunction>());
  Functions.Add(Make<TShowRulesFunction>());
  Functions.Add(Make<TListVariablesFunction>(lvDefGlobals));
  Functions.Add(Make<TListVariablesFunction>(lvBindings));
  for (TIsTavoStructFunctionType Type : {sfIsBinding, sfIsDefType, sfIsDefFunction, sfIsDefGlobal, sfIsDefRule,
                                         sfIsDefFacts, sfIsDefTemplate})
    Functions.Add(Make<TIsTavoStructFunction>(Type));
  Functions.Add(Make<TGetDynamicCheckFunction>());
  Functions.Add(Make<TGetStaticCheckFunction>());
  Functions.Add(Make<TSetDynamicCheckFunction>());
  Functions.Add(Make<TSetStaticCheckFunction>());
  Functions.Add(Make<TResetGlobalsFunction>());
  Functions.Add(Make<TSetGenFunction>());
  Functions.Add(Make<TGuardFunction>());
  Functions.Add(Make<TTavoParseFunction>());
  Functions.Add(Make<TUnDefTypeFunction>());
  Functions.Add(Make<TUnDefRuleFunction>());
  Functions.Add(Make<TUnDefFactsFunction>());
  Functions.Add(Make<TUnDefFunctionFunction>());
  Functions.Add(Make<TUnDefTemplateFunction>());
  for (TPrettyPrintFunctionType Type :
       {ppfFactSet, ppfUserFunction, ppfFactTemplate, ppfRule, ppfDefType, ppfDefModule})
    Functions.Add(Make<TPrettyPrintFunction>(Type));
  Functions.Add(Make<TTimeFunction>());
  for (TSystemDateTimeFunctionType Type : {sdtDateTime, sdtDate, sdtTime})
    Functions.Add(Make<TSystemDateTimeFunction>(Type));
  for (TDateTimeStringFunctionType Type : {dtsStrDateTime, dtsStrDate, dtsStrTime, dtsDateTimeStr, dtsDateStr,
                                           dtsTimeStr, dtsDateTimeStrFormat})
    Functions.Add(Make<TDateTimeStringFunction>(Type));
  for (TDecodeDateTimeFunctionType Type :
       {ddtYear, ddtMonth, ddtDay, ddtHour, ddtMinute, ddtSecond, ddtMillisecond})
    Functions.Add(Make<TDecodeDateTimeFunction>(Type));
  for (TEncodeDateTimeFunctionType Type : {edtDate, edtTime}) Functions.Add(Make<TEncodeDateTimeFunction>(Type));
}

}  // namespace tavo
