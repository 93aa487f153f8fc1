#!/usr/bin/env python3
"""Writes the network of the demo EMS as the JSON data file that qv_demo_agent reads.

The same options always give the same file: make_inventory.py --count 300 --out inventory.json made the one that lies
here. Large counts serve to see how the agent deals with long lists.
"""
import argparse
import json
import random
import sys

CITIES = ["Aalen", "Bremen", "Celle", "Dresden", "Erfurt", "Fulda", "Gera", "Halle", "Ilmenau", "Jena", "Kassel",
          "Leipzig", "Mainz", "Neuss", "Oldenburg", "Potsdam", "Rostock", "Stade", "Trier", "Ulm"]
PRODUCTS = [("OptiCross 9800", [15, 20, 25, 73, 87]), ("MetroEdge 3500", [15, 20, 96]),
            ("AccessNode 200", [11, 13, 15]), ("PacketCore 640", [96, 98, 113])]
OWNERS = ["Core Network", "Metro North", "Metro South", "Access"]
SITES = ["Main exchange", "Ring station", "Street cabinet", "Data centre"]


def element(number, dice, remark):
    city = CITIES[number % len(CITIES)]
    product, rates = PRODUCTS[dice.randrange(len(PRODUCTS))]
    site = dice.choice(SITES)
    info = {
        "Rack": str(dice.randint(1, 48)),
        "SerialNumber": f"{dice.getrandbits(48):012X}",
        "InstalledOn": f"20{dice.randint(10, 25)}-{dice.randint(1, 12):02d}-{dice.randint(1, 28):02d}",
    }
    if remark > 0:
        info["Remark"] = "".join(dice.choices("abcdefghijklmnopqrstuvwxyz ", k=remark))
    return {
        "name": f"NE-{number + 1:05d}",
        "user_label": f"{city}-{number // len(CITIES) + 1:03d}",
        "native_name": f"{city.upper()[:3]}{number + 1:05d}",
        "owner": dice.choice(OWNERS),
        "location": f"{site}, {city}",
        "version": f"V{dice.randint(1, 4)}.{dice.randint(0, 9):02d}.{dice.randint(1, 99):02d}",
        "product": product,
        "reachable": dice.random() > 0.03,
        "in_sync": dice.random() > 0.05,
        "rates": rates,
        "additional_info": info,
    }


def write(out, count, seed, remark):
    dice = random.Random(seed)
    ems = {"user_label": "Demo EMS", "owner": "Network Operations", "version": "1.0", "type": "Demo EMS"}
    out.write('{"ems": ' + json.dumps(ems) + ',\n "elements": [\n')
    for number in range(count):
        out.write("  " + json.dumps(element(number, dice, remark)) + (",\n" if number + 1 < count else "\n"))
    out.write("]}\n")


def main():
    parser = argparse.ArgumentParser(description=__doc__.split("\n\n", maxsplit=1)[0])
    parser.add_argument("--count", type=int, default=300, help="number of elements (default 300)")
    parser.add_argument("--seed", type=int, default=814, help="start of the random numbers (default 814)")
    parser.add_argument("--remark", type=int, default=0,
                        help="length of a remark that makes each element larger (default: none)")
    parser.add_argument("--out", default="-", help="file to write; - for standard output (default)")
    options = parser.parse_args()
    if options.count < 0:
        parser.error("--count must not be negative")
    if options.out == "-":
        write(sys.stdout, options.count, options.seed, options.remark)
        return
    with open(options.out, "w", encoding="utf-8") as out:
        write(out, options.count, options.seed, options.remark)


if __name__ == "__main__":
    main()
