#include "packages/MiscPackage.h"

#include <algorithm>

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

  std::vector<IModule> Modules;
  if (ModuleName == u"*")
    for (int I = 0; I < Engine.GetModules().Count(); ++I) Modules.push_back(Engine.GetModules().Get(I));
  else if (!ModuleName.empty())
    Modules.push_back(Engine.GetModules().GetModule(ModuleName));
  else
    Modules.push_back(Engine.GetCurrentModule());

  String Text;
  int Total = 0;
  for (const IModule& Module : Modules) {
    TFacts* Facts = Module == Engine.GetCurrentModule() ? Engine.GetFacts() : Module->GetFacts();
    if (!Facts) continue;
    // Ids print padded to one width, so that sorted text is sorted by id.
    std::vector<String> Lines;
    for (int I = 0; I < Facts->Count() && int32_t(Lines.size()) < Max; ++I) {
      const IFact& Fact = Facts->Get(I);
      if (Fact->GetID() >= Start && Fact->GetID() <= End) Lines.push_back(Fact->GetToIDString());
    }
    std::sort(Lines.begin(), Lines.end());
    Total += int(Lines.size());
    if (ModuleName == u"*") {
      Text += Module->GetName() + u":\r\n";
      for (const String& Line : Lines) Text += u"   " + TrimRight(Line) + u"\r\n";
    } else {
      for (const String& Line : Lines) Text += Line + u"\r\n";
    }
  }
  Text += u"For a total of " + IntToStr(Total) + u" facts.\r\n";
  Engine.PrintOut(Text);
  Result = FCNil;
}

void TMiscPackage::CreateFunctions() {
  TUserPackage::CreateFunctions();
  GetFunctions().Add(Make<TShowFactsFunction>());
}

}  // namespace tavo
