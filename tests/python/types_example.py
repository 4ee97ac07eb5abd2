"""What a user writes, for mypy alone."""

from typing import Optional

import oxrrec


def names(path: str) -> list[str]:
    with oxrrec.read(path, copybook="customers.cob", ccsid=37, when={"A": {1: "B"}}, on_error="null") as records:
        return [error.path for record in records for error in record.errors]


def sizes(copybook: str) -> dict[str, Optional[int]]:
    return {field.path: field.offset for field in oxrrec.Layout(copybook, record="R")}
