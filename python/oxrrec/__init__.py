"""Record files that a COBOL copybook describes, as dicts, as columns, and back.

>>> import oxrrec
>>> for record in oxrrec.read("customers.rdw.bin", copybook="customers.cob", ccsid=37, records="rdw"):
...     print(record["CUSTOMER-ID"], record["CUSTOMER-NAME"], record["BALANCE"])
...     break
1 Ada Winterbourne 1250.75

The options are those of the program oxrrec, with the same names and values: `--on-error null` is `on_error="null"`.
options() tells them. Where the program takes an option again and again, a list or a dict is given here.
"""

import logging
import operator
import os

from . import _oxrrec
from ._columns import Columns
from ._errors import CopybookError, Error, FieldError, FileError, OptionError, RecordError, WriteError
from ._layout import Field, Layout
from ._nesting import Nested as _Nested
from ._options import arguments as _arguments, describe as options
from ._oxrrec import Record
from ._records import Records

__all__ = ["read", "columns", "write", "options", "Record", "Records", "Columns", "Layout", "Field", "Error",
           "OptionError", "FileError", "CopybookError", "RecordError", "FieldError", "WriteError"]

__version__ = _oxrrec.version
_log = logging.getLogger("oxrrec")


def _source(file):
    """An input for the module: a path as bytes, or the object itself."""
    return file if hasattr(file, "read") else os.fsencode(file)


def _tell(notes):
    for line in notes.splitlines():
        _log.warning("%s", line.removeprefix("oxrrec: "))


def read(file, **options):
    """Give the records of a file, one after the other.

    `file` is a path or an object with a method read(size) that gives bytes. The options are those of `oxrrec decode`;
    `copybook` and `ccsid` are required.

    >>> sample = dict(copybook="orders.cob", ccsid=819, records="lines",
    ...               when={"KIND": {"H": "ORDER-HEAD", "L": "ORDER-LINE"}})
    >>> [record.kind for record in oxrrec.read("orders.txt", **sample)]
    ['ORDER-HEAD', 'ORDER-LINE', 'ORDER-LINE', 'ORDER-HEAD', 'ORDER-LINE']

    The result is an iterator of Record; with `nest` children stand in lists of their parents:

    >>> next(oxrrec.read("orders.txt", nest={"ORDER-LINE": "ORDER-HEAD"}, **sample))["ORDER-LINE"][0]
    {'KIND': 'L', 'ARTICLE': 'Bookcase', 'QUANTITY': 2, 'PRICE': Decimal('199.50')}

    A field that cannot be read raises FieldError, after the records before it. With `on_error="null"` it is None, and
    record.errors tells why; with `on_error="skip"` its record does not come.

    >>> import io
    >>> bad = open("parts.bin", "rb").read().replace(b"20417", b"2O417")
    >>> for record in oxrrec.read(io.BytesIO(bad), copybook="parts.cob", ccsid=819, on_error="null"):
    ...     for error in record.errors:
    ...         print(record.number, error.path, error.reason, error.bytes)
    3 PART-NO not a number: byte 2 of 5 is 4F ("O"), no digit (OXR5505) b'2O417'
    3 PART-CODE.PART-FAMILY not a number: byte 2 of 2 is 4F ("O"), no digit (OXR5505) b'2O'

    Other threads of Python run while records are read and converted. Memory does not grow with the file. The iterator
    is its own context manager and has a method close(); at its end it closes what it opened.
    """
    records, notes, pairs, leaves_bad_out = _oxrrec.read(_arguments("read", options), _source(file))
    _tell(notes)
    return _Nested(records, pairs, leaves_bad_out) if pairs else records


def columns(file, *, rows=16384, decimals="decimal", **options):
    """Give a file as a table, a chunk of rows after the other: a dict of numpy arrays by column.

    Columns are those of `oxrrec decode --to csv`: a field of a group is HOME-ADDRESS.TOWN, one of an array
    MOVEMENT(2).AMOUNT. `rows` is the most that a chunk has, the other options are those of read(), but `nest`.

    >>> for chunk in oxrrec.columns("parts.bin", copybook="parts.cob", ccsid=819):
    ...     print(chunk["STOCK"], chunk["PRICE"][:2], chunk["BIN-CODE(2)"])
    [     12000         -3          0  999999999 -999999999] [Decimal('0.12') Decimal('-7.95')] ['A02' '' '' 'ZZ2' 'D']

    Whole numbers of up to 18 digits are int64, in a masked array if one is missing; numbers with a point are what
    `decimals` says: "decimal" objects, "float" doubles, or "scaled" int64 in units of the last place (the scale is that
    of Layout, and the largest one where kinds of record share a column). Floats are float64 and days and moments datetime64, with NaN and NaT where one is missing; all else are
    objects as read() has them, None where one is missing. Larger whole numbers, and a column with one in a
    chunk, are objects too.

    pandas takes a chunk as it is: pandas.concat(map(pandas.DataFrame, oxrrec.columns(...))).
    """
    given = _arguments("columns", options, own=("rows", "decimals"), options_of="read")
    if not 0 < operator.index(rows) < 2**31:
        raise OptionError(f"rows: a chunk has from 1 to {2**31 - 1}, not {rows}")
    opened = _oxrrec.columns(given, _source(file), operator.index(rows), str(decimals))
    _tell(opened.notes())
    return Columns(opened)


def write(file, records, /, **options):
    """Write dicts as a record file, and tell how many were written.

    `file` is a path, or an object with a method write(bytes); `records` gives dicts as read() does. The options are
    those of `oxrrec encode`, which are to be the same as where records are read.

    >>> same = dict(copybook="customers.cob", ccsid=37, records="rdw")
    >>> import io
    >>> copy = io.BytesIO()
    >>> oxrrec.write(copy, oxrrec.read("customers.rdw.bin", **same), **same)
    8
    >>> copy.getvalue() == open("customers.rdw.bin", "rb").read()
    True

    Nothing is cut or rounded: a value that does not fit its field raises WriteError, and with `on_error="skip"` its
    record is left out, which is logged. A file gets its name when all is written: if anything is raised, there is none.
    """
    target = file if hasattr(file, "write") else os.fsencode(file)
    written, notes = _oxrrec.write(_arguments("write", options), target, records)
    _tell(notes)
    return written
