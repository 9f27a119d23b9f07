// A host that knows Tavo only as installed: it makes an engine, gives it a
// rule and a fact, runs it and prints what the rule printed.
#include <iostream>

#include "engine/InferenceEngine.h"

using namespace tavo;

int main() {
  TInferenceEngine Engine;
  Engine.OnPrintOut = [](TObject*, const String&, const String& Text) { std::cout << StringToUtf8(Text); };
  Engine.Parse(u"(defrule greet (visitor ?name) => (printout t \"hello, \" ?name crlf))");
  Engine.Reset();
  Engine.Assert(u"(visitor installed)");
  const int Fired = Engine.Run();
  std::cout << "rules fired: " << Fired << "\n";
  return 0;
}
