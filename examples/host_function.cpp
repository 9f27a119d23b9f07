// A host gives the rule language a function of its own: a component with a
// name, argument counts and a handler, handed to an engine.
#include <iostream>

#include "engine/InferenceEngine.h"
#include "packages/TavoPackages.h"

using namespace tavo;

int main() {
  TInferenceEngine Engine;

  auto* ToFahrenheit = new TCustomUserFunction(&Engine);
  ToFahrenheit->SetFunctionName(u"c-to-f");
  ToFahrenheit->SetComment(u"Converts degrees Celsius to degrees Fahrenheit");
  ToFahrenheit->SetMinArgumentCount(1);
  ToFahrenheit->SetMaxArgumentCount(1);
  ToFahrenheit->OnCall = [](TObject*, const IFunCall& Call, TTavoContext* Context, ITavoValue& Result) {
    double Celsius = Call->GetArgument(0)->Resolve(Context)->GetAsNumeric();
    Result = Make<TTavoValue>(Celsius * 9 / 5 + 32);
  };
  ToFahrenheit->SetEngine(&Engine);

  // The call (c-to-f 21.5), built through the object interface.
  IFunCall Call = Make<TFunctionCall>(&Engine, u"c-to-f");
  Call->AddArgument(21.5, dtFloat);
  TTavoContext Context(nullptr, &Engine);
  ITavoValue Result = Call->Execute(&Context);
  std::cout << StringToUtf8(Call->ToString()) << " = " << StringToUtf8(Result->GetToString()) << "\n";
  return 0;
}
