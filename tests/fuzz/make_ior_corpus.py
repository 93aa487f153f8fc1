#!/usr/bin/env python3
"""Writes the first inputs of the fuzz target ior_parser: make_ior_corpus.py FOLDER."""
import os
import struct
import sys

UIOP, SHMIOP, DIOP, UNKNOWN = 0x54414F00, 0x54414F02, 0x54414F04, 0x12345678


def octets(order, buffer, value):
    buffer += b"\0" * (-len(buffer) % 4)
    return buffer + struct.pack(order + "I", len(value)) + value


def body(host, port, version=(1, 2), little=True):
    order = "<" if little else ">"
    data = octets(order, bytes((little, *version)), host.encode() + b"\0")
    data += b"\0" * (-len(data) % 2) + struct.pack(order + "H", port)
    return octets(order, data, b"key")


def ior(profiles, little=True, count=None):
    order = "<" if little else ">"
    data = octets(order, bytes((little,)), b"IDL:x/Y:1.0\0")
    data += b"\0" * (-len(data) % 4) + struct.pack(order + "I", len(profiles) if count is None else count)
    for tag, content in profiles:
        data += b"\0" * (-len(data) % 4) + struct.pack(order + "I", tag)
        data = octets(order, data, content)
    return data


def main(folder):
    iiop = (0, body("emsa", 2809))
    whole = ior([iiop])
    files = {
        "iiop_little": whole,
        "iiop_big": ior([(0, body("emsa", 2809, little=False))], little=False),
        "port_0": ior([(0, body("emsa", 0))]),
        "version_1_0": ior([(0, body("emsa", 2809, (1, 0)))]),
        "version_1_3": ior([(0, body("emsa", 2809, (1, 3)))]),
        "version_2_0": ior([(0, body("emsa", 2809, (2, 0)))]),
        "uiop": ior([(UIOP, body("/tmp/point", 0))]),
        "uiop_then_iiop": ior([(UIOP, body("/tmp/point", 0)), iiop]),
        "shmiop": ior([(SHMIOP, body("mem", 11))]),
        "diop": ior([(DIOP, body("udp", 12))]),
        "unknown": ior([(UNKNOWN, b"xyz")]),
        "unknown_then_iiop": ior([(UNKNOWN, b"xyz"), (1, b"components"), iiop]),
        "no_profile": ior([]),
        "many_claimed": ior([(UNKNOWN, b"")], count=0xFFFFFFFF),
        "empty_body": ior([(0, b"")]),
        "long_body": whole[:28] + b"\xff\xff\xff\xff" + whole[32:],
        "long_host": whole[:36] + b"\xff\xff\xff\x7f" + whole[40:],
        "long_type": whole[:4] + b"\xff\xff\xff\xff" + whole[8:],
        "host_without_nul": ior([(0, whole[32:36] + struct.pack("<I", 4) + b"emsa" + b"\xf9\x0a")]),
        "flipped_tag": whole[:24] + bytes((whole[24] ^ 1,)) + whole[25:],
        "flipped_order": bytes((whole[0] ^ 1,)) + whole[1:],
    }
    for cut in range(0, len(whole), 5):
        files["cut_%02d" % cut] = whole[:cut]
    texts = {
        "text_ior": "IOR:" + whole.hex(),
        "text_ior_upper": "IOR:" + whole.hex().upper(),
        "text_ior_odd": "IOR:" + whole.hex() + "7",
        "text_ior_tail": "IOR:" + whole.hex() + "zz",
        "text_ior_bare": "IOR:",
        "text_iiop_version": "IIOP:1.2//myhost:2809/key",
        "text_iiop": "IIOP://myhost:2809/key",
        "text_iiop_bare": "IIOP:",
        "text_iiop_no_colon": "IIOP:myhost",
        "text_poop": ":IR:x",
        "text_poop_host": ":IRhost:pl:xyz",
        "text_lower": "iiop:1.2//myhost:2809/key",
    }
    files.update({name: text.encode() for name, text in texts.items()})
    os.makedirs(folder, exist_ok=True)
    for name, data in files.items():
        with open(os.path.join(folder, name), "wb") as file:
            file.write(data)


if __name__ == "__main__":
    main(sys.argv[1])
