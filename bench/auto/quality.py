#!/usr/bin/env python3
"""What the automatic noise filter gains on simulated pictures, beside the first estimate and the best amount.

    quality.py BUILD PHOTOGRAPHS [DRAWINGS]

PHOTOGRAPHS and DRAWINGS are lists of files, one on each line. Prints tables in Markdown: PSNR gained in dB, mean and
worst, and the share of items that lose more than 0.1 dB. "first" is the settings from vxDenoiseEstNoise alone, "auto"
those of hosts/auto, "best" the best of a series of amounts, or off, for each picture. Losses of more than 1 dB are told
on the error output.
"""
import collections
import multiprocessing
import os
import sys

import numpy as np

import items
from library import MODES, Library, psnr

AMOUNTS = {'fast': (2.5, 4, 6, 9, 13, 18, 25, 35, 50), 'non-local': (1.5, 2.5, 4, 6.5, 11)}
KINDS = ['white 5', 'white 10', 'jpeg', *items.CAMERAS]
TO_THEMSELVES = ('clean', 'drawing')
SALT = 1000  # other crops than any that were fitted to


def of_photograph(path):
    """Reduced to half and more, which takes away the noise and the blocks that are in the file."""
    image, random = items.opened(path), items.generator(path, SALT)
    picture = items.crop(image, random, min(1200, max(image.size) // 2))
    soft = items.camera.enlarged(picture, 1.5)
    yield items.Item('clean', picture, picture, None)
    for kind in KINDS:
        yield items.item(picture, kind, random)
        if kind.partition(' ')[0] in ('camera', 'processed'):
            item = items.item(soft, kind, random)
            item.kind += ' E'
            yield item


def of_drawing(path):
    clean = items.crop(items.opened(path), items.generator(path, SALT), 1600)
    yield items.Item('drawing', clean, clean, None)


def results(library, item, mode):
    """PSNR of first, auto and best."""
    noise = library.measure(item.noisy, item.steps)
    correlation = noise.correlation
    pictures = [library.by_the_first_estimate(item.noisy, MODES[mode]), library.chosen(item.noisy, noise, MODES[mode])]
    first, auto = (psnr(item.clean, picture) for picture in pictures)
    if item.kind in TO_THEMSELVES:
        return first, auto, 0
    before = psnr(item.clean, item.noisy)
    tried = [psnr(item.clean, library.with_amount(item.noisy, a, correlation, MODES[mode])) for a in AMOUNTS[mode]]
    return first - before, auto - before, max(0, auto - before, *(value - before for value in tried))


def row(name, values):
    values = np.array(values)
    cells = [f'{values[:, k].mean():.2f} / {values[:, k].min():+.2f}' for k in (0, 1)]
    return f'| {name} | {len(values)} | {cells[0]} | {cells[1]} | {values[:, 2].mean():.2f} |'


def print_table(mode, by_kind):
    print(f'\n## {mode}\n\n| | items | first: mean / worst | auto: mean / worst | best: mean |\n|---|---|---|---|---|')
    noisy = {kind: values for kind, values in by_kind.items() if kind not in TO_THEMSELVES}
    for kind, values in sorted(noisy.items()):
        print(row(kind, values))
    every = np.array(sum(noisy.values(), []))
    print(row('all of these', every))
    losing = [f'{100 * np.mean(every[:, k] < -.1):.1f} % of all lose more than 0.1 dB, {100 * np.mean(every[:, k] < -1):.1f} %'
              f' more than 1' for k in (0, 1)]
    print(f'\nFirst: {losing[0]}. Auto: {losing[1]}.\n')
    for kind in TO_THEMSELVES:
        if kind in by_kind:
            values = np.array(by_kind[kind])
            changed = 100 * np.mean(values[:, 1] < 100)
            print(f'{kind}: {len(values)} pictures, to themselves at the worst first {values[:, 0].min():.1f} dB, auto '
                  f'{values[:, 1].min():.1f} dB; auto is on in {changed:.0f} % (100 dB and more is no change).')


def of_file(build, source, path):
    """Mode, kind and results of each item."""
    library = Library(build)
    every = [(mode, item.kind, results(library, item, mode)) for item in source(path) for mode in MODES]
    for mode, kind, (_, auto, best) in every:
        if kind not in TO_THEMSELVES and auto < -1:
            print(f'{path}: {kind}, {mode}: {auto:.2f} dB', file=sys.stderr, flush=True)
    return every


def main():
    os.environ['OMP_NUM_THREADS'] = '1'  # a process for each processor instead
    lists = [[line.strip() for line in open(name)] for name in sys.argv[2:4]]
    files = [(sys.argv[1], source, path) for source, paths in zip((of_photograph, of_drawing), lists) for path in paths]
    by_mode = {mode: collections.defaultdict(list) for mode in MODES}
    with multiprocessing.Pool() as pool:
        for every in pool.starmap(of_file, files, 1):
            for mode, kind, values in every:
                by_mode[mode][kind].append(values)
    for mode, by_kind in by_mode.items():
        print_table(mode, by_kind)


if __name__ == '__main__':
    main()
