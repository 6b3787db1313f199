#!/usr/bin/env python3
"""Times a folder of JPEG pictures through vxicore, one at a time and several, and through other programs.

    bench/batch.py build/release/vxicore FOLDER [TURNS]

ImageMagick (Debian: imagemagick) and libvips (libvips-tools) do comparable work where they are installed: levels,
sharpening and saturation; sharpening alone. They get as many processes as there are processors. Commands run in turn;
prints medians of wall and processor time, and the ratio of the wall times to the first.
"""
import os
import pathlib
import resource
import shutil
import statistics
import subprocess
import sys
import tempfile
import time


def commands(program, pictures):
    """Names and argument lists; {} is the folder of the results."""
    names = [str(picture) for picture in pictures]
    adjust = [program, "adjust", *names, "-q", "--preset", "vivid", "-o", "{}/"]
    yield "vxicore --jobs 1", [*adjust, "--jobs", "1"]
    yield "vxicore", adjust
    several = ["xargs", "-P", str(os.cpu_count()), "-I@"]
    if shutil.which("convert"):
        yield "ImageMagick", [*several, "convert", "@", "-auto-level", "-unsharp", "0x1", "-modulate", "100,115",
                              "-set", "filename:f", "%t", "{}/%[filename:f].jpg"]
    if shutil.which("vips"):
        yield "vips sharpen", [*several, "sh", "-c", 'vips sharpen "$1" "{}/$(basename "$1")"', "sh", "@"]


def run(command, pictures):
    """Seconds of wall and processor time."""
    with tempfile.TemporaryDirectory() as folder:
        before = resource.getrusage(resource.RUSAGE_CHILDREN)
        start = time.perf_counter()
        subprocess.run([part.replace("{}", folder) for part in command], check=True, text=True,
                       input="\n".join(str(picture) for picture in pictures))
        wall = time.perf_counter() - start
        after = resource.getrusage(resource.RUSAGE_CHILDREN)
        results = sum(1 for _ in pathlib.Path(folder).iterdir())
        if results != len(pictures):
            sys.exit(f"{command[0]}: {results} results of {len(pictures)}")
    return wall, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def main():
    program, folder = sys.argv[1], pathlib.Path(sys.argv[2])
    turns = int(sys.argv[3]) if len(sys.argv) > 3 else 3
    pictures = sorted(folder.glob("*.jpg"))
    chosen = dict(commands(program, pictures))
    times = {name: [] for name in chosen}
    for _ in range(turns):
        for name, command in chosen.items():
            times[name].append(run(command, pictures))
    print(f"{len(pictures)} pictures, {os.cpu_count()} processors, medians of {turns} turns\n")
    print("| | wall s | processor s | wall, ratio |\n|---|---|---|---|")
    walls = {name: statistics.median(wall for wall, _ in turn) for name, turn in times.items()}
    first = next(iter(walls.values()))
    for name, turn in times.items():
        spent = statistics.median(used for _, used in turn)
        print(f"| {name} | {walls[name]:.1f} | {spent:.1f} | {walls[name] / first:.2f} |")


if __name__ == "__main__":
    main()
