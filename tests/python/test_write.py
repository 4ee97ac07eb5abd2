"""The way back: every byte of what was read, and what does not fit."""

import datetime
import io
import os
from decimal import Decimal

import numpy
import pytest

import oxrrec
from conftest import SAMPLES, SETS, of

READING_ONLY = ("low_values", "blank_numbers", "lenient_numbers")


@pytest.mark.parametrize("entry", [entry for entry in SETS if entry[3].get("records") != "auto"
                                   and not set(entry[3]) & set(READING_ONLY) and entry[0] not in ("code-pages",)],
                         ids=lambda entry: f"{entry[2]}-{len(entry[3])}")
def test_what_is_written_reads_the_same(entry, tmp_path):
    path, options = of(entry)
    writing = {name: value for name, value in options.items() if name not in ("on_unknown",)}
    records = list(oxrrec.read(path, **options))
    again = tmp_path / "again"
    count = oxrrec.write(again, records, **writing)
    assert count >= len(records) and list(oxrrec.read(again, **options)) == records
    if entry[2] == "customers.rdw.bin":
        with open(path, "rb") as file:
            assert again.read_bytes() == file.read()


COPYBOOK = """       01 R.
          05 N PIC S9(3)V99 COMP-3.
          05 T PIC X(6).
          05 F COMP-2.
          05 D PIC 9(8).
          05 M PIC 9(17).
          05 C PIC 9.
          05 A PIC 99 OCCURS 0 TO 3 DEPENDING ON C.
"""
GOOD = dict(N=Decimal("-1.50"), T='q"\\ä', F=0.5, D=datetime.date(2024, 2, 29),
            M=datetime.datetime(2024, 2, 29, 12, 34, 56, 700000), C=numpy.int64(2), A=[1, 22])


@pytest.fixture
def options(tmp_path):
    (tmp_path / "r.cob").write_text(COPYBOOK)
    return dict(copybook=tmp_path / "r.cob", ccsid=819, records="length2",
                field={"D": {"date": "yyyyMMdd"}, "M": {"date": "yyyyMMddHHmmssSSS"}})


def test_values_of_python(options):
    target = io.BytesIO()
    assert oxrrec.write(target, iter([GOOD, dict(GOOD, F=numpy.float32(2), N=1e2, C=0, A=())]), **options) == 2
    target.seek(0)
    first, second = oxrrec.read(target, **options)
    assert first == GOOD
    assert (second["N"], second["F"], second["A"]) == (100, 2.0, [])


@pytest.mark.parametrize("change, words", [
    (dict(N=Decimal("1234.5")), "N: 1234.5"), (dict(N=Decimal("NaN")), "N: "), (dict(T="too long"), "T: "),
    (dict(F=float("inf")), 'F: "<inf>" is no number'), (dict(C=True), "C: "), (dict(A=[1]), "A: "), (dict(X=1), "X: "),
    (dict(M=datetime.datetime(2024, 2, 29, 12, 34, 56, 789123)), "M: ")])
def test_what_does_not_fit(options, tmp_path, change, words):
    target = tmp_path / "out"
    with pytest.raises(oxrrec.WriteError) as told:
        oxrrec.write(target, [GOOD, dict(GOOD, **change)], **options)
    assert told.value.record == 2 and str(told.value).startswith("record 2, " + words)
    assert told.value.path + ": " == words[:len(told.value.path) + 2]
    assert sorted(os.listdir(tmp_path)) == ["r.cob"]


def test_left_out_and_refused(options, caplog):
    target = io.BytesIO()
    assert oxrrec.write(target, [dict(GOOD, N=1000), GOOD], on_error="skip", **options) == 1
    assert "record 1, N: " in caplog.text and "1 records left out" in caplog.text
    for record, words in ((dict(GOOD, T=object()), "T: a object is no value"), ([1], "a record is a dict"),
                          ({1: 2}, "names of its fields")):
        with pytest.raises(TypeError, match=words):
            oxrrec.write(target, [record], **options)
    with pytest.raises(oxrrec.OptionError, match="has to be said"):
        oxrrec.write(target, [], **dict(options, records="auto"))
