"""Arrays of numpy, a dict of them for each chunk of rows."""


class Columns:
    """The chunks of a table, one after the other, as columns() gives them."""

    def __init__(self, columns):
        import numpy

        self._numpy = numpy
        self._columns = columns

    def __iter__(self):
        return self

    def __next__(self):
        chunk = None if self._columns is None else self._columns.next()
        if chunk is None:
            raise StopIteration
        return {name: self._masked(*column) for name, column in chunk}

    def _masked(self, values, is_missing):
        return values if is_missing is None else self._numpy.ma.MaskedArray(values, is_missing)

    def close(self):
        """Close the input; no chunk comes any more."""
        if self._columns is not None:
            self._columns.require_idle()
        self._columns = None

    def __enter__(self):
        return self

    def __exit__(self, *exception):
        self.close()


Columns.__module__ = "oxrrec"
