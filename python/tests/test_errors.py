"""Failures: the engine's come out as tavo.TavoError with its message."""
import pytest

import tavo
from tavo import Symbol


def test_tavo_error_is_an_exception():
    assert issubclass(tavo.TavoError, Exception)


def test_bad_rule_text_raises_and_earlier_forms_stand(engine):
    with pytest.raises(tavo.TavoError, match="Parsing Error") as caught:
        engine.load("(deftemplate fine (slot a)) (defrule broken (fine (a ?x)) => (printout t ?x)")
    assert "line 1" in str(caught.value)
    assert engine.fact(engine.assert_fact("fine", a=1))["a"] == 1
    with pytest.raises(tavo.TavoError, match="unimplemented or unassigned: no-such-function"):
        engine.load("(no-such-function 1)")


def test_facts_of_unknown_templates_and_slots(engine):
    engine.load("(deftemplate order (slot qty (type INTEGER)))")
    with pytest.raises(tavo.TavoError, match="Unknown fact template: nope"):
        engine.assert_fact("nope", qty=1)
    with pytest.raises(tavo.TavoError, match='No such slot name: "colour"'):
        engine.assert_fact("order", colour=Symbol("red"))
    with pytest.raises(tavo.TavoError, match="Not a INTEGER type"):
        engine.assert_fact("order", qty="many")
    with pytest.raises(TypeError, match="keywords"):
        engine.assert_fact("order", 1)
    with pytest.raises(TypeError, match="not both"):
        engine.assert_fact("order", 1, qty=1)
    engine.assert_fact("point", 1, 2)
    with pytest.raises(tavo.TavoError, match='No such slot name: "x"'):
        engine.assert_fact("point", x=1)
    with pytest.raises(tavo.TavoError, match="Missing Fact Template name"):
        engine.assert_fact("", 1)
    assert engine.facts("order") == [] and len(engine.facts("point")) == 1


def test_missing_facts_and_wrong_fact_arguments(engine):
    with pytest.raises(tavo.TavoError, match="Unable to find fact f-99"):
        engine.retract(99)
    with pytest.raises(tavo.TavoError, match="Unable to find fact f-99"):
        engine.fact(99)
    with pytest.raises(TypeError):
        engine.retract("f-1")
    with pytest.raises(TypeError):
        engine.retract(True)
    with pytest.raises(tavo.TavoError):
        engine.assert_string("(unclosed")


def test_missing_file_and_failing_evaluation(engine, tmp_path):
    with pytest.raises(tavo.TavoError, match="Cannot open file"):
        engine.load_file(tmp_path / "absent.clp")
    with pytest.raises(tavo.TavoError, match="Not a numeric type"):
        engine.eval("(+ 1 a)")
    with pytest.raises(TypeError):
        engine.load(42)


def test_output_callback_raising_fails_the_printing_form(engine):
    def broken(text):
        raise RuntimeError("screen is off")

    engine.on_output = broken
    with pytest.raises(tavo.TavoError, match="printout error: RuntimeError: screen is off") as caught:
        engine.eval('(printout t "x" crlf)')
    assert isinstance(caught.value.__cause__, RuntimeError)
