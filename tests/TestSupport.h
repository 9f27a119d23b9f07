// Helpers shared by the test suites.
#pragma once

#include <initializer_list>

#include "common/MekExceptions.h"
#include "core/TavoVectors.h"

namespace tavo {

// The message of the failure that Action raises, or "(no failure)".
template <class F>
String FailureOf(F&& Action) {
  try {
    Action();
  } catch (const EMekException& E) {
    return E.Message();
  }
  return u"(no failure)";
}

// Values made in one call, for building test data.
namespace testvalues {

inline ITavoValue Int(int32_t Value) { return Make<TTavoValue>(Value, dtInteger); }
inline ITavoValue Flt(double Value) { return Make<TTavoValue>(Value); }
inline ITavoValue Atom(const char16_t* Text) { return Make<TTavoValue>(String(Text), dtAtom); }
inline ITavoValue Str(const char16_t* Text) { return Make<TTavoValue>(String(Text), dtString); }
inline ITavoValue Var(const char16_t* Name) { return Make<TTavoValue>(String(Name), dtVariable); }
inline ITavoValue List(std::initializer_list<ITavoValue> Items) {
  IValueVector Vector = Make<TValueVector>();
  for (const ITavoValue& Item : Items) Vector->Add(Item);
  return Make<TTavoValue>(Vector);
}

}  // namespace testvalues

}  // namespace tavo
