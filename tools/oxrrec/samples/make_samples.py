#!/usr/bin/env python3
"""Writes the sample record files and the JSON lines they decode to, into the folder of this script.

customers.rdw.bin  CCSID 37, record descriptors, arrays as long as their count says
parts.bin          CCSID 819, records of one length, integers big-endian

All names and numbers are invented. The layouts are written down here once more, field by field, so that the files
check the copybook reader and are not made by it. Run it after a change of a layout and commit what it writes.
"""

import json
import pathlib
import struct

FOLDER = pathlib.Path(__file__).parent


class Record:
    """The bytes of one record, put together field by field."""

    def __init__(self, code_page):
        self.code_page = code_page
        self.data = b""

    def text(self, value, size, right=False):
        data = value.encode(self.code_page)
        assert len(data) <= size, value
        blanks = " ".encode(self.code_page) * (size - len(data))
        self.data += blanks + data if right else data + blanks

    def integer(self, value, size):
        self.data += value.to_bytes(size, "big", signed=value < 0)

    def packed(self, value, digits, scale, signed=True):
        number = stored(value, scale)
        sign = ("D" if number < 0 else "C") if signed else "F"
        half_bytes = str(abs(number)).zfill(digits // 2 * 2 + 1) + sign
        assert len(half_bytes) == digits // 2 * 2 + 2, value
        self.data += bytes.fromhex(half_bytes)

    def external(self, value, digits, scale=0, sign=""):
        """sign: "" none, "over" in the last digit, "lead" or "trail" for a character of its own."""
        number = stored(value, scale)
        text = str(abs(number)).zfill(digits)
        assert len(text) == digits, value
        character = "-" if number < 0 else "+"
        text = (character if sign == "lead" else "") + text + (character if sign == "trail" else "")
        data = bytearray(text.encode(self.code_page))
        if sign == "over" and number < 0:  # EBCDIC zone D instead of F, ASCII 7 instead of 3
            data[-1] = data[-1] & 0xDF if self.code_page == "cp037" else data[-1] | 0x70
        self.data += bytes(data)


def stored(value, scale):
    """The digits of a number in a field with this many places after the point, as an integer."""
    whole, _, fraction = str(value).partition(".")
    assert len(fraction) <= max(scale, 0), value
    digits = int(whole.lstrip("-") + fraction.ljust(max(scale, 0), "0"))
    if scale < 0:
        assert digits % 10**-scale == 0, value
        digits //= 10**-scale
    return -digits if whole.startswith("-") else digits


class Number(str):
    """Stands in the JSON as it is written."""


def compact(value):
    if isinstance(value, dict):
        return "{" + ",".join(compact(key) + ":" + compact(item) for key, item in value.items()) + "}"
    if isinstance(value, list):
        return "[" + ",".join(map(compact, value)) + "]"
    return str(value) if isinstance(value, (int, Number)) else json.dumps(value, ensure_ascii=False)


CUSTOMERS = [
    # id, name, street, postcode, town, balance, since, branch, rating, movements (booked on, amount, remark)
    (1, "Ada Winterbourne", "3 Mill Lane", "AB1 2CD", "Northbridge", "1250.75", "1998-04-01", 12, "87.50",
     [("2024-01-02", "-49.99", "Bookshop"), ("2024-01-31", "2100.00", "Salary")]),
    (2, "Benoît Lefèvre", "12 rue du Pré", "44000", "Nantes", "-0.50", "2003-11-17", 12, "-3.25", []),
    (37, "Çelik, Jürgen", "Große Gasse 8", "80331", "München", "0.00", "2010-06-30", 9999, "0.00",
     [("2024-02-29", "0.01", "interest")]),
    (4711, "O'Hara & \"Sons\"", "", "", "", "9999999999999.99", "1985-01-01", 0, "999.99",
     [(f"2024-03-0{day}", f"{day * 1000}.0{day}", f"item {day} of 5") for day in range(1, 6)]),
    (5000, "", "1 Back\\Slash Way", "ZZ9", "Äland", "-9999999999999.99", "2020-02-29", 1, "-999.99",
     [("2024-04-01", "-9999999.99", "largest debit"), ("2024-04-02", "9999999.99", "largest credit")]),
    (123456, "Ínigo Peña Núñez", "Calle Ocho 8", "28001", "Madrid", "0.50", "1999-12-31", 77, "0.05",
     [("2024-05-05", "-0.50", ""), ("2024-05-06", "0.00", "  two in front"), ("2024-05-07", "12.30", "café")]),
    (999998, "Quentin X. Marlow-Ja", "123456789012345678", "1234567", "123456789012345", "100.00", "2001-01-01", 250,
     "50.00", [("2024-06-01", "100.00", "sixteen letters!")]),
    (999999, "Zoë Zimmer", "Am Ende 99", "99999", "Zwönitz", "-1234.56", "2022-08-15", 4321, "12.34",
     [("2024-07-0%d" % day, "-%d.99" % day, "fee") for day in range(1, 5)]),
]


def make_customers():
    data, lines = b"", []
    for number, name, street, postcode, town, balance, since, branch, rating, movements in CUSTOMERS:
        record = Record("cp037")
        record.external(number, 6)
        record.text(name, 20)
        record.text(street, 18)
        record.text(postcode, 7)
        record.text(town, 15)
        record.packed(balance, 15, 2)
        record.text(since, 10)
        record.integer(branch, 2)
        record.external(rating, 5, 2, "over")
        record.text("", 2)
        record.integer(len(movements), 2)
        for booked_on, amount, remark in movements:
            record.text(booked_on, 10)
            record.packed(amount, 9, 2)
            record.text(remark, 16)
        data += struct.pack(">HH", len(record.data) + 4, 0) + record.data
        lines.append(compact({
            "CUSTOMER-ID": number, "CUSTOMER-NAME": name,
            "HOME-ADDRESS": {"STREET": street, "POSTCODE": postcode, "TOWN": town},
            "BALANCE": Number(balance), "SINCE-DATE": since, "BRANCH": branch, "RATING": Number(rating),
            "MOVEMENT-COUNT": len(movements),
            "MOVEMENT": [{"BOOKED-ON": booked_on, "AMOUNT": Number(amount), "REMARK": remark}
                         for booked_on, amount, remark in movements],
        }))
    return "customers", ".rdw.bin", data, lines


PARTS = [
    # part, description, stock, reorder level, serial, price, change, offset, tolerance, pack size, bins, weight shown,
    # group, checked by
    (10001, "hex bolt M8", 12000, 500, 1, "0.12", "0.5", 10, "0.0025", 1200, ("A01", "A02", ""), "   0.05", 110, "AB"),
    (10002, "Ölfilter", -3, -1, 999999999999999999, "-7.95", "-12.5", -10, "-0.0099", 0, ("B7", "", "B9"), "   1.25",
     120, "ANNA"),
    (20417, "Schlüssel 1/2\"", 0, 0, 0, "0.00", "0.0", 0, "0.0000", 100, ("", "", ""), "   0.00", 0, ""),
    (99999, "123456789012345", 999999999, 9999, 20240229, "99999.99", "999.9", 9999, "0.0001", 9900,
     ("ZZ1", "ZZ2", "ZZ3"), "9999.99", 999, "X"),
    (1, "return", -999999999, -9999, 42, "-99999.99", "-999.9", -9999, "-0.0001", 400, ("C", "D", "E"), "  12.50-", 7,
     "QQ"),
]


def make_parts():
    data, lines = b"", []
    for (number, description, stock, level, serial, price, change, offset, tolerance, pack, bins, weight, group,
         checked) in PARTS:
        record = Record("latin-1")
        record.external(number, 5)
        record.text(description, 15)
        record.integer(stock, 4)
        record.integer(level, 2)
        record.integer(serial, 8)
        record.external(price, 7, 2, "over")
        record.external(change, 4, 1, "lead")
        record.external(offset, 4, 0, "trail")
        record.external(tolerance, 2, 4, "over")
        record.external(pack, 2, -2)
        for bin_code in bins:
            record.text(bin_code, 3)
        record.text(weight, 8)
        record.packed(group, 3, 0, signed=False)
        record.text(checked, 4, right=True)
        assert len(record.data) == 78
        data += record.data
        lines.append(compact({
            "PART-NO": number, "PART-CODE": {"PART-FAMILY": number // 1000, "PART-VARIANT": number % 1000},
            "DESCRIPTION": description, "STOCK": stock, "REORDER-LEVEL": level, "SERIAL-NO": serial,
            "PRICE": Number(price), "PRICE-CHANGE": Number(change), "SHELF-OFFSET": offset,
            "TOLERANCE": Number(tolerance), "PACK-SIZE": pack, "BIN-CODE": list(bins), "WEIGHT-SHOWN": weight,
            "PART-GROUP": group, "CHECKED-BY": checked.rjust(4) if checked else "",
        }))
    return "parts", ".bin", data, lines


for stem, suffix, content, expected in (make_customers(), make_parts()):
    (FOLDER / (stem + suffix)).write_bytes(content)
    (FOLDER / (stem + ".expected.jsonl")).write_text("".join(line + "\n" for line in expected), encoding="utf-8")
