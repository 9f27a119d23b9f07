// Feeds arbitrary text to the engine's Parse, in both error modes: the
// first byte picks the mode, whether top-level calls run, and the error
// limit. The library's own exceptions are a legal answer; a crash, a hang
// or any other exception is not.
//
// Nesting and recursion are bounded by the parser and the call depth guard.
// An unbounded while loop is a legal program that never ends, so "while" is
// taken out of the engine here.
#include <cstddef>
#include <cstdint>
#include <string>

#include "engine/InferenceEngine.h"
#include "language/TavoClipsParser.h"
#include "packages/StandardPackage.h"

using namespace tavo;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* Data, size_t Size) {
  if (Size == 0) return 0;
  const uint8_t Control = Data[0];
  String Text = Utf8ToString(std::string_view(reinterpret_cast<const char*>(Data + 1), Size - 1));
  TInferenceEngine Engine;
  Engine.GetUserFunctions()->RemoveFunction(u"while");
  Engine.SetParserErrorHandling(Control & 1 ? ehRaiseAllAtEnd : ehRaiseImmediate);
  Engine.SetParserMaxErrors((Control >> 2) & 15);
  try {
    Engine.Parse(Text, (Control & 2) != 0);
  } catch (const EMekException&) {
    // EExit and the silent abort are EMekExceptions too.
  }
  return 0;
}
