"""Children into their parents: what `nest` does to the records of an input."""

from ._records import Records


class _Kind:
    def __init__(self, name):
        self.name = name
        self.parent = None
        self.children = []
        self.open = None  # the last record, while children may still come
        self.collected = []  # finished records of this kind for the open parent


class _Hierarchy:
    """The kinds of records with those that are open. Each step gives the records that are done by it."""

    def __init__(self, pairs, leaves_bad_out):
        self._leaves_bad_out = leaves_bad_out
        self._kinds = {name: _Kind(name) for pair in pairs for name in pair}
        for child, parent in pairs:
            self._kinds[child].parent = self._kinds[parent]
            self._kinds[parent].children.append(self._kinds[child])

    def add(self, record):
        is_left_out = self._leaves_bad_out and record.errors
        kind = self._kinds.get(record.kind)
        # The children of a record that is left out must not go to an earlier one of its kind.
        if kind is not None:
            yield from self._close(kind)
        if is_left_out:
            return
        if kind is None:
            yield record
        elif kind.children:
            kind.open = record
        else:
            yield from self._deliver(kind, record)

    def finish(self):
        for kind in self._kinds.values():
            if kind.parent is None:
                yield from self._close(kind)

    def _close(self, kind):
        for child in kind.children:
            yield from self._close(child)
        if kind.open is None:
            return
        record, kind.open = kind.open, None
        for child in kind.children:
            record[child.name], child.collected = child.collected, []
        yield from self._deliver(kind, record)

    def _deliver(self, kind, record):
        if kind.parent is None or kind.parent.open is None:
            yield record
        else:
            kind.collected.append(record)


# Knows nothing of who has it, so that this goes, and its input is closed, as soon as nobody needs it.
def _nested(records, hierarchy):
    ending = None
    try:
        for record in records:
            yield from hierarchy.add(record)
    except Exception as error:
        ending = error
    # What ends the work comes after the records before it, these among them.
    yield from hierarchy.finish()
    if ending is not None:
        raise ending


class Nested(Records):
    """Records in which those of a child's kind stand in a list of the last one of its parent's.

    A record comes when no child can come into it any more, so that one of a kind that no pair names may come before a
    parent that began earlier. A child before any parent comes by itself. Memory is one open record of each kind that has
    children, with these.
    """

    def __init__(self, records, pairs, leaves_bad_out):
        self._records = records
        self._done = _nested(records, _Hierarchy(pairs, leaves_bad_out))

    def __next__(self):
        return next(self._done)

    def close(self):
        """Close the input; no record comes any more."""
        self._done.close()
        self._records.close()
