"""Loading knowledge, running it, and the facts going in and out."""
import pytest

import tavo
from tavo import Symbol

ORDERS = """
(deftemplate order (slot item (type SYMBOL)) (slot qty (type INTEGER)) (slot price (type FLOAT))
  (multislot tags))
(defrule big-order (order (item ?i) (qty ?q&:(> ?q 10)))
  => (printout t "big order of " ?i crlf))
"""


def test_rule_fires_on_asserted_fact_and_prints_through_callback(engine, output):
    engine.load(ORDERS)
    engine.reset()
    first = engine.assert_fact("order", item=Symbol("nuts"), qty=50)
    engine.assert_fact("order", item=Symbol("bolts"), qty=5)
    assert engine.run() == 1
    assert output == ["big order of nuts\r\n"]
    assert engine.fact(first).slots["qty"] == 50


def test_load_file_takes_a_path(engine, output, tmp_path):
    path = tmp_path / "orders.clp"
    path.write_text(ORDERS + '(defrule hello => (printout t "héllo ✓" crlf))', encoding="utf-8")
    engine.load_file(path)
    engine.reset()
    assert engine.run() == 1
    assert output == ["héllo ✓\r\n"]


def test_run_stops_at_the_limit_and_goes_on_later(engine):
    engine.load("(defrule count (n ?x&:(< ?x 5)) => (assert (n (+ ?x 1))))")
    engine.reset()
    engine.assert_fact("n", 0)
    assert engine.run(limit=2) == 2
    assert engine.run(0) == 0
    assert engine.run() == 3
    assert sorted(f.fields[0] for f in engine.facts("n")) == [0, 1, 2, 3, 4, 5]
    with pytest.raises(ValueError):
        engine.run(-1)


def test_facts_read_back_as_snapshots(engine):
    engine.load(ORDERS)
    engine.reset()
    ordered = engine.assert_fact("point", 1, 2.5, "label", Symbol("red"))
    templated = engine.assert_fact("order", item=Symbol("bolts"), qty=3, price=2, tags=["a", Symbol("b")])
    point = engine.fact(ordered)
    assert (point.id, point.template, point.slots) == (ordered, "point", {})
    assert point.fields == (1, 2.5, "label", Symbol("red"))
    assert point[3] == Symbol("red")
    order = engine.fact(templated)
    # The int for a FLOAT slot becomes a float, as in the rule language.
    assert order.slots == {"item": Symbol("bolts"), "qty": 3, "price": 2.0, "tags": ["a", Symbol("b")]}
    assert order["price"] == 2.0 and isinstance(order["price"], float)
    assert str(order) == order.text and order.text.startswith("(order ")
    assert [f.template for f in engine.facts()] == ["Initial-Fact", "point", "order"]
    assert [f.id for f in engine.facts("order")] == [templated]
    # A snapshot stays as it was read.
    engine.retract(templated)
    assert order.slots["qty"] == 3


def test_duplicate_fact_gives_none_and_retract_takes_id_or_fact(engine):
    engine.reset()
    first = engine.assert_fact("colour", Symbol("red"))
    assert engine.assert_fact("colour", Symbol("red")) is None
    second = engine.assert_string('(colour "red")')
    assert second not in (None, first)
    engine.retract(first)
    engine.retract(engine.fact(second))
    assert engine.facts("colour") == []


def test_reset_and_clear(engine, output):
    engine.load(ORDERS)
    engine.reset()
    engine.assert_fact("order", item=Symbol("nuts"), qty=50)
    engine.reset()
    assert [f.template for f in engine.facts()] == ["Initial-Fact"]
    engine.clear()
    assert engine.facts() == []
    with pytest.raises(tavo.TavoError, match="Unknown fact template: order"):
        engine.assert_fact("order", qty=1)


def test_output_goes_to_sys_stdout_without_a_callback(capsys):
    engine = tavo.Engine()
    assert engine.on_output is None
    engine.eval('(printout t "to stdout" crlf)')
    assert capsys.readouterr().out == "to stdout\r\n"
    engine.on_output = lambda text: None
    engine.eval('(printout t "dropped" crlf)')
    assert capsys.readouterr().out == ""


def test_exit_in_loaded_text_is_system_exit(engine, output):
    with pytest.raises(SystemExit):
        engine.load('(printout t "before" crlf) (exit) (printout t "after" crlf)')
    assert output == ["before\r\n"]
