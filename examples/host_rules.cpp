// A host drives an engine: it defines a template and a rule, asserts and
// modifies facts, follows the agenda through events, and runs the rules.
#include <iostream>

#include "engine/InferenceEngine.h"

using namespace tavo;

int main() {
  TInferenceEngine Engine;
  Engine.OnPrintOut = [](TObject*, const String&, const String& Text) { std::cout << StringToUtf8(Text); };
  Engine.OnAddActivation = [](TObject*, int, TActivation* A) {
    std::cout << "agenda + " << StringToUtf8(A->ToString()) << "\n";
  };
  Engine.OnRemoveActivation = [](TObject*, int, TActivation* A) {
    std::cout << "agenda - " << StringToUtf8(A->GetRule()->GetRuleName()) << "\n";
  };
  Engine.OnAssertion = [](TObject*, const IFact& F) { std::cout << "fact   + " << StringToUtf8(F->ToString()) << "\n"; };

  Engine.Parse(u"(deftemplate order (slot item) (slot qty))"
               u"(defrule big-order (order (item ?i) (qty ?q&:(> ?q 10)))"
               u"  => (printout t \"big order of \" ?i crlf))");
  Engine.Reset();

  // Facts from the host: one by text, one built from objects.
  Engine.Assert(u"(order (item bolts) (qty 5))");
  IFact Nuts = Engine.FindFactTemplate(u"order")->NewFact();
  Nuts->SetValue(u"item", Make<TTavoValue>(String(u"nuts"), dtAtom));
  Nuts->SetValue(u"qty", Make<TTavoValue>(50, dtInteger));
  Engine.Assert(Nuts);

  // A change: the fact leaves, its activation goes, and it comes back.
  Engine.BeginFactModify(Nuts);
  Nuts->SetValue(u"qty", Make<TTavoValue>(8, dtInteger));
  Engine.EndFactModify(Nuts);

  Engine.Parse(u"(modify 1 (qty 12))");
  int Fired = Engine.Run();
  std::cout << "rules fired: " << Fired << "\n";
  return 0;
}
