#!/usr/bin/env python3
"""What the removal of block artifacts gains on photographs coded as JPEG, beside vxUnblock alone.

    blocks.py BUILD PHOTOGRAPHS

PHOTOGRAPHS is a list of files, one on each line. They are reduced to half and more, which takes away the blocks they came
with, cut, and coded with 4:2:0; the trips have the quality of the file. Prints a table in Markdown: PSNR gained in
dB, mean and worst, and the mean and the largest change of brightness in levels of 255; and the most that a sample of a grey
ramp and of a flat grey moves, as they are and coded.
"""
import sys

import numpy as np

import items
from library import Library, psnr

QUALITIES = 20, 40, 75
SALT = 2000  # other crops than those of fit.py and quality.py


def largest_move(library, grey, quality, coded):
    picture = np.repeat(grey[..., None], 3, 2)
    if coded:
        picture, _ = items.camera.jpeg(picture, quality, 0)
    return np.abs(library.without_blocks(picture, quality) - picture).max()


def main():
    library = Library(sys.argv[1])
    photographs = []
    for path in (line.strip() for line in open(sys.argv[2])):
        image = items.opened(path)
        photographs.append(items.crop(image, items.generator(path, SALT), min(1200, max(image.size) // 2)))
    print(f'{len(photographs)} photographs\n\n| quality | gain: mean / worst | vxUnblock alone | brightness: mean / most | '
          'vxUnblock alone | ramp, coded ramp, coded flat grey move by |\n|---|---|---|---|---|---|')
    ramp, flat = np.tile(np.arange(512) // 2, (64, 1)).astype(np.uint8), np.full((64, 512), 123, np.uint8)
    for quality in QUALITIES:
        cells = [str(quality)]
        columns = []
        for remove in (library.without_blocks, library.unblocked):
            values = []
            for clean in photographs:
                coded, _ = items.camera.jpeg(clean, quality, 2)
                after = remove(coded, quality)
                values.append((psnr(clean, np.rint(after)) - psnr(clean, coded), after.mean() - coded.mean()))
            gains, changes = np.array(values).T
            columns.append((f'{gains.mean():+.3f} / {gains.min():+.3f}',
                            f'{changes.mean():+.3f} / {max(changes, key=abs):+.3f}'))
        cells += [columns[0][0], columns[1][0], columns[0][1], columns[1][1]]
        moves = [largest_move(library, grey, quality, is_coded)
                 for grey, is_coded in ((ramp, False), (ramp, True), (flat, True))]
        print(f'| {" | ".join(cells)} | {", ".join(f"{move:.2f}" for move in moves)} |', flush=True)


if __name__ == '__main__':
    main()
