"""The sample customers into dicts by struct and codecs alone: what oxrrec.read() is measured against.

`by_fields` takes each field's bytes and decodes them, as such scripts mostly do; `by_slices` decodes a record as a whole and
cuts its text, which is the fastest that was found.
"""

import codecs
import struct
from decimal import Decimal
from encodings.cp037 import decoding_table

HEAD = struct.Struct(">6s20s18s7s15s8s10sH5s2xH")
MOVEMENT = struct.Struct(">10s5s16s")
NUMBERS = struct.Struct(">66x8s10xH5s2xH")


def records(path):
    with open(path, "rb") as file:
        data = file.read()
    at = 0
    while at < len(data):
        size = data[at] << 8 | data[at + 1]
        yield data[at + 4:at + size]
        at += size


def text(field):
    return field.decode("cp037").rstrip(" ")


def packed(field, places):
    digits = field.hex()
    number = str(int(digits[:-1])).rjust(places + 1, "0")
    return Decimal(("-" if digits[-1] == "d" else "") + number[:-places] + "." + number[-places:])


def zoned(field):
    digits = field[:4].decode("cp037") + str(field[4] & 15)
    return Decimal(("-" if 0xD0 <= field[4] <= 0xD9 else "") + digits[:3] + "." + digits[3:])


def by_fields(path):
    for record in records(path):
        number, name, street, postcode, town, balance, since, branch, rating, count = HEAD.unpack_from(record)
        movements = []
        for index in range(count):
            booked, amount, remark = MOVEMENT.unpack_from(record, 95 + 31 * index)
            movements.append({"BOOKED-ON": text(booked), "AMOUNT": packed(amount, 2), "REMARK": text(remark)})
        yield {"CUSTOMER-ID": int(number.decode("cp037")), "CUSTOMER-NAME": text(name),
               "HOME-ADDRESS": {"STREET": text(street), "POSTCODE": text(postcode), "TOWN": text(town)},
               "BALANCE": packed(balance, 2), "SINCE-DATE": text(since), "BRANCH": branch, "RATING": zoned(rating),
               "MOVEMENT-COUNT": count, "MOVEMENT": movements}


def quick_packed(field):
    digits = field.hex()
    return Decimal(("-" if digits[-1] == "d" else "") + digits[:-3] + "." + digits[-3:-1])


def by_slices(path):
    decode = codecs.charmap_decode
    for record in records(path):
        all_of_it = decode(record, "strict", decoding_table)[0]
        balance, branch, rating, count = NUMBERS.unpack_from(record)
        movements = [{"BOOKED-ON": all_of_it[at:at + 10].rstrip(" "), "AMOUNT": quick_packed(record[at + 10:at + 15]),
                      "REMARK": all_of_it[at + 15:at + 31].rstrip(" ")} for at in range(95, 95 + 31 * count, 31)]
        sign = "-" if 0xD0 <= rating[4] <= 0xD9 else ""
        yield {"CUSTOMER-ID": int(all_of_it[:6]), "CUSTOMER-NAME": all_of_it[6:26].rstrip(" "),
               "HOME-ADDRESS": {"STREET": all_of_it[26:44].rstrip(" "), "POSTCODE": all_of_it[44:51].rstrip(" "),
                                "TOWN": all_of_it[51:66].rstrip(" ")},
               "BALANCE": quick_packed(balance), "SINCE-DATE": all_of_it[74:84].rstrip(" "), "BRANCH": branch,
               "RATING": Decimal(f"{sign}{all_of_it[86:89]}.{all_of_it[89]}{rating[4] & 15}"),
               "MOVEMENT-COUNT": count, "MOVEMENT": movements}
