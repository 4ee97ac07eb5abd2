"""Tables: equal to what dicts hold, types of arrays, what is missing."""

import io
import os
from decimal import Decimal

import numpy
import pandas
import pytest

import oxrrec
from conftest import SAMPLES, SETS, of


def flat(record, path=""):
    """A record by the names of columns."""
    if isinstance(record, dict):
        parts = [flat(value, f"{path}.{name}" if path else name) for name, value in record.items()]
    elif isinstance(record, list):
        parts = [flat(value, f"{path}({i})") for i, value in enumerate(record, 1)]
    else:
        return {path: record}
    return {name: value for part in parts for name, value in part.items()}


def value_at(array, row):
    """As read() has it; None for what is missing."""
    value = array[row]
    if value is numpy.ma.masked or value is None or (array.dtype.kind in "fM" and numpy.isnan(value)):
        return None
    return value.item() if isinstance(value, numpy.generic) else value


@pytest.mark.parametrize("rows", [7, 65536])
@pytest.mark.parametrize("entry", [entry for entry in SETS if "nest" not in entry[3] and "on_unknown" not in entry[3]],
                         ids=lambda entry: f"{entry[2]}-{len(entry[3])}")
def test_columns_are_the_dicts(entry, rows):
    path, options = of(entry)
    records = [flat(record) for record in oxrrec.read(path, **options)]
    seen = 0
    for chunk in oxrrec.columns(path, rows=rows, **options):
        count = len(next(iter(chunk.values())))
        assert 0 < count <= rows and {len(array) for array in chunk.values()} == {count}
        for row in range(count):
            given = {name: value_at(array, row) for name, array in chunk.items()}
            expected = dict.fromkeys(chunk) | {name: value for name, value in records[seen + row].items() if name in chunk}
            assert given == expected
        seen += count
    assert seen == len(records)


COPYBOOK = """       01 R.
          05 D PIC 9(8).
          05 M PIC 9(14).
          05 A PIC S9(3)V99.
          05 B PIC 9(20).
          05 I PIC 9(4).
          05 U PIC 9(18) COMP-5.
          05 S BINARY-DOUBLE.
"""
ROWS = [b"20240229" b"20240229123456" b"0012p" b"12345678901234567890" b"0007"
        + (1).to_bytes(8, "big") + b"\x80" + bytes(7),
        b" " * (8 + 14 + 5 + 20 + 4) + b"\xff" * 16]


def table(tmp_path, **options):
    (tmp_path / "r.cob").write_text(COPYBOOK)
    chunk, = oxrrec.columns(io.BytesIO(b"".join(ROWS)), copybook=tmp_path / "r.cob", ccsid=819, blank_numbers="null",
                            field={"D": {"date": "yyyyMMdd"}, "M": {"date": "yyyyMMddHHmmss"}}, **options)
    return chunk


@pytest.mark.parametrize("decimals, kind, first", [("decimal", "O", Decimal("-1.20")), ("float", "f", -1.2),
                                                   ("scaled", "i", -120)])
def test_types_of_arrays(tmp_path, decimals, kind, first):
    chunk = table(tmp_path, decimals=decimals)
    assert [str(array.dtype) for array in (chunk["D"], chunk["M"], chunk["B"], chunk["I"], chunk["U"], chunk["S"])] == [
        "datetime64[D]", "datetime64[us]", "object", "int64", "object", "int64"]
    assert chunk["S"].tolist() == [-2**63, -1]
    assert chunk["A"].dtype.kind == kind and chunk["A"][0] == first and value_at(chunk["A"], 1) is None
    assert chunk["D"][0] == numpy.datetime64("2024-02-29") and numpy.isnat(chunk["D"][1])
    assert chunk["M"][0] == numpy.datetime64("2024-02-29T12:34:56") and numpy.isnat(chunk["M"][1])
    assert list(chunk["B"]) == [12345678901234567890, None] and list(chunk["U"]) == [1, 2**64 - 1]
    assert list(chunk["I"].mask) == [False, True]
    frame = pandas.DataFrame(chunk)
    assert frame["I"].isna().tolist() == [False, True] and frame["D"][0] == pandas.Timestamp("2024-02-29")


def test_kinds_share_columns(tmp_path):
    """A column that kinds of record fill with different things holds objects; what a kind lacks is missing."""
    (tmp_path / "k.cob").write_text("""       01 A.
          05 K PIC X.
          05 V PIC 99.
          05 W PIC 9.
          05 Y PIC 9V9.
       01 B.
          05 K PIC X.
          05 V PIC XX.
          05 X COMP-2.
          05 Y PIC 9V99.
""")
    records = io.BytesIO(b"\0\6A01234" + b"\0\x0eBzz" + b"\x41\x10" + bytes(6) + b"567")
    chunk, = oxrrec.columns(records, copybook=tmp_path / "k.cob", ccsid=819, records="length2",
                            decimals="scaled", when={"K": {"A": "A", "B": "B"}})
    assert {name: [value_at(array, row) for row in (0, 1)] for name, array in chunk.items()} == {
        "K": ["A", "B"], "V": [1, "zz"], "W": [2, None], "X": [None, 1.0], "Y": [340, 567]}
    assert [str(chunk[name].dtype) for name in "KVWXY"] == ["object", "object", "int64", "float64", "int64"]


def test_bad_rows(bad_parts, parts):
    good = [flat(record) for record in oxrrec.read(bad_parts, on_error="skip", **parts)]
    chunk, = oxrrec.columns(bad_parts, on_error="skip", **parts)
    for name, array in chunk.items():
        assert [value_at(array, row) for row in range(4)] == [record[name] for record in good]
    chunks = oxrrec.columns(bad_parts, **parts)
    assert next(chunks)["PART-NO"].tolist() == [10001, 10002]
    with pytest.raises(oxrrec.FieldError, match="record 3, byte 156, PART-NO"):
        next(chunks)
    chunk, = oxrrec.columns(bad_parts, on_error="null", **parts)
    assert chunk["PART-NO"].mask.tolist() == [False, False, True, False, False]


@pytest.mark.parametrize("options, words", [
    (dict(nest=["B:A"]), "nest is not for columns"), (dict(on_unknown="raw", when="STOCK=1:PART-CODE"), "not for columns"),
    (dict(decimals="text"), "decimal|float|scaled"), (dict(rows=0), "rows"), (dict(rows=-1), "rows"),
    (dict(rows=2**32), "rows"), (dict(decimals=None), "decimals: None is none of")])
def test_what_is_refused(parts, options, words):
    with pytest.raises(oxrrec.OptionError, match=words.replace("|", r"\|")):
        oxrrec.columns(os.path.join(SAMPLES, "parts.bin"), **options, **parts)
    for wrong, words in ((dict(rows="10"), "integer"), (dict(recods=1), r"columns\(\) has no option 'recods'")):
        with pytest.raises(TypeError, match=words):
            oxrrec.columns(os.path.join(SAMPLES, "parts.bin"), **wrong, **parts)
