"""Layouts and options."""

import os

import pytest

import oxrrec
from conftest import PROGRAM, SAMPLES, program


@pytest.mark.parametrize("name", ["customers", "parts", "orders"])
def test_a_layout_is_that_of_the_program(name):
    copybook = os.path.join(SAMPLES, name + ".cob")
    layout = oxrrec.Layout(copybook)
    assert str(layout) == program("layout", "--copybook", copybook)
    shown = [line.split() for line in str(layout).splitlines()[1:]]
    assert [(str(field.level), field.name or "FILLER") for field in layout] == [tuple(line[:2]) for line in shown]
    assert [("var" if field.offset is None else str(field.offset), str(field.size), field.kind)
            for field in layout] == [tuple(line[2:5]) for line in shown]


def test_fields_of_a_layout():
    layout = oxrrec.Layout(os.path.join(SAMPLES, "customers.cob"))
    movement = layout["MOVEMENT"]
    assert (movement.occurs, movement.depending_on, movement.is_group) == ((0, 5), "MOVEMENT-COUNT", True)
    rating = layout["RATING"]
    assert (rating.digits, rating.scale, rating.is_signed) == (5, 2, True)
    assert "NOBODY" not in layout and layout[0].path == ""
    parts = oxrrec.Layout(os.path.join(SAMPLES, "parts.cob"))
    assert parts["PART-CODE"].redefines == "PART-NO"
    assert oxrrec.Layout(os.path.join(SAMPLES, "orders.cob"), record="order-line").record == "ORDER-LINE"


def test_a_copybook_that_is_not_understood(tmp_path):
    (tmp_path / "bad.cob").write_text("       01 R.\n          05 A PIC 9(3) OCCURS FIVE.\n")
    with pytest.raises(oxrrec.CopybookError) as told:
        oxrrec.Layout(tmp_path / "bad.cob")
    assert (told.value.line, told.value.column) == (2, 32) and told.value.message in str(told.value)


def test_options_are_those_of_the_program():
    """An option of the program that tells what is read is an option here; those of its output are not."""
    text = program("help", "decode")
    without = {"--output", "--to", "--decimals", "--errors", "--check", "--jobs", "--progress", "--no-progress"}
    told = {word.strip(",") for line in text.splitlines() if line.startswith("  ") and "--" in line[:9]
            for word in line.split()[:2] if word.startswith("--")}
    assert {option.removeprefix("--").replace("-", "_") for option in told - without - {"--help"}} == set(oxrrec.options())
    assert PROGRAM and "block_size" in oxrrec.options("write")


@pytest.mark.parametrize("function, call", [
    ("read", lambda options: oxrrec.read("parts.bin", **options)),
    ("write", lambda options: oxrrec.write("parts.out", [], **options)),
    ("layout", lambda options: oxrrec.Layout(**options))])
def test_an_empty_text_is_no_value(function, call, parts):
    """In a command line the next argument would be its value."""
    given = {name: value for name, value in parts.items() if name in oxrrec.options(function)}
    for keyword in oxrrec.options(function):
        with pytest.raises((oxrrec.OptionError, TypeError), match=f"^{keyword} is (empty|True or False)"):
            call(dict(given, **{keyword: ""}))
