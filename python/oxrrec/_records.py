"""What an iterator of records is, whichever way its records come."""

from abc import abstractmethod
from collections.abc import Iterator

from . import _oxrrec


class Records(Iterator):
    """The records of an input, one after the other, as read() gives them. To be closed, or used in a `with`."""

    __slots__ = ()

    @abstractmethod
    def close(self):
        """Close the input; no record comes any more."""

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()


Records.register(_oxrrec.Records)
Records.__module__ = "oxrrec"
