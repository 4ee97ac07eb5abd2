"""What a user writes, for mypy alone."""

from typing import Optional

import oxrrec


def names(path: str) -> list[str]:
    with oxrrec.read(path, copybook="customers.cob", ccsid=37, when={"A": {1: "B"}}, on_error="null") as records:
        return [error.path for record in records for error in record.errors]


def linked(path: str) -> oxrrec.Records:
    return oxrrec.read(path, copybook="orders.cob", ccsid=37, nest={"LINE": "HEAD"})


def tables(path: str) -> oxrrec.Columns:
    with oxrrec.columns(path, copybook="orders.cob", ccsid=37, decimals="float") as chunks:
        print([chunk["PRICE"] for chunk in chunks])
    return chunks


def sizes(copybook: str) -> dict[str, Optional[int]]:
    return {field.path: field.offset for field in oxrrec.Layout(copybook, record="R")}
