#!/usr/bin/python3
"""What else could map all units of a line: numpy alone, and a bit-transpose package.

usage: PeerBench.py [--rounds N] [--json FILE]

The work is that of the data map's pass over all units: 16 print units of 1-bit pixels into 16-bit frames. For the
package this is one bit transposition of 16 planes per line, the order of the bits in a frame aside. "in cache" are lines
that stay in the second-level cache, "from memory" a whole band. A peer that is not installed is left out (Debian
packages python3-numpy and bitshuffle). Figures are medians, of board data per second.
"""
import argparse
import json
import os
import statistics
import sys
import time

UNITS = 16
os.environ["OMP_NUM_THREADS"] = "1"  # before the package is loaded: all figures are per core

try:
    import numpy
except ImportError:
    numpy = None
try:
    import bitshuffle
except ImportError:
    bitshuffle = None


def seconds(work, rounds, repeats):
    work()
    times = []
    for _ in range(rounds):
        begin = time.perf_counter()
        for _ in range(repeats):
            work()
        times.append((time.perf_counter() - begin) / repeats)
    return statistics.median(times)


def numpy_seconds(units, rounds):
    """`units` is [line][unit][bytes]."""

    def work():
        pixels = numpy.unpackbits(units, axis=2)
        return numpy.packbits(pixels.transpose(0, 2, 1).reshape(len(units), -1), axis=1)

    return seconds(work, rounds, 1)


def bitshuffle_seconds(units, pixels, rounds):
    planes = units.reshape(-1).view(numpy.uint16)
    return seconds(lambda: bitshuffle.bitunshuffle(planes, pixels), rounds, max(1, 4_000_000 // planes.nbytes))


def main():
    parser = argparse.ArgumentParser(usage=__doc__.split("\n")[2][7:])
    parser.add_argument("--rounds", type=int, default=21)
    parser.add_argument("--json")
    arguments = parser.parse_args()
    rows = []

    def add(name, size, time_taken):
        rows.append({"name": name, "goal": "", "figure": size / time_taken / 1e9, "unit": "GB/s", "ratio": 0})
        print(f"{name:52} {rows[-1]['figure']:12.3f} GB/s")

    for pixels in (400, 4096) if numpy else ():
        for place, size in (("in cache", 64_000), ("from memory", 28_000_000)):
            lines = max(1, size // (2 * pixels))
            units = numpy.random.default_rng(1).integers(0, 256, (lines, UNITS, pixels // 8), dtype=numpy.uint8)
            if bitshuffle:
                add(f"peer, bit transpose, 16 bits, {pixels} px, {place}", units.nbytes,
                    bitshuffle_seconds(units, pixels, arguments.rounds))
            if place == "in cache":
                add(f"peer, numpy, 16 bits, {pixels} px, {place}", units.nbytes, numpy_seconds(units, arguments.rounds))
    for package, found in (("numpy", numpy), ("bitshuffle", bitshuffle)):
        if found is None:
            print(f"PeerBench: {package} is not installed", file=sys.stderr)
    if arguments.json:
        with open(arguments.json, "w", encoding="utf-8") as file:
            json.dump(rows, file, indent=1)


main()
