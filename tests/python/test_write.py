"""The way back: every byte of what was read, and what does not fit."""

import datetime
import io
import os
from decimal import Decimal

import numpy
import pandas
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


@pytest.mark.parametrize("change, words", [
    (dict(T=object()), "T: a object is no value"), (dict(T="\ud800"), "T: the text has half of a surrogate pair"),
    (dict(A=[1, {2}]), r"A\(2\): a set is no value"), (dict(A=[{"B": b""}]), r"A\(1\).B: a bytes is"), ({7: 1}, "the keys"),
    (dict(D=numpy.datetime64("2024-02-29")), "D: a numpy.datetime64 is"), (dict(C=numpy.bool_(True)), "C: "),
    (dict(N=10**5000), "N: a int is"), (dict(A=numpy.array([1, 2])), "A: a numpy.ndarray is")])
def test_what_is_no_value(options, caplog, change, words):
    """It is told like what does not fit, after the records before it."""
    target = io.BytesIO()
    with pytest.raises(oxrrec.WriteError, match="^record 2, " + words):
        oxrrec.write(target, [GOOD, GOOD | change, GOOD], **options)
    one = target.getvalue()
    assert oxrrec.write(target, [GOOD, GOOD | change, GOOD], on_error="skip", **options) == 2
    assert target.getvalue() == 3 * one != b"" and "record 2, " in caplog.text


def test_values_that_come_and_go(options):
    """Elements that nobody else keeps, a dict that changes while it is written, and a record that holds itself."""
    class Made(list):
        def __iter__(self):
            return (Decimal(f"{n}.000") for n in (11, 22))

    class Changing(datetime.date):
        def isoformat(self):
            record.clear()
            return "2024-02-29"
    target = io.BytesIO()
    assert oxrrec.write(target, [dict(GOOD, A=Made())], **options) == 1
    assert next(oxrrec.read(io.BytesIO(target.getvalue()), **options))["A"] == [11, 22]
    record = {"D": Changing(2024, 2, 29), "T": "x" * 7}
    with pytest.raises(oxrrec.WriteError):
        oxrrec.write(target, [record], **options)
    record["A"] = [record]
    with pytest.raises(RecursionError):
        oxrrec.write(target, [record], **options)


class Taking(io.RawIOBase):
    """Takes a few bytes at a time, as a pipe may, and then what `last` tells."""

    def __init__(self, last):
        self.got, self.last = b"", last

    def write(self, given):
        if len(self.got) > 20:
            return self.last(given)
        self.got += given[:7]
        return len(given[:7])


def test_a_file_that_takes_less(options):
    whole = io.BytesIO()
    oxrrec.write(whole, [GOOD], **options)
    some = Taking(lambda given: setattr(some, "got", some.got + given) or len(given))
    assert oxrrec.write(some, [GOOD], **options) == 1 and some.got == whole.getvalue()
    for last, words in ((None, "takes no bytes now"), (0, "takes none")):
        with pytest.raises(oxrrec.FileError, match=words):
            oxrrec.write(Taking(lambda given, last=last: last), [GOOD], **options)


def test_nanoseconds_are_refused(options):
    moment = pandas.Timestamp("2024-02-29T12:34:56.789000")
    assert oxrrec.write(io.BytesIO(), [dict(GOOD, M=moment)], **options) == 1
    with pytest.raises(oxrrec.WriteError, match="record 1, M: .*789000004"):
        oxrrec.write(io.BytesIO(), [dict(GOOD, M=moment.replace(nanosecond=4))], **options)


def test_records_that_end_in_an_error(options, tmp_path):
    """It goes through as it is, and there is no file."""
    def failing(after):
        yield from [GOOD] * after
        raise LookupError("no more")
    for after in (0, 3, 10000):
        with pytest.raises(LookupError, match="no more"):
            oxrrec.write(tmp_path / "out", failing(after), **options)
        assert sorted(os.listdir(tmp_path)) == ["r.cob"]


def test_left_out_and_refused(options, caplog):
    target = io.BytesIO()
    assert oxrrec.write(target, [dict(GOOD, N=1000), GOOD], on_error="skip", **options) == 1
    assert "record 1, N: " in caplog.text and "1 record left out" in caplog.text
    with pytest.raises(TypeError, match="a record is a dict, not a list"):
        oxrrec.write(target, [[1]], **options)
    with pytest.raises(TypeError, match="method of Records"):
        oxrrec._oxrrec.Records.close(5)
    with pytest.raises(TypeError, match="not iterable"):
        oxrrec.write(target, 5, **options)
    with pytest.raises(oxrrec.OptionError, match="auto is none of"):
        oxrrec.write(target, [], **dict(options, records="auto"))
