"""What the tests of the package share: where the samples, the larger sets and the program are."""

import json
import os
import subprocess
from decimal import Decimal

import pytest

SAMPLES = os.environ["OXR_SAMPLES_DIR"]
SHARED = os.environ.get("OXR_SHARED_DATA_DIR", "")
PAGE = os.environ["OXR_PAGE"]
README = os.environ["OXR_README"]
PROGRAM = os.environ["OXR_PROGRAM"]

SEGMENTS = {"SEGMENT-ID": {"1": "COMPANY", "2": "DEPT", "3": "EMPLOYEE", "4": "OFFICE", "5": "CUSTOMER",
                           "6": "CONTACT", "7": "CONTRACT"}}
KINDS = {"KIND": {"H": "ORDER-HEAD", "L": "ORDER-LINE"}}
# Copybook, records, and options: all that the sets of records need.
SETS = [
    (SAMPLES, "customers.cob", "customers.rdw.bin", dict(ccsid=37, records="rdw")),
    (SAMPLES, "customers.cob", "customers.rdw.bin", dict(ccsid="cp037", records="auto", flat=True)),
    (SAMPLES, "parts.cob", "parts.bin", dict(ccsid=819)),
    (SAMPLES, "orders.cob", "orders.txt", dict(ccsid=819, records="lines", when=KINDS)),
    (SAMPLES, "orders.cob", "orders.txt", dict(ccsid=819, records="lines", when=KINDS,
                                               nest={"ORDER-LINE": "ORDER-HEAD"})),
    (SAMPLES, "orders.cob", "orders.txt", dict(ccsid=819, records="lines", when={"KIND=H": "ORDER-HEAD"},
                                               on_unknown="raw")),
    ("occurs-segments", "customers.cob", "customers.first50.rdw.bin", dict(ccsid=37, records="rdw")),
    ("occurs-segments", "nested.cob", "nested.ascii.txt", dict(ccsid=819)),
    ("occurs-segments", "accounts.cob", "accounts.bin", dict(ccsid=37, odo="fixed", low_values="null",
                                                             blank_numbers="null")),
    ("occurs-segments", "segments.cob", "segments.rdw.bin",
     dict(ccsid=37, records="rdw-le", length_includes_header=False, lenient_numbers=True, when=SEGMENTS,
          nest={"DEPT": "COMPANY", "EMPLOYEE": "DEPT", "OFFICE": "DEPT", "CUSTOMER": "COMPANY"})),
    *(("code-pages", "layout.cob", "records.bin", dict(ccsid=ccsid)) for ccsid in (37, 273, "cp500", "cp1140")),
    ("numeric-types", "layout.cob", "first20.bin", dict(ccsid=37, floats="ieee-be", edited="number")),
    *(("floats", "layout.cob", f"{name}.rdw-le.bin", dict(ccsid=37, records="rdw-le", length_includes_header="no",
                                                          floats=form))
      for name, form in (("hex-be", "hex"), ("hex-le", "hex-le"), ("ieee-be", "ieee-be"), ("ieee-le", "ieee-le"))),
]


def of(entry):
    """The path of the records and the options of a set; the test is skipped where that is missing."""
    folder, copybook, records, options = entry
    folder = folder if os.path.isabs(folder) else os.path.join(SHARED, folder)
    if not os.path.isdir(folder):
        pytest.skip(f"{folder} is missing")
    return os.path.join(folder, records), dict(options, copybook=os.path.join(folder, copybook))


def program(*arguments):
    """What the program writes."""
    return subprocess.run([PROGRAM, *arguments], capture_output=True, check=True).stdout.decode()


def command_line(options):
    """The same options for the program. Dicts are only those that the sets have."""
    words = []
    for keyword, setting in options.items():
        name = "--" + keyword.replace("_", "-")
        if isinstance(setting, bool) and keyword != "length_includes_header":
            words.append(name)
        elif isinstance(setting, dict) and keyword == "when":
            pairs = [(key, value) for key, value in setting.items() if isinstance(value, str)]
            pairs += [(f"{key}={text}", kind) for key, value in setting.items() if isinstance(value, dict)
                      for text, kind in value.items()]
            words += [f"{name}={condition}:{kind}" for condition, kind in pairs]
        elif isinstance(setting, dict):
            words += [f"{name}={key}:{value}" for key, value in setting.items()]
        else:
            words.append(f"{name}={'no' if setting is False else setting}")
    return words


def lines_of(records, options):
    """The records as the program shows them, numbers with all their digits."""
    text = program("decode", records, *command_line(options))
    return [json.loads(line, parse_float=Decimal) for line in text.splitlines()]


@pytest.fixture
def parts():
    return dict(copybook=os.path.join(SAMPLES, "parts.cob"), ccsid=819)


@pytest.fixture
def bad_parts(tmp_path):
    """The sample parts with two bad fields in the third of five records."""
    path = tmp_path / "bad.bin"
    with open(os.path.join(SAMPLES, "parts.bin"), "rb") as file:
        path.write_bytes(file.read().replace(b"20417", b"2O417"))
    return path
