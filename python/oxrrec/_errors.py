"""The exceptions of the package. Their texts are those that the program oxrrec writes."""


class Error(Exception):
    """What all exceptions of this package are."""


class OptionError(Error, ValueError):
    """An option has a value that it cannot have, or that does not fit the copybook."""


class FileError(Error, OSError):
    """A file cannot be opened, read or written, or is not what an option says."""


class CopybookError(Error):
    """A copybook is not understood.

    `file`, `line` and `column` tell the place, from 1; both numbers are 0 if the fault is not in one place.
    `message` is the text without place and source line.
    """

    def __init__(self, text, file="", line=0, column=0, message=""):
        super().__init__(text)
        self.file, self.line, self.column, self.message = file, line, column, message


class RecordError(Error):
    """A record cannot be cut out of its input. `record` is its number, from 1."""

    def __init__(self, text, record=0):
        super().__init__(text)
        self.record = record


class FieldError(RecordError):
    """A field cannot be read, or a record does not fit its layout.

    `record` is the number of the record, from 1, `offset` the place of the field in the input in bytes, from 0, `path`
    the field, as in "MOVEMENT(2).AMOUNT", and empty if the record as a whole is at fault; `reason` is why, and `bytes`
    are those of the field.
    """

    def __init__(self, text, record=0, offset=0, path="", reason="", bytes=b""):
        super().__init__(text, record)
        self.offset, self.path, self.reason, self.bytes = offset, path, reason, bytes


class WriteError(RecordError):
    """A record does not fit the layout that it is to be written by.

    `record` is its number, from 1, and `path` the field, empty if the record as a whole is at fault.
    """

    def __init__(self, text, record=0, path=""):
        super().__init__(text, record)
        self.path = path


# They are known by the package that has them.
for _class in (Error, OptionError, FileError, CopybookError, RecordError, FieldError, WriteError):
    _class.__module__ = "oxrrec"
