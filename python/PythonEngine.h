// The engine as a Python object: text and files in, facts in and out, runs,
// Python functions callable from rules, and output to a Python callback.
// Failures of the engine become tavo.TavoError with the engine's message; a
// Python exception raised by a callback travels through the engine as an
// engine error and comes out as the TavoError's cause.
#pragma once

#include <pybind11/pybind11.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "PythonValues.h"
#include "engine/InferenceEngine.h"

namespace tavo {

class TCustomUserFunction;

// The Python type tavo.TavoError, made by the module.
extern PyObject* TavoErrorType;

class TPyEngine {
 public:
  TPyEngine();
  ~TPyEngine();
  TPyEngine(const TPyEngine&) = delete;
  TPyEngine& operator=(const TPyEngine&) = delete;

  // Runs the top-level forms of the text or the file; those before a failing
  // form keep their effect.
  void Load(const std::string& Text);
  void LoadFile(const std::string& FileName);
  // The value of one function call's text, as "(+ 1 2)".
  py::object Eval(const std::string& Text);
  void Reset();
  void Clear();
  // The number of rules fired, at most Limit.
  int Run(std::optional<int> Limit);

  // A fact of the template: named slots for a template with slots, fields
  // for an ordered one (made on first use, as the rule language does). The
  // new id, or None when an equal fact is there already.
  py::object AssertFact(const std::string& Template, const py::args& Fields, const py::kwargs& Slots);
  py::object AssertString(const std::string& Text);
  // By id or by a fact read before.
  void Retract(py::handle Fact);
  // The current module's facts, those of one template when it is named.
  py::list Facts(const std::optional<std::string>& Template);
  TPyFact Fact(int Id);

  // Callable becomes callable from rules under Name, with its arguments and
  // result converted; a later definition of the name replaces it.
  void DefineFunction(const std::string& Name, py::function Callable, int MinArguments,
                      std::optional<int> MaxArguments);

  // Takes the text of the standard channel; None sends it to sys.stdout.
  const py::object& GetOnOutput() const { return FOnOutput; }
  void SetOnOutput(py::object Value) { FOnOutput = std::move(Value); }

  // The Python objects held, for the cycle collector; Close frees the
  // engine and lets them go.
  int Traverse(visitproc visit, void* arg) const;
  void Close();

 private:
  struct TFunction {
    String FName;
    TCustomUserFunction* FComponent = nullptr;
    py::object FCallable;
  };

  TInferenceEngine& Engine();
  // Runs Body with engine failures turned into Python exceptions.
  template <class F>
  auto Guarded(F&& Body) -> decltype(Body());
  [[noreturn]] void RaiseEngineError(const String& Message);
  // Keeps a Python error raised inside the engine for the way out, and
  // gives the engine error that carries it there.
  ETavoException HoldPythonError(const String& Where, py::error_already_set& Error);
  void CallFunction(size_t Index, const IFunCall& Call, TTavoContext* Context, ITavoValue& Result);
  void WriteOutput(const String& Text);
  int FactId(py::handle Fact) const;

  std::unique_ptr<TInferenceEngine> FEngine;
  std::vector<TFunction> FFunctions;
  py::object FOnOutput = py::none();
  // The Python error on its way through the engine and the message of the
  // engine error that carries it.
  std::optional<py::error_already_set> FPendingError;
  String FPendingMessage;
  // Calls from Python under way: a callback may call the engine again.
  int FDepth = 0;
};

}  // namespace tavo
