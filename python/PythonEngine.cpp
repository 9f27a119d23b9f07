#include "PythonEngine.h"

#include <climits>

#include "knowledge/TavoFactTemplate.h"
#include "packages/StandardPackage.h"
#include "packages/TavoPackages.h"

namespace tavo {

PyObject* TavoErrorType = nullptr;

namespace {

// The engine's dynamic type checks for the life of the scope: slot values
// from Python are checked against their slots' types as the rule language's
// parser checks written ones, through the fact's own checks (which also turn
// an int for a float slot into a float).
class TDynamicChecks {
 public:
  explicit TDynamicChecks(TInferenceEngine& Engine) : FEngine(Engine), FFormer(Engine.GetTypeChecks()) {
    Engine.SetTypeChecks(FFormer + TTypeChecks{tcDynamic});
  }
  ~TDynamicChecks() { FEngine.SetTypeChecks(FFormer); }
  TDynamicChecks(const TDynamicChecks&) = delete;
  TDynamicChecks& operator=(const TDynamicChecks&) = delete;

 private:
  TInferenceEngine& FEngine;
  TTypeChecks FFormer;
};

// "ValueError: too cold", or the type's name alone for an empty message.
String PythonErrorText(py::error_already_set& Error) {
  std::string Text = py::str(Error.type().attr("__name__"));
  std::string Message = py::str(Error.value());
  if (!Message.empty()) Text += ": " + Message;
  return Utf8ToString(Text);
}

}  // namespace

TPyEngine::TPyEngine() : FEngine(std::make_unique<TInferenceEngine>()) {
  FEngine->OnPrintOut = [this](TObject*, const String&, const String& Text) { WriteOutput(Text); };
}

TPyEngine::~TPyEngine() { Close(); }

void TPyEngine::Close() {
  // The engine goes first: its functions' handlers refer to the callables.
  FEngine.reset();
  FFunctions.clear();
  FOnOutput = py::none();
  FPendingError.reset();
}

// Py_VISIT wants its arguments named visit and arg.
int TPyEngine::Traverse(visitproc visit, void* arg) const {
  for (const TFunction& Function : FFunctions) Py_VISIT(Function.FCallable.ptr());
  Py_VISIT(FOnOutput.ptr());
  return 0;
}

TInferenceEngine& TPyEngine::Engine() {
  if (!FEngine) RaisePython(TavoErrorType, "the engine has been freed");
  return *FEngine;
}

template <class F>
auto TPyEngine::Guarded(F&& Body) -> decltype(Body()) {
  Engine();
  if (FDepth == 0) FPendingError.reset();
  struct TDepth {
    int& FValue;
    explicit TDepth(int& Value) : FValue(Value) { ++FValue; }
    ~TDepth() { --FValue; }
  } Depth(FDepth);
  try {
    return Body();
  } catch (const EExit&) {
    // (exit) leaves the program, which for a Python host is SystemExit: a
    // host that means to go on catches it.
    PyErr_SetObject(PyExc_SystemExit, py::int_(0).ptr());
    throw py::error_already_set();
  } catch (const EMekException& Error) {
    RaiseEngineError(Error.Message());
  }
}

void TPyEngine::RaiseEngineError(const String& Message) {
  std::optional<py::error_already_set> Cause = std::move(FPendingError);
  FPendingError.reset();
  // The engine may have caught the carrying error on the way and raised
  // another: only the one that holds the message is the Python error's.
  if (Cause && Message.find(FPendingMessage) == String::npos) Cause.reset();
  if (Cause && !Cause->matches(PyExc_Exception)) {
    // KeyboardInterrupt, SystemExit and the like go on as they are.
    Cause->restore();
    throw py::error_already_set();
  }
  py::object Error = py::reinterpret_borrow<py::object>(TavoErrorType)(StringToUtf8(Message));
  if (Cause) PyException_SetCause(Error.ptr(), Cause->value().inc_ref().ptr());
  PyErr_SetObject(TavoErrorType, Error.ptr());
  throw py::error_already_set();
}

ETavoException TPyEngine::HoldPythonError(const String& Where, py::error_already_set& Error) {
  FPendingMessage = Format(SFunctionError, Where, PythonErrorText(Error));
  FPendingError = std::move(Error);
  return ETavoException(FPendingMessage);
}

void TPyEngine::Load(const std::string& Text) {
  Guarded([&] { Engine().Parse(Utf8ToString(Text), true); });
}

void TPyEngine::LoadFile(const std::string& FileName) {
  Guarded([&] { Engine().LoadFromFile(Utf8ToString(FileName)); });
}

py::object TPyEngine::Eval(const std::string& Text) {
  return Guarded([&] { return ToPython(Engine().ParseNExecuteFunCall(Utf8ToString(Text))); });
}

void TPyEngine::Reset() {
  Guarded([&] { Engine().Reset(); });
}

void TPyEngine::Clear() {
  Guarded([&] { Engine().Clear(); });
}

int TPyEngine::Run(std::optional<int> Limit) {
  if (Limit && *Limit < 0) RaisePython(PyExc_ValueError, "the limit of a run cannot be negative");
  return Guarded([&] { return Engine().Run(Limit.value_or(INT_MAX)); });
}

py::object TPyEngine::AssertFact(const std::string& TemplateName, const py::args& Fields, const py::kwargs& Slots) {
  if (!Fields.empty() && !Slots.empty())
    RaisePython(PyExc_TypeError, "a fact has either fields (ordered) or named slots, not both");
  // Every value is converted before the engine is touched.
  std::vector<std::pair<String, ITavoValue>> SlotValues;
  for (auto [Name, Value] : Slots) SlotValues.emplace_back(Utf8ToString(std::string(py::str(Name))), ToTavo(Value));
  ITavoValue FieldValues = Slots.empty() ? ToTavo(py::list(Fields)) : nullptr;
  return Guarded([&]() -> py::object {
    TInferenceEngine& E = Engine();
    const String TavoName = Utf8ToString(TemplateName);
    if (TavoName.empty()) throw ETavoException(SMissingTemplateName);
    IFactTemplate Template = E.FindFactTemplate(TavoName);
    if (!Template) {
      if (!SlotValues.empty()) throw ETavoException(Format(SUnknownFactTemplate, TavoName));
      // An ordered fact of a new name makes its template, as in the rule language.
      Template = E.CreateFactTemplate(TavoName);
    }
    IFact Fact = Template->NewFact();
    {
      TDynamicChecks Checks(E);
      if (Template->IsOrdered()) {
        if (!SlotValues.empty()) throw ETavoException(Format(SInvalidSlotName, SlotValues.front().first));
        Fact->SetValue(SDefaultSlotName, FieldValues);
      } else {
        if (!Fields.empty())
          RaisePython(PyExc_TypeError, TemplateName + " has named slots: give them as keywords");
        for (const auto& [Name, Value] : SlotValues) {
          // A text for a fuzzy slot is an expression over the terms of its
          // type, as when the fact is written in the rule language.
          IFactSlot Slot;
          if (Template->ContainsSlot(Name, Slot) && Slot->IsFuzzy() &&
              (Value->GetDType() == dtString || Value->GetDType() == dtAtom) && Value != FCNil) {
            IFuzzyVariable Variable = Slot->GetFuzzyVariable();
            if (!Variable) throw ETavoException(SNeedFuzzyType);
            Value->SetAsFuzzy(Variable->Parse(Value->GetAsString()));
          }
          Fact->SetValue(Name, Value);
        }
      }
    }
    const int Id = E.Assert(Fact, false);
    return Id < 0 ? py::object(py::none()) : py::object(py::int_(Id));
  });
}

py::object TPyEngine::AssertString(const std::string& Text) {
  return Guarded([&]() -> py::object {
    const int Id = Engine().Assert(Utf8ToString(Text));
    return Id < 0 ? py::object(py::none()) : py::object(py::int_(Id));
  });
}

int TPyEngine::FactId(py::handle Fact) const {
  if (py::isinstance<TPyFact>(Fact)) return Fact.cast<const TPyFact&>().FId;
  if (PyLong_Check(Fact.ptr()) && !PyBool_Check(Fact.ptr())) return Fact.cast<int>();
  RaisePython(PyExc_TypeError, "a fact is given by its id or as a tavo.Fact");
}

void TPyEngine::Retract(py::handle Fact) {
  const int Id = FactId(Fact);
  Guarded([&] {
    TInferenceEngine& E = Engine();
    if (E.GetFacts()->FindFact(Id) < 0) throw ETavoException(Format(SUnableFindFact, Id));
    E.Retract(Id);
  });
}

py::list TPyEngine::Facts(const std::optional<std::string>& Template) {
  return Guarded([&] {
    py::list Result;
    const String Name = Template ? Utf8ToString(*Template) : String();
    for (const IFact& Fact : *Engine().GetFacts()) {
      if (Template && (!Fact->GetTemplate() || Fact->GetTemplate()->GetTemplateName() != Name)) continue;
      Result.append(py::cast(ToPythonFact(*Fact)));
    }
    return Result;
  });
}

TPyFact TPyEngine::Fact(int Id) {
  return Guarded([&] {
    IFact Fact = Engine().GetFacts()->GetFactByID(Id);
    if (!Fact) throw ETavoException(Format(SUnableFindFact, Id));
    return ToPythonFact(*Fact);
  });
}

void TPyEngine::DefineFunction(const std::string& Name, py::function Callable, int MinArguments,
                               std::optional<int> MaxArguments) {
  if (Name.empty()) RaisePython(PyExc_ValueError, "a function needs a name");
  if (MinArguments < 0 || (MaxArguments && *MaxArguments < MinArguments))
    RaisePython(PyExc_ValueError, "the argument counts need 0 <= min_args <= max_args");
  Guarded([&] {
    TInferenceEngine& E = Engine();
    const String FunctionName = Utf8ToString(Name);
    size_t Index = 0;
    while (Index < FFunctions.size() && FFunctions[Index].FName != FunctionName) ++Index;
    if (Index == FFunctions.size()) {
      // The component belongs to the engine, which frees it.
      auto* Component = new TCustomUserFunction(&E);
      Component->SetFunctionName(FunctionName);
      Component->OnCall = [this, Index](TObject*, const IFunCall& Call, TTavoContext* Context, ITavoValue& Result) {
        CallFunction(Index, Call, Context, Result);
      };
      FFunctions.push_back(TFunction{FunctionName, Component, py::none()});
    }
    // A new definition of a name keeps its component, which may be running
    // just now, and gives it the new callable and counts.
    TFunction& Function = FFunctions[Index];
    Function.FCallable = std::move(Callable);
    Function.FComponent->SetMinArgumentCount(MinArguments);
    Function.FComponent->SetMaxArgumentCount(MaxArguments.value_or(AnyArgumentCount));
    Function.FComponent->SetEngine(&E);
  });
}

void TPyEngine::CallFunction(size_t Index, const IFunCall& Call, TTavoContext* Context, ITavoValue& Result) {
  // Copies: the callable may define functions, or itself anew, meanwhile.
  const String Name = FFunctions[Index].FName;
  const py::object Callable = FFunctions[Index].FCallable;
  // The arguments are evaluated first: their failures are the engine's own.
  std::vector<ITavoValue> Arguments;
  for (int I = 0; I < Call->GetArgumentCount(); ++I) Arguments.push_back(ResolvedArgument(*Call, I, Context));
  try {
    py::tuple PyArguments(Arguments.size());
    for (size_t I = 0; I < Arguments.size(); ++I) PyArguments[I] = ToPython(Arguments[I]);
    Result = ToTavo(Callable(*PyArguments));
  } catch (py::error_already_set& Error) {
    throw HoldPythonError(Name, Error);
  } catch (py::builtin_exception& Error) {
    Error.set_error();
    py::error_already_set Fetched;
    throw HoldPythonError(Name, Fetched);
  }
}

void TPyEngine::WriteOutput(const String& Text) {
  try {
    py::str PyText(StringToUtf8(Text));
    if (FOnOutput.is_none())
      py::module_::import("sys").attr("stdout").attr("write")(PyText);
    else
      FOnOutput(PyText);
  } catch (py::error_already_set& Error) {
    throw HoldPythonError(u"printout", Error);
  }
}

}  // namespace tavo
