import os
from collections.abc import Iterable, Iterator, Mapping
from typing import Any, NamedTuple, Optional, Protocol, Union

_Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

class _Readable(Protocol):
    def read(self, __size: int) -> bytes: ...

# What an option may be: a text or a number, True or False for a flag, None for its default. What the program takes
# again and again is a list or a dict.
_Option = Union[None, bool, int, str, bytes, "os.PathLike[str]", Iterable[Any], Mapping[Any, Any]]

__version__: str

class Error(Exception): ...
class OptionError(Error, ValueError): ...
class FileError(Error, OSError): ...

class CopybookError(Error):
    file: str
    line: int
    column: int
    message: str

class RecordError(Error):
    record: int

class FieldError(RecordError):
    offset: int
    path: str
    reason: str
    bytes: bytes

class WriteError(RecordError):
    path: str

class Record(dict[str, Any]):
    @property
    def number(self) -> int: ...
    @property
    def offset(self) -> int: ...
    @property
    def kind(self) -> Optional[str]: ...
    @property
    def errors(self) -> tuple[FieldError, ...]: ...

class Records(Iterator[Record]):
    def __iter__(self) -> Records: ...
    def __next__(self) -> Record: ...
    def __enter__(self) -> Records: ...
    def __exit__(self, *exception: object) -> None: ...
    def close(self) -> None: ...

class Field(NamedTuple):
    path: str
    name: Optional[str]
    level: int
    kind: str
    picture: Optional[str]
    offset: Optional[int]
    size: int
    occurs: Optional[tuple[int, int]]
    depending_on: Optional[str]
    redefines: Optional[str]
    digits: Optional[int]
    scale: Optional[int]
    is_signed: bool
    line: int
    @property
    def is_group(self) -> bool: ...

class Layout:
    record: str
    record_names: list[str]
    size: int
    is_variable: bool
    fields: tuple[Field, ...]
    def __init__(self, copybook: _Path, **options: _Option) -> None: ...
    def __len__(self) -> int: ...
    def __iter__(self) -> Iterator[Field]: ...
    def __getitem__(self, key: Union[str, int]) -> Field: ...
    def __contains__(self, path: object) -> bool: ...

def read(file: Union[_Path, _Readable], **options: _Option) -> Records: ...

class Columns(Iterator[dict[str, Any]]):
    def __iter__(self) -> Columns: ...
    def __next__(self) -> dict[str, Any]: ...
    def __enter__(self) -> Columns: ...
    def __exit__(self, *exception: object) -> None: ...
    def close(self) -> None: ...

class _Writable(Protocol):
    def write(self, __bytes: bytes) -> Any: ...

def columns(
    file: Union[_Path, _Readable], *, rows: int = 16384, decimals: str = "decimal", **options: _Option
) -> Columns: ...
def write(file: Union[_Path, _Writable], records: Iterable[dict[str, Any]], /, **options: _Option) -> int: ...
def options(function: str = "read") -> dict[str, str]: ...
