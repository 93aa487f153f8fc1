#!/usr/bin/env python3
"""Write the corpora of the record printer and of the masking: values of each kind, made by hand, and broken ones.

usage: make_record_corpus.py CORPUS_DIR
"""
import pathlib
import struct
import sys

(NULL, SHORT, LONG, USHORT, ULONG, FLOAT, DOUBLE, BOOLEAN, CHAR, OCTET, ANY) = (0, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11)
(TYPECODE, OBJREF, STRUCT, UNION, ENUM, STRING, SEQUENCE, ARRAY, ALIAS, EXCEPT) = (12, 14, 15, 16, 17, 18, 19, 20, 21, 22)
WCHAR, WSTRING, FIXED, VALUE = 26, 27, 28, 29


class Cdr:
    """Little-endian CDR, counted from an aligned start."""

    def __init__(self, order_octet=False):
        self.bytes = bytearray(b"\1" if order_octet else b"")

    def align(self, size):
        self.bytes += b"\0" * (-len(self.bytes) % size)

    def number(self, form, value):
        self.align(struct.calcsize(form))
        self.bytes += struct.pack("<" + form, value)
        return self

    def ulong(self, value):
        return self.number("I", value)

    def string(self, text):
        data = text.encode() + b"\0"
        self.ulong(len(data))
        self.bytes += data
        return self

    def octets(self, data):
        self.ulong(len(data))
        self.bytes += data
        return self

    def type(self, kind, fill=None):
        self.ulong(kind)
        if fill:
            inner = Cdr(True)
            fill(inner)
            self.octets(bytes(inner.bytes))
        return self


def string_type(cdr):
    cdr.ulong(STRING).ulong(0)


def struct_type(cdr, members, kind=STRUCT):
    def fill(inner):
        inner.string("IDL:S:1.0").string("S").ulong(len(members))
        for name, member in members:
            inner.string(name)
            member(inner)
    cdr.type(kind, fill)


def sequence_type(cdr, content):
    def fill(inner):
        content(inner)
        inner.ulong(0)
    cdr.type(SEQUENCE, fill)


def array_type(cdr, content, length):
    def fill(inner):
        content(inner)
        inner.ulong(length)
    cdr.type(ARRAY, fill)


def union_type(cdr):
    def fill(inner):
        inner.string("IDL:U:1.0").string("U").ulong(LONG).ulong(2 ** 32 - 1).ulong(2)
        inner.number("i", 1).string("number").ulong(LONG)
        inner.number("i", -2).string("text")
        string_type(inner)
    cdr.type(UNION, fill)


def wide_union_type(cdr):
    def fill(inner):
        inner.string("IDL:W:1.0").string("W").ulong(WCHAR).ulong(2 ** 32 - 1).ulong(2)
        inner.bytes.extend(b"\2\0a")
        inner.string("letter").ulong(OCTET)
        inner.bytes.extend(b"\4\xff\xfe\xac\x20")
        inner.string("euro").ulong(OCTET)
    cdr.type(UNION, fill)


def named(cdr, kind, *extra):
    def fill(inner):
        inner.string("IDL:N:1.0").string("N")
        for value in extra:
            value(inner)
    cdr.type(kind, fill)


def simple(kind):
    return lambda cdr: cdr.ulong(kind)


def samples():
    def make(name, type_of, value):
        cdr = Cdr()
        type_of(cdr)
        value(cdr)
        return name, bytes(cdr.bytes)

    point = [("x", simple(LONG)), ("label", string_type)]
    yield make("long", simple(LONG), lambda c: c.number("i", -7))
    yield make("boolean", simple(BOOLEAN), lambda c: c.number("B", 1))
    yield make("float", simple(FLOAT), lambda c: c.number("f", 0.1))
    yield make("double", simple(DOUBLE), lambda c: c.number("d", 0.1))
    yield make("string", string_type, lambda c: c.string("text"))
    yield make("octet_zero", simple(OCTET), lambda c: c.number("B", 0))
    yield make("enum", lambda c: named(c, ENUM, lambda i: i.ulong(1).string("red")), lambda c: c.ulong(0))
    yield make("alias", lambda c: named(c, ALIAS, simple(LONG)), lambda c: c.number("i", 3))
    yield make("struct", lambda c: struct_type(c, point), lambda c: c.number("i", 1).string("one"))
    yield make("exception", lambda c: struct_type(c, point, EXCEPT), lambda c: c.number("i", 1).string("one"))
    yield make("octets", lambda c: sequence_type(c, simple(OCTET)), lambda c: c.octets(b"ab\0cd"))
    yield make("structs", lambda c: sequence_type(c, lambda i: struct_type(i, point)),
               lambda c: c.ulong(2).number("i", 1).string("one").number("i", 2).string(""))
    yield make("array", lambda c: array_type(c, lambda i: array_type(i, simple(SHORT), 2), 2),
               lambda c: [c.number("h", n) for n in range(4)])
    yield make("union", union_type, lambda c: c.number("i", -2).string("two"))
    yield make("union_without_member", union_type, lambda c: c.number("i", 5))
    yield make("union_by_wide_character", wide_union_type, lambda c: c.bytes.extend(b"\2\x20\xacx"))
    yield make("any", simple(ANY), lambda c: (struct_type(c, point), c.number("i", 1).string("one")))
    yield make("typecode", simple(TYPECODE), lambda c: struct_type(c, point))
    yield make("reference", lambda c: named(c, OBJREF), lambda c: c.string("IDL:N:1.0").ulong(1).ulong(0).octets(b"\1\1\2\0"))
    yield make("wide", lambda c: c.ulong(WSTRING).ulong(0), lambda c: c.octets(b"w\0"))
    yield make("fixed", lambda c: c.ulong(FIXED).number("H", 5).number("h", 2), lambda c: c.bytes.extend(b"\x12\x34\x5c"))
    yield make("value", lambda c: named(c, VALUE), lambda c: c.ulong(0))

    def tree(cdr):
        def fill(inner):
            inner.string("IDL:T:1.0").string("T").ulong(1).string("children")
            inner.ulong(SEQUENCE)
            content = Cdr(True)
            content.ulong(2 ** 32 - 1)
            place = len(inner.bytes) + 4 + len(content.bytes)  # of the offset, from the encapsulation's start
            content.number("i", -(place + 8))  # back to the kind of the struct
            content.ulong(0)
            inner.octets(bytes(content.bytes))
        cdr.type(STRUCT, fill)

    yield make("recursive", tree, lambda c: c.ulong(2).ulong(0).ulong(1).ulong(0))
    nested = simple(LONG)
    for _ in range(200):
        nested = (lambda inner: lambda cdr: sequence_type(cdr, inner))(nested)
    yield make("nested_200", nested, lambda c: [c.ulong(1) for _ in range(200)] and c.number("i", 7))
    yield make("huge_length", lambda c: sequence_type(c, simple(LONG)), lambda c: c.ulong(2 ** 32 - 1))
    yield make("huge_array", lambda c: array_type(c, simple(OCTET), 2 ** 32 - 1), lambda c: c.ulong(0))
    yield make("empty_elements", lambda c: sequence_type(c, lambda i: struct_type(i, [])), lambda c: c.ulong(2 ** 31))
    yield make("null_elements", lambda c: sequence_type(c, simple(NULL)), lambda c: c.ulong(2 ** 31))


MASKING = {
    "login": b"\0oss1\nsecret\nthird",
    "too_short": b"\1oss1\nold secret",
    "modify": b"\1oss1\nold secret\nnew secret\nfourth",
    "empty": b"\2\n\n\n\n",
    "braces": b"\x03a{b}c\n}{\n}\n{",
    "bytes": b"\x04\xff\xfe\n\xc3(\n\x80\n\t\nfifth",
    "key": b"\x05name USERPWD value x\nname USERPWD value",
    "open": b"\x06said in the open",
}


def main():
    corpus = pathlib.Path(sys.argv[1])
    head = bytes(8)
    for name, data in samples():
        folder = corpus / "record_printer"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(head + data)
        if len(data) < 200:
            (folder / f"{name}_cut").write_bytes(head + data[:len(data) * 2 // 3])
    (corpus / "record_printer" / "swapped_long").write_bytes(b"\1" + bytes(7) + bytes([0, 0, 0, 3, 0, 0, 0, 7]))
    for name, data in MASKING.items():
        folder = corpus / "masking"
        folder.mkdir(parents=True, exist_ok=True)
        (folder / name).write_bytes(data)


if __name__ == "__main__":
    main()
