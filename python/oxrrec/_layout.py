"""Where the fields of a record are."""

from typing import NamedTuple, Optional

from . import _oxrrec
from ._options import arguments


class Field(NamedTuple):
    """An item of a layout: a group or a field."""

    path: str  # from the record down, as in "MOVEMENT.AMOUNT"; empty for the record
    name: Optional[str]  # None for FILLER
    level: int
    kind: str  # "group", "text", "packed", ... as `oxrrec layout` shows it
    picture: Optional[str]
    offset: Optional[int]  # bytes from the start of the record to the first occurrence; None if counts move it
    size: int  # bytes of one occurrence, at the largest
    occurs: Optional[tuple]  # the least and the most occurrences; None without OCCURS
    depending_on: Optional[str]  # the path of the count
    redefines: Optional[str]  # the path of the item whose bytes these are, too
    digits: Optional[int]  # of numbers: those that are stored,
    scale: Optional[int]  # and how many of them stand after the point
    is_signed: bool
    line: int  # in the copybook

    @property
    def is_group(self):
        return self.kind == "group"


class Layout:
    """The fields of a copybook's record.

    The options are those of the topic `copybook` of the program: `record`, `format`, `include`, `binary_sizes`,
    `dialect`. A layout is a sequence of Field, groups among them, in the copybook's order.

    >>> layout = oxrrec.Layout("customers.cob")
    >>> layout.record, layout.size, layout.is_variable, len(layout)
    ('CUSTOMER', 250, True, 18)
    >>> layout["MOVEMENT.AMOUNT"].kind, layout["MOVEMENT.AMOUNT"].picture, layout["MOVEMENT.AMOUNT"].offset
    ('packed', 'S9(7)V99', 105)
    >>> [field.path for field in layout if field.depending_on]
    ['MOVEMENT']
    """

    def __init__(self, copybook, **options):
        self.record, self.record_names, self.size, self.is_variable, self._table, items = _oxrrec.layout(
            arguments("layout", dict(options, copybook=copybook)))
        self.fields = tuple(Field(*item) for item in items)
        self._by_path = {field.path: field for field in reversed(self.fields)}

    def __len__(self):
        return len(self.fields)

    def __iter__(self):
        return iter(self.fields)

    def __getitem__(self, key):
        """The field of a path, or at a place."""
        return self._by_path[key] if isinstance(key, str) else self.fields[key]

    def __contains__(self, path):
        return path in self._by_path

    def __str__(self):
        """The table that `oxrrec layout` shows."""
        return self._table

    def __repr__(self):
        return f"<oxrrec.Layout of {self.record or 'a record'}: {len(self.fields)} items, {self.size} bytes>"
