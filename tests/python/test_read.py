"""Records as dicts: equal to the lines of the program, bad fields, and what an iterator owes to its thread."""

import copy
import datetime
import gc
import io
import os
import pickle
import resource
import weakref
from decimal import Decimal

import pytest

import oxrrec
from conftest import KINDS, SAMPLES, SETS, lines_of, of


def as_floats(line, record):
    """The value of a line with doubles where Python has floats; the type is part of what is compared."""
    if isinstance(line, dict):
        return {key: as_floats(value, record.get(key)) for key, value in line.items()}
    if isinstance(line, list):
        return [as_floats(*pair) for pair in zip(line, record, strict=True)]
    return float(line) if isinstance(record, float) else line


@pytest.mark.parametrize("entry", SETS, ids=lambda entry: f"{entry[2]}-{len(entry[3])}")
def test_dicts_are_the_lines_of_the_program(entry):
    path, options = of(entry)
    reading = oxrrec.read(path, **options)
    assert isinstance(reading, oxrrec.Records)
    lines, records = lines_of(path, options), list(reading)
    assert len(records) == len(lines) > 0
    lines = [as_floats(*pair) for pair in zip(lines, records)]
    assert [repr(dict(record)) for record in records] == [repr(line) for line in lines]


@pytest.mark.parametrize("pattern, text, value", [
    ("yyyyMMdd", "20240229", datetime.date(2024, 2, 29)),
    ("HHmmss", "123456", datetime.time(12, 34, 56)),
    ("yyyyMMddHHmmssSSS", "20240229123456789", datetime.datetime(2024, 2, 29, 12, 34, 56, 789000)),
    ("yyyyMMddHHmmssSSSSSSSSS", "20240229123456789123004", datetime.datetime(2024, 2, 29, 12, 34, 56, 789123)),
    ("yyyyMM", "202402", "2024-02"),  # no date of Python's
])
def test_dates(tmp_path, pattern, text, value):
    (tmp_path / "d.cob").write_text(f"       01 R.\n          05 D PIC 9({len(text)}).\n          05 T PIC X(10).\n")
    record, = oxrrec.read(io.BytesIO(text.encode() + b"2024-02-29"), copybook=tmp_path / "d.cob", ccsid=819,
                          field={"D": {"date": pattern}})
    assert record == {"D": value, "T": "2024-02-29"}
    chunk, = oxrrec.columns(io.BytesIO(text.encode() + b"2024-02-29"), copybook=tmp_path / "d.cob", ccsid=819,
                            field={"D": {"date": pattern}})
    assert chunk["D"].tolist() == [value]


def test_bad_fields(bad_parts, parts):
    with pytest.raises(oxrrec.FieldError) as told, oxrrec.read(bad_parts, **parts) as records:
        before = [next(records), next(records)]
        next(records)
    error = told.value
    assert (len(before), error.record, error.offset, error.path) == (2, 3, 156, "PART-NO")
    assert str(error) == f"{bad_parts}: record 3, byte 156, PART-NO: {error.reason}; bytes 32 4F 34 31 37"
    assert list(oxrrec.read(bad_parts, on_error="skip", **parts)) == [
        record for record in oxrrec.read(bad_parts, on_error="null", **parts) if not record.errors]
    bad = [record for record in oxrrec.read(bad_parts, on_error="null", **parts) if record.errors]
    assert [(record.number, record.offset, record["PART-NO"]) for record in bad] == [(3, 156, None)]
    assert [error.path for error in bad[0].errors] == ["PART-NO", "PART-CODE.PART-FAMILY"]


@pytest.mark.parametrize("change, error, words", [
    (dict(records="rdw"), oxrrec.RecordError, "record 1 at byte 0"),
    (dict(recods="rdw"), TypeError, "is 'records' meant"),
    (dict(records="rwd"), oxrrec.OptionError, "is none of"),
    (dict(copybook="nowhere.cob"), oxrrec.CopybookError, "nowhere.cob"),
    (dict(ccsid=99999), oxrrec.Error, "99999"),
    (dict(ccsid=None), TypeError, "needs the option 'ccsid'"),
    (dict(field="NO-SUCH:date=yyyy"), oxrrec.OptionError, "NO-SUCH"),
    (dict(nest={"A": "B"}), oxrrec.OptionError, "no --when tells which records are A"),
    (dict(skip_header=10000), oxrrec.FileError, "has only 390 bytes"),
    (dict(flat="yes"), TypeError, "flat is True or False"),
])
def test_what_is_refused(parts, change, error, words):
    with pytest.raises(error, match=words):
        list(oxrrec.read(os.path.join(SAMPLES, "parts.bin"), **dict(parts, **change)))


def test_inputs(parts):
    path = os.path.join(SAMPLES, "parts.bin")
    expected = list(oxrrec.read(path, **parts))
    with open(path, "rb") as file:
        content = file.read()
        file.seek(0)
        assert list(oxrrec.read(file, **parts)) == expected
    assert list(oxrrec.read(io.BytesIO(b"head" + content), skip_header=4, **parts)) == expected
    assert list(oxrrec.read(path, range=(78, 234), **parts)) == expected[1:3]

    class Parts(io.BytesIO):
        """Gives what is there in parts, and as other kinds of bytes."""
        kind, most = bytes, 7

        def read(self, size):
            return self.kind(super().read(min(size, self.most)))
    for kind, call in ((bytes, oxrrec.read), (bytearray, oxrrec.read), (memoryview, oxrrec.read), (bytes, oxrrec.columns)):
        given = Parts(content)
        given.kind = kind
        given.records = call(given, **parts)
        gone = weakref.ref(given)
        assert call is oxrrec.columns or list(given.records) == expected
        del given
        gc.collect()
        assert gone() is None

    class Failing:
        def read(self, size):
            raise RuntimeError("no line")
    with pytest.raises(RuntimeError, match="no line"):
        list(oxrrec.read(Failing(), **parts))
    with pytest.raises(TypeError, match="open as text"), open(path, encoding="latin-1") as text:
        list(oxrrec.read(text, **parts))
    records = oxrrec.read(path, **parts)
    next(records)
    records.close()
    assert list(records) == []


@pytest.mark.parametrize("call, options", [
    (oxrrec.read, {}), (oxrrec.columns, dict(rows=2)), (oxrrec.read, dict(nest={"ORDER-LINE": "ORDER-HEAD"}))])
@pytest.mark.parametrize("end", [lambda given: given.close(), lambda given: given.__exit__(None, None, None), None])
def test_half_way(call, options, end):
    """Who is closed gives nothing more, and who is closed or dropped lets go of its input at once."""
    file = Repeated(4000, "orders.txt")
    gone = weakref.ref(file)
    given = call(file, copybook=os.path.join(SAMPLES, "orders.cob"), ccsid=819, records="lines", when=KINDS, **options)
    next(given)
    del file
    assert gone() is not None
    if end is not None:
        end(given)
        assert gone() is None and list(given) == []
    del given
    assert gone() is None


def test_what_ends_the_work_comes_after_open_parents():
    """Whatever it is: here the file's own read()."""
    class Ending(io.BytesIO):
        def read(self, size):
            return super().read(min(size, 40)) or self.end()

        def end(self):
            raise OSError("gone")
    with open(os.path.join(SAMPLES, "orders.txt"), "rb") as file:
        records = oxrrec.read(Ending(file.read()), copybook=os.path.join(SAMPLES, "orders.cob"), ccsid=819,
                              records="lines", when=KINDS, nest={"ORDER-LINE": "ORDER-HEAD"})
    # The last line had no end yet.
    assert [len(next(records)["ORDER-LINE"]) for _ in range(2)] == [2, 0]
    with pytest.raises(OSError, match="gone"):
        next(records)


@pytest.mark.parametrize("again", [copy.copy, copy.deepcopy, lambda record: pickle.loads(pickle.dumps(record))])
def test_copies_know_their_place(bad_parts, parts, again):
    orders = dict(copybook=os.path.join(SAMPLES, "orders.cob"), ccsid=819, records="lines", when=KINDS)
    for record in [*oxrrec.read(bad_parts, on_error="null", **parts), *oxrrec.read(os.path.join(SAMPLES, "orders.txt"), **orders)]:
        made = again(record)
        assert type(made) is oxrrec.Record and made == record
        assert (made.number, made.offset, made.kind) == (record.number, record.offset, record.kind)
        assert list(map(str, made.errors)) == list(map(str, record.errors))
        assert [error.path for error in made.errors] == [error.path for error in record.errors]


def test_notes_are_logged(caplog):
    orders = dict(copybook=os.path.join(SAMPLES, "orders.cob"), ccsid=819, records="auto")
    next(oxrrec.read(os.path.join(SAMPLES, "orders.txt"), allow_extra=True, **orders))
    assert "all records are read as ORDER-HEAD" in caplog.text and "--records lines" in caplog.text


def test_records_are_collected(parts):
    record = next(oxrrec.read(os.path.join(SAMPLES, "parts.bin"), **parts))
    record["SELF"] = record
    gc.collect()
    before = sum(isinstance(thing, oxrrec.Record) for thing in gc.get_objects())
    del record
    gc.collect()
    assert sum(isinstance(thing, oxrrec.Record) for thing in gc.get_objects()) == before - 1


class Repeated:
    """An input of a sample over and over."""

    def __init__(self, times, sample="parts.bin"):
        with open(os.path.join(SAMPLES, sample), "rb") as file:
            self.part = file.read()
        self.left = times * len(self.part)

    def read(self, size):
        count = min(size // len(self.part) * len(self.part), self.left)
        self.left -= count
        return self.part * (count // len(self.part))


def test_memory_is_flat(parts):
    def most():
        return resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    assert sum(1 for _ in oxrrec.read(Repeated(2000), **parts)) == 10000
    before = most()
    assert sum(1 for _ in oxrrec.read(Repeated(40000), **parts)) == 200000
    assert most() - before < 4000  # KiB, of 15 MB read


def test_one_thread_at_a_time(parts):
    """Whoever asks while another one is served is refused, and a file's own read() may be the one who asks."""
    class Asking(Repeated):
        def read(self, size):
            told.append(pytest.raises(ValueError, next, records).match("another thread") if records else None)
            told.append(pytest.raises(ValueError, records.close) if records else None)
            return super().read(size)
    told, records = [], None
    records = oxrrec.read(Asking(40000), **parts)
    assert sum(1 for _ in records) == 200000 and any(told)


def test_what_is_left_out_has_no_room(tmp_path, parts):
    """A file of bad records alone ends, and a record too many ends what comes after those before it."""
    bad = Repeated(2000)
    bad.part = bad.part.replace(b"0", b"?").replace(b"1", b"?")
    bad.left = 2000 * len(bad.part)
    assert list(oxrrec.read(bad, on_error="skip", **parts)) == []
    bad.left = 2000 * len(bad.part)
    assert list(oxrrec.columns(bad, on_error="skip", rows=10, **parts)) == []
    with open(os.path.join(SAMPLES, "parts.bin"), "rb") as file:
        records = oxrrec.read(io.BytesIO(file.read() + b"part"), **parts)
    seen = []
    with pytest.raises(oxrrec.RecordError, match="the input: record 6 at byte 390") as told:
        seen.extend(record.number for record in records)
    assert told.value.record == 6 and list(records) == []
