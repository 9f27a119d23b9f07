#include "PythonValues.h"

#include <cstdint>

#include "knowledge/TavoFactTemplate.h"

namespace tavo {

void RaisePython(PyObject* Type, const std::string& Message) {
  PyErr_SetString(Type, Message.c_str());
  throw py::error_already_set();
}

namespace {

std::string TypeName(py::handle Object) { return py::str(py::type::of(Object).attr("__name__")); }

ITavoValue ToTavo(py::handle Object, bool InList) {
  PyObject* Raw = Object.ptr();
  // nil is the one shared value the reader gives for the symbol nil, in any
  // case; slots know it by identity.
  if (Object.is_none()) return FCNil;
  if (py::isinstance<TPySymbol>(Object)) {
    const String Name = Utf8ToString(Object.cast<const TPySymbol&>().FName);
    return LowerCase(Name) == u"nil" ? FCNil : Make<TTavoValue>(Name, dtAtom);
  }
  if (PyUnicode_Check(Raw)) return Make<TTavoValue>(Utf8ToString(Object.cast<std::string>()), dtString);
  // Before int: a bool is an int to Python.
  if (PyBool_Check(Raw)) return (Raw == Py_True ? FCTrue : FCFalse)->CloneValue();
  if (PyLong_Check(Raw)) {
    int Overflow = 0;
    const long long Value = PyLong_AsLongLongAndOverflow(Raw, &Overflow);
    if (Overflow != 0 || Value < INT32_MIN || Value > INT32_MAX)
      RaisePython(PyExc_OverflowError, std::string(py::str(Object)) + " is outside the engine's 32-bit integers");
    return Make<TTavoValue>(int32_t(Value), dtInteger);
  }
  if (PyFloat_Check(Raw)) return Make<TTavoValue>(PyFloat_AsDouble(Raw));
  if (PyList_Check(Raw) || PyTuple_Check(Raw)) {
    if (InList) RaisePython(PyExc_TypeError, "a multifield holds single values, not another " + TypeName(Object));
    IValueVector Items = Make<TValueVector>();
    for (py::handle Item : Object) Items->Add(ToTavo(Item, true));
    return Make<TTavoValue>(Items);
  }
  if (py::isinstance<TPyFact>(Object)) return Make<TTavoValue>(int32_t(Object.cast<const TPyFact&>().FId), dtFactId);
  RaisePython(PyExc_TypeError, "a value of type " + TypeName(Object) + " has no counterpart in the rule language");
}

}  // namespace

ITavoValue ToTavo(py::handle Object) { return ToTavo(Object, false); }

py::object ToPython(const ITavoValue& Value) {
  if (!Value) return py::none();
  switch (Value->GetDType()) {
    case dtNone:
      return py::none();
    case dtAtom:
      // nil is the empty symbol.
      if (Value->GetText().empty()) return py::none();
      return py::cast(TPySymbol{StringToUtf8(Value->GetText())});
    case dtString:
      return py::str(StringToUtf8(Value->GetText()));
    case dtInteger:
    case dtFactId:
      return py::int_(Value->GetValue().VInteger);
    case dtFloat:
      return py::float_(Value->GetValue().VExtended);
    case dtList: {
      py::list Items;
      for (const ITavoValue& Item : *Value->PeekInterface<TValueVector>()) Items.append(ToPython(Item));
      return Items;
    }
    case dtFact:
      if (TFact* Fact = Value->PeekInterface<TFact>()) return py::cast(ToPythonFact(*Fact));
      return py::none();
    default: {
      // The kind's name without its two-letter prefix: "Fuzzy".
      std::string Kind = StringToUtf8(GetTavoTypeName(Value->GetDType()));
      return py::cast(TPyOpaque{Kind.substr(2), StringToUtf8(Value->GetToString())});
    }
  }
}

TPyFact ToPythonFact(TFact& Fact) {
  TPyFact Result;
  Result.FId = Fact.GetID();
  Result.FText = StringToUtf8(Fact.ToString());
  const IFactTemplate& Template = Fact.GetTemplate();
  if (!Template) return Result;
  Result.FTemplate = StringToUtf8(Template->GetTemplateName());
  if (Template->IsOrdered()) {
    py::object Fields = ToPython(Fact.GetValue(SDefaultSlotName));
    Result.FFields = py::isinstance<py::list>(Fields) ? py::tuple(Fields) : py::make_tuple(Fields);
    return Result;
  }
  const ISlotLayout& Layout = Template->GetLayout();
  for (int I = 0; I < Layout->Count(); ++I) {
    const String& Name = Layout->GetSlot(I)->GetName();
    Result.FSlots[py::str(StringToUtf8(Name))] = ToPython(Fact.GetValue(Name));
  }
  return Result;
}

}  // namespace tavo
