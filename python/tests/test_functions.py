"""Python functions called from rules."""
import gc
import weakref

import pytest

import tavo
from tavo import Symbol


def test_rule_calls_python_function_with_converted_arguments_and_result(engine, output):
    engine.define_function("c-to-f", lambda celsius: celsius * 9 / 5 + 32, 1, 1)
    engine.load('(defrule convert (celsius ?c) => (printout t ?c "C is " (c-to-f ?c) "F" crlf))')
    engine.reset()
    engine.assert_fact("celsius", 100)
    assert engine.run() == 1
    assert output == ["100C is 212.0000F\r\n"]


def test_engine_checks_the_argument_counts(engine):
    engine.define_function("pair", lambda a, b=0: [a, b], 1, 2)
    assert engine.eval("(pair 1)") == [1, 0]
    with pytest.raises(tavo.TavoError, match="Too few arguments for pair"):
        engine.eval("(pair)")
    with pytest.raises(tavo.TavoError, match="Too many arguments for pair"):
        engine.eval("(pair 1 2 3)")
    engine.define_function("any", lambda *args: len(args))
    assert engine.eval("(any)") == 0 and engine.eval("(any 1 2 3 4 5 6 7 8 9 10 11 12)") == 12
    with pytest.raises(ValueError):
        engine.define_function("bad", print, 2, 1)
    with pytest.raises(ValueError):
        engine.define_function("", print)


def test_function_may_call_back_into_the_engine(engine):
    def remember(name):
        engine.assert_fact("seen", name)
        return True

    engine.define_function("remember", remember, 1, 1)
    engine.load("(defrule note (visitor ?n) => (remember ?n))"
                "(defrule greet (seen ?n) => (assert (greeted ?n)))")
    engine.reset()
    engine.assert_fact("visitor", Symbol("ann"))
    assert engine.run() == 2
    assert engine.facts("greeted")[0].fields == (Symbol("ann"),)


def test_a_new_definition_replaces_the_function_even_while_it_runs(engine):
    def first():
        engine.define_function("step", lambda: 2, 0, 0)
        return 1

    engine.define_function("step", first, 0, 0)
    assert engine.eval("(step)") == 1
    assert engine.eval("(step)") == 2
    with pytest.raises(tavo.TavoError, match="Too many arguments"):
        engine.eval("(step 1)")


def test_python_exception_becomes_the_cause_of_a_tavo_error(engine, output):
    def thermometer(value):
        if value < -273:
            raise ValueError("below absolute zero")
        return value

    engine.define_function("thermometer", thermometer, 1, 1)
    engine.load('(defrule read (t ?v) => (printout t (thermometer ?v) crlf))')
    engine.reset()
    engine.assert_fact("t", 20)
    engine.assert_fact("t", -300)
    with pytest.raises(tavo.TavoError, match="thermometer error: ValueError: below absolute zero") as caught:
        engine.run()
    assert isinstance(caught.value.__cause__, ValueError)
    # The failed activation is gone and the engine goes on with the others.
    assert engine.run() == 1
    assert output == ["20\r\n"]


def test_a_result_without_counterpart_is_a_type_error_inside(engine):
    engine.define_function("bad", lambda: {1: 2}, 0, 0)
    with pytest.raises(tavo.TavoError, match="bad error: TypeError") as caught:
        engine.eval("(bad)")
    assert isinstance(caught.value.__cause__, TypeError)


def test_keyboard_interrupt_passes_through_as_it_is(engine):
    def interrupted():
        raise KeyboardInterrupt

    engine.define_function("stop", interrupted, 0, 0)
    with pytest.raises(KeyboardInterrupt):
        engine.eval("(stop)")
    assert engine.eval("(+ 1 1)") == 2


def test_engine_held_by_its_own_function_is_collected():
    engine = tavo.Engine()
    engine.define_function("count", lambda: len(engine.facts("none")), 0, 0)
    engine.on_output = lambda text: engine.facts()
    assert engine.eval("(count)") == 0
    ref = weakref.ref(engine)
    del engine
    gc.collect()
    assert ref() is None
