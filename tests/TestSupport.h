// Helpers shared by the test suites.
#pragma once

#include "common/MekExceptions.h"

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

}  // namespace tavo
