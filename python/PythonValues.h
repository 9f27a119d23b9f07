// Values between Python and the engine. A Python str is a string of the rule
// language and a tavo.Symbol a symbol, so that a text never changes kind on
// the way; int, float and lists (multifields) map to their kinds, None to
// nil (both ways) and a bool to the symbol TRUE or FALSE. Facts come out as
// snapshots.
#pragma once

#include <pybind11/pybind11.h>

#include <string>

#include "core/TavoValue.h"
#include "knowledge/TavoFacts.h"

namespace tavo {

namespace py = pybind11;

// A symbol of the rule language, by its name.
struct TPySymbol {
  std::string FName;
};

// A fact as it stood when it was read: its id and template, the named slots
// of a template fact or the fields of an ordered one, and its printed form.
// A snapshot holds nothing of the engine, so it may outlive it.
struct TPyFact {
  int FId = -1;
  std::string FTemplate;
  py::dict FSlots;
  py::tuple FFields;
  std::string FText;
};

// A value with no Python counterpart (a fuzzy set, a function call, an
// object), by the name of its kind and its printed text. It is for reading:
// it does not go back into the engine.
struct TPyOpaque {
  std::string FKind;
  std::string FText;
};

// Sets a Python exception of the type with the message and throws it to
// pybind11.
[[noreturn]] void RaisePython(PyObject* Type, const std::string& Message);

// A Python value as a fresh engine value; TypeError for a type with no
// counterpart and for a list within a list (multifields are flat),
// OverflowError for an int outside the engine's 32 bits. A tavo.Fact stands
// for its fact id.
ITavoValue ToTavo(py::handle Object);
// An engine value as a Python value; a fact id is its number.
py::object ToPython(const ITavoValue& Value);
TPyFact ToPythonFact(TFact& Fact);

}  // namespace tavo
