// The standard package's functions that save and load knowledge: a whole
// expert system, or the facts alone, to and from files.
#include "engine/InferenceEngine.h"
#include "packages/StandardPackage.h"

namespace tavo {

TAVO_SETUP void TLoadFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"load", u"Loads the constructs of a file into the expert system, which is neither cleared nor reset",
              u"<filename>", 1, 1);
}

void TLoadFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  EngineOf(FunCall, Context).LoadFromFile(FunCall.Argument(0, Context)->GetAsString());
  Result = FCTrue;
}

TAVO_SETUP void TSaveFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"save", u"Saves the whole expert system to a file as text that load reads back", u"<filename>", 1, 1);
}

void TSaveFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  EngineOf(FunCall, Context).SaveToFile(FunCall.Argument(0, Context)->GetAsString());
  Result = FCTrue;
}

TAVO_SETUP void TLoadFactsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"load-facts", u"Asserts the facts written in a file", u"<filename>", 1, 1);
}

void TLoadFactsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  EngineOf(FunCall, Context).LoadFactsFromFile(FunCall.Argument(0, Context)->GetAsString());
  Result = FCTrue;
}

TAVO_SETUP void TSaveFactsFunction::InitMetaData() {
  TTavoUserFunction::InitMetaData();
  SetMetaData(u"save-facts", u"Saves the facts to a file, only those of the given templates when any are named",
              u"<file-name> [<fact-template-name>+]", 1, AnyArgumentCount);
}

void TSaveFactsFunction::Call(TFunctionCall& FunCall, TTavoContext* Context, ITavoValue& Result) {
  TTavoUserFunction::Call(FunCall, Context, Result);
  const String FileName = FunCall.Argument(0, Context)->GetAsString();
  std::vector<String> Templates;
  for (int I = 1; I < FunCall.GetArgumentCount(); ++I) Templates.push_back(FunCall.Argument(I, Context)->GetAsString());
  // Several names make one file of their facts, behind one byte-order mark.
  EngineOf(FunCall, Context).SaveFactsToFile(FileName, Templates);
  Result = FCTrue;
}

}  // namespace tavo
