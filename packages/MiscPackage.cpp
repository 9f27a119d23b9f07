#include "packages/MiscPackage.h"

#include <algorithm>
#include <functional>

#include "engine/FactList.h"
#include "engine/InferenceEngine.h"
#include "engine/TavoModule.h"

namespace tavo {

void TShowFactsFunction::InitMetaData() {
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
                  const std::function<std::vector<String>(TModule& Module, bool Current)>& Lines) {
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
  Engine.PrintOut(Text + Format(Total, Count) + u"\r\n");
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

void TAgendaFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"agenda", u"Prints the activations of the current module, of the named one or of all (*)",
              u"[<module-name-expression>|*]", 0, 1);
}

void TAgendaFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  // In agenda order, which is what an agenda is read for; the rest of the
  // family sorts its names.
  PrintListing(Engine, ModuleArgument(FunCall, Context), false, u"for a total of %d activations.",
               [&](TModule& Module, bool Current) {
                 std::vector<String> Lines;
                 TActivationAgenda* Agenda = Current ? Engine.GetAgenda() : Module.GetAgenda();
                 for (int I = 0; Agenda && I < Agenda->Count(); ++I) Lines.push_back(Agenda->GetString(I));
                 return Lines;
               });
  Result = FCNil;
}

void TListRulesFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"list-defrules", u"Prints the names of the rules of the current module, of the named one or of all (*)",
              u"[<module-name-expression>|*]", 0, 1);
}

void TListRulesFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  TInferenceEngine& Engine = EngineOf(FunCall, Context);
  PrintListing(Engine, ModuleArgument(FunCall, Context), true, u"for a total of %d rules.",
               [&](TModule& Module, bool Current) {
                 std::vector<String> Lines;
                 TRules* Rules = Current ? Engine.GetRules() : Module.GetRules();
                 for (int I = 0; Rules && I < Rules->Count(); ++I) Lines.push_back(Rules->Get(I)->GetRuleName());
                 return Lines;
               });
  Result = FCNil;
}

void TMiscPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  GetFunctions().Add(Make<TShowFactsFunction>());
  GetFunctions().Add(Make<TAgendaFunction>());
  GetFunctions().Add(Make<TListRulesFunction>());
}

}  // namespace tavo
