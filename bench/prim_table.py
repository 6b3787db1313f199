#!/usr/bin/env python3
"""Tables in Markdown from the JSON files of prim_bench.

usage: prim_table.py [--check README] FILE.json...

Prints one table for each size: the rate of the generic body in GB/s (bytes read and written), the
other bodies as ratios to it, AVX2 over SSE2, and for copies and one-operation forms the widest body
as a ratio to memcpy. Then the primitives that gain less than 1.5 from AVX2 over SSE2 from L1; with
--check those of them that no `pattern` of the file's section "Below 1.5" names, and exit code 1.
"""

import fnmatch
import json
import re
import sys

BODIES = ["generic", "sse2", "ssse3", "sse41", "avx2", "avx512"]
ONE_OPERATION = re.compile(
    r"primv?(Copy|Set|Zero|Convert|Add|Sub|Mul|Div|Abs|Sqr|Threshold|Compare)")
WANTED = 1.5


def read(paths):
    """{size: {primitive: {body: bytes per second}}}, both in the order of the files."""
    levels = {}
    for path in paths:
        with open(path, encoding="utf-8") as file:
            for run in json.load(file)["benchmarks"]:
                name, level = run["name"].split("/")[:2]
                if run.get("error_occurred"):
                    sys.exit(f"{name} at {level}: {run['error_message']}")
                levels.setdefault(level, {})[name] = {
                    key: run[key] for key in BODIES + ["memcpy"] if key in run}
    return levels


def gain(rates):
    return rates["avx2"] / rates["sse2"] if "avx2" in rates else None


def number(value):
    return "" if value is None else f"{value:.2f}" if value < 9.95 else f"{value:.1f}"


def print_table(level, prims):
    bodies = [body for body in BODIES if any(body in rates for rates in prims.values())]
    print(f"\n### {level}\n")
    print("| primitive | generic GB/s | " + " | ".join(bodies[1:]) + " | avx2/sse2 | to memcpy |")
    print("|---|" + "--:|" * (len(bodies) + 2))
    for name, rates in prims.items():
        generic = rates["generic"]
        cells = [number(generic * 1e-9)] + [number(rates[body] / generic) for body in bodies[1:]]
        cells.append(number(gain(rates)))
        one = ONE_OPERATION.match(name)
        cells.append(number(rates[bodies[-1]] / rates["memcpy"]) if one else "")
        print(f"| {name} | " + " | ".join(cells) + " |")


def main(arguments):
    readme = None
    if arguments[:1] == ["--check"] and len(arguments) > 1:
        readme, arguments = arguments[1], arguments[2:]
    if not arguments:
        sys.exit(__doc__)
    levels = read(arguments)
    for level, prims in levels.items():
        print_table(level, prims)
    low = [(name, gain(rates)) for name, rates in levels.get("L1", {}).items()
           if gain(rates) is not None and gain(rates) < WANTED]
    print(f"\nAVX2 below {WANTED} x SSE2 from L1: {len(low)}\n")
    for name, ratio in low:
        print(f"- {name}: {ratio:.2f}")
    if readme:
        with open(readme, encoding="utf-8") as file:
            section = file.read().split("Below 1.5", 1)[-1].split("\n## ", 1)[0]
        patterns = re.findall(r"`(prim[\w*]+)`", section)
        unnamed = [name for name, _ in low
                   if not any(fnmatch.fnmatchcase(name, pattern) for pattern in patterns)]
        if unnamed:
            sys.exit("no reason given for: " + " ".join(unnamed))


if __name__ == "__main__":
    main(sys.argv[1:])
