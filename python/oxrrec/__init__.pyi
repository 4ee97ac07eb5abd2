import os
from abc import abstractmethod
from collections.abc import Iterable, Iterator, Mapping
from typing import Any, NamedTuple, Optional, Protocol, Union

from . import _oxrrec
from ._oxrrec import Record as Record

_Path = Union[str, bytes, "os.PathLike[str]", "os.PathLike[bytes]"]

class _Readable(Protocol):
    def read(self, __size: int) -> bytes: ...

# What an option may be: a text or a number, True or False for a flag, None for its default. What the program takes
# again and again is a list or a dict.
_Option = Union[None, bool, int, str, bytes, "os.PathLike[str]", Iterable[Any], Mapping[Any, Any]]

__all__ = [
    "read", "columns", "write", "options", "Record", "Records", "Columns", "Layout", "Field", "Error", "OptionError",
    "FileError", "CopybookError", "RecordError", "FieldError", "WriteError",
]  # fmt: skip

__version__: str

_Bytes = bytes  # where a member has the name of the class

class Error(Exception): ...
class OptionError(Error, ValueError): ...
class FileError(Error, OSError): ...

class CopybookError(Error):
    file: str
    line: int
    column: int
    message: str
    def __init__(self, text: str, file: str = "", line: int = 0, column: int = 0, message: str = "") -> None: ...

class RecordError(Error):
    record: int
    def __init__(self, text: str, record: int = 0) -> None: ...

class FieldError(RecordError):
    offset: int
    path: str
    reason: str
    bytes: _Bytes
    def __init__(
        self, text: str, record: int = 0, offset: int = 0, path: str = "", reason: str = "", bytes: _Bytes = b""
    ) -> None: ...

class WriteError(RecordError):
    path: str
    def __init__(self, text: str, record: int = 0, path: str = "") -> None: ...

class Records(Iterator[Record]):
    def __enter__(self) -> Records: ...
    def __exit__(self, *exception: object) -> None: ...
    @abstractmethod
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
    def __init__(self, columns: _oxrrec.Columns) -> None: ...
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
