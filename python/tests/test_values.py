"""Values crossing between Python and the rule language, both ways."""
import pytest

import tavo
from tavo import Symbol


def test_symbol_is_a_value_apart_from_str():
    assert Symbol("red") == Symbol("red")
    assert Symbol("red") != "red" and Symbol("red") != Symbol("blue")
    assert {Symbol("red"): 1}[Symbol("red")] == 1
    assert (str(Symbol("red")), repr(Symbol("red")), Symbol("red").name) == ("red", "Symbol('red')", "red")


@pytest.mark.parametrize(
    "value, kind, back",
    [
        ("a b", "dtString", "a b"),
        ("TRUE", "dtString", "TRUE"),
        ("héllo ✓", "dtString", "héllo ✓"),
        (Symbol("red"), "dtAtom", Symbol("red")),
        (7, "dtInteger", 7),
        (-(2**31), "dtInteger", -(2**31)),
        (2.5, "dtFloat", 2.5),
        (True, "dtAtom", Symbol("TRUE")),
        (False, "dtAtom", Symbol("FALSE")),
        (None, "dtAtom", None),
        (Symbol("NIL"), "dtAtom", None),
        ((1, "x", Symbol("y")), "dtList", [1, "x", Symbol("y")]),
    ],
)
def test_python_values_take_their_kind_and_come_back(engine, value, kind, back):
    engine.define_function("same", lambda: value, 0, 0)
    assert engine.eval("(get-type (same))") == Symbol(kind)
    result = engine.eval("(same)")
    assert result == back and type(result) is type(back)


def test_rule_values_reach_python_as_their_python_kinds(engine):
    seen = []
    engine.define_function("see", lambda *args: seen.extend(args))
    engine.eval('(see red "red" 3 3.5 (create$ a 1) (> 2 1) (assert (x)))')
    # A fact id is its number.
    assert seen == [Symbol("red"), "red", 3, 3.5, [Symbol("a"), 1], Symbol("TRUE"), engine.facts("x")[0].id]


FUZZY = """
(deftype temp extends (type FUZZY) (range 0 100)
   (values (term cold (z 10 50)) (term warm (pi 50 20)) (term hot (s 50 90))))
(deftemplate reading (slot sensor) (slot t (type temp)))
"""


def test_fuzzy_values_come_out_opaque_and_go_in_as_expressions(engine):
    engine.load(FUZZY)
    opaque = engine.eval("(create-fuzzy-value temp warm)")
    assert isinstance(opaque, tavo.Opaque) and (opaque.kind, opaque.text) == ("Fuzzy", "warm")
    engine.define_function("same", lambda: opaque, 0, 0)
    with pytest.raises(tavo.TavoError, match="TypeError: a value of type Opaque"):
        engine.eval("(same)")
    # A fuzzy slot reads a text as an expression over its terms.
    reading = engine.fact(engine.assert_fact("reading", sensor=Symbol("s1"), t="very hot"))
    assert reading["t"].kind == "Fuzzy" and reading["t"].text == "very hot"


def test_fact_ids_from_rules_come_and_go_as_ints(engine):
    seen = []
    engine.define_function("see", lambda fact: seen.append(fact) or fact, 1, 1)
    engine.load("(defrule take ?f <- (item ?x) => (retract (see ?f)))")
    engine.reset()
    cup = engine.assert_fact("item", Symbol("cup"))
    assert engine.run() == 1
    assert seen == [cup]
    assert engine.facts("item") == []


def test_unconvertible_python_values_raise_before_the_engine_changes(engine):
    engine.reset()
    with pytest.raises(TypeError, match="type dict"):
        engine.assert_fact("bag", {"a": 1})
    with pytest.raises(TypeError, match="multifield"):
        engine.assert_fact("bag", [1, [2]])
    with pytest.raises(OverflowError):
        engine.assert_fact("bag", 2**31)
    assert engine.facts("bag") == []
