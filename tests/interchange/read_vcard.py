#!/usr/bin/python3
"""Prints what vobject reads in a vCard: a line for each of its lines, with parameters and value."""

import sys

import vobject


def shown(value):
    if isinstance(value, bytes):
        return value.hex()
    if isinstance(value, vobject.vcard.Name):
        return repr((value.family, value.given))
    if isinstance(value, vobject.vcard.Address):
        return repr((value.street, value.city))
    return repr(value)


with open(sys.argv[1], encoding="utf-8", newline="") as file:
    card, = vobject.readComponents(file)
# It knows what 3.0 asks for only.
if card.version.value == "3.0":
    card.validate(raiseException=True)
for line in card.lines():
    parameters = [name + "=" + ",".join(values) for name, values in sorted(line.params.items())]
    print(" ".join([line.name, *parameters, shown(line.value)]))
