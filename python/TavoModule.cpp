// The Python module tavo: the engine, symbols, fact snapshots and the error
// type, over the library.
#include <pybind11/operators.h>
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <functional>

#include "PythonEngine.h"
#include "PythonValues.h"

using namespace tavo;

namespace {

std::string Quoted(const std::string& Text) { return py::repr(py::str(Text)); }

// The engine holds Python callables, which may hold the engine: the cycle
// collector learns of them, and breaks such a cycle by freeing the engine.
void SetUpCollection(PyHeapTypeObject* HeapType) {
  PyTypeObject* Type = &HeapType->ht_type;
  Type->tp_flags |= Py_TPFLAGS_HAVE_GC;
  // Py_VISIT wants its arguments named visit and arg.
  Type->tp_traverse = [](PyObject* Self, visitproc visit, void* arg) -> int {
    Py_VISIT(Py_TYPE(Self));
    // An instance whose __init__ has not run yet holds nothing.
    auto* Instance = reinterpret_cast<py::detail::instance*>(Self);
    if (!Instance->get_value_and_holder().holder_constructed()) return 0;
    return py::cast<const TPyEngine&>(py::handle(Self)).Traverse(visit, arg);
  };
  Type->tp_clear = [](PyObject* Self) -> int {
    auto* Instance = reinterpret_cast<py::detail::instance*>(Self);
    if (Instance->get_value_and_holder().holder_constructed()) py::cast<TPyEngine&>(py::handle(Self)).Close();
    return 0;
  };
}

}  // namespace

PYBIND11_MODULE(tavo, Module) {
  Module.doc() = "The Tavo expert-system engine";
  Module.attr("__version__") = TAVO_VERSION;

  // Kept for the life of the process, as the module's own reference.
  TavoErrorType = PyErr_NewExceptionWithDoc("tavo.TavoError", "A failure of the engine, with its message",
                                            PyExc_Exception, nullptr);
  Module.attr("TavoError") = py::handle(TavoErrorType);

  py::class_<TPySymbol>(Module, "Symbol", "A symbol of the rule language; a Python str is a string")
      .def(py::init([](std::string Name) { return TPySymbol{std::move(Name)}; }), py::arg("name"))
      .def_readonly("name", &TPySymbol::FName)
      .def("__str__", [](const TPySymbol& Symbol) { return Symbol.FName; })
      .def("__repr__", [](const TPySymbol& Symbol) { return "Symbol(" + Quoted(Symbol.FName) + ")"; })
      .def("__eq__", [](const TPySymbol& Symbol, py::handle Other) {
        return py::isinstance<TPySymbol>(Other) && Other.cast<const TPySymbol&>().FName == Symbol.FName;
      })
      .def("__hash__", [](const TPySymbol& Symbol) { return std::hash<std::string>()(Symbol.FName); });

  py::class_<TPyFact>(Module, "Fact", "A fact as it stood when it was read")
      .def_readonly("id", &TPyFact::FId)
      .def_readonly("template", &TPyFact::FTemplate)
      .def_readonly("slots", &TPyFact::FSlots, "The named slots of a template fact")
      .def_readonly("fields", &TPyFact::FFields, "The fields of an ordered fact")
      .def_readonly("text", &TPyFact::FText)
      .def("__getitem__", [](const TPyFact& Fact, py::handle Key) -> py::object {
        if (PyUnicode_Check(Key.ptr())) return Fact.FSlots[Key];
        return Fact.FFields[Key];
      })
      .def("__str__", [](const TPyFact& Fact) { return Fact.FText; })
      .def("__repr__", [](const TPyFact& Fact) { return "<Fact f-" + std::to_string(Fact.FId) + " " + Fact.FText + ">"; });

  py::class_<TPyOpaque>(Module, "Opaque", "A value with no Python counterpart, by its kind and printed text")
      .def_readonly("kind", &TPyOpaque::FKind)
      .def_readonly("text", &TPyOpaque::FText)
      .def("__str__", [](const TPyOpaque& Value) { return Value.FText; })
      .def("__repr__", [](const TPyOpaque& Value) { return "<Opaque " + Value.FKind + " " + Value.FText + ">"; });

  py::class_<TPyEngine>(Module, "Engine", py::custom_type_setup(SetUpCollection), "An inference engine")
      .def(py::init<>())
      .def("load", &TPyEngine::Load, py::arg("text"), "Runs the top-level forms of the text")
      .def("load_file", [](TPyEngine& Engine, py::object Path) {
        Engine.LoadFile(py::str(py::module_::import("os").attr("fspath")(Path)));
      }, py::arg("path"), "Runs the top-level forms of the file")
      .def("eval", &TPyEngine::Eval, py::arg("text"), "The value of one function call, as \"(+ 1 2)\"")
      .def("reset", &TPyEngine::Reset)
      .def("clear", &TPyEngine::Clear)
      .def("run", &TPyEngine::Run, py::arg("limit") = py::none(), "Fires rules, at most limit; gives how many fired")
      .def("assert_fact", &TPyEngine::AssertFact, py::arg("template"),
           "assert_fact(template, *fields, **slots): the new fact's id, or None for a duplicate")
      .def("assert_string", &TPyEngine::AssertString, py::arg("text"),
           "Asserts the fact written in the rule language; its id, or None for a duplicate")
      .def("retract", &TPyEngine::Retract, py::arg("fact"), "Retracts the fact of the id or tavo.Fact")
      .def("facts", &TPyEngine::Facts, py::arg("template") = py::none(), "The facts, of one template when named")
      .def("fact", &TPyEngine::Fact, py::arg("id"))
      .def("define_function", &TPyEngine::DefineFunction, py::arg("name"), py::arg("function"),
           py::arg("min_args") = 0, py::arg("max_args") = py::none(),
           "Makes a Python function callable from rules")
      .def_property("on_output", &TPyEngine::GetOnOutput, &TPyEngine::SetOnOutput,
                    "Called with the text of the standard channel; None writes it to sys.stdout");
}
