#!/usr/bin/python3
"""The page of scripts/presets: what every shipped preset does to pictures of every kind.

usage: preset_page.py PROGRAM OUT PHOTO...

Writes OUT/index.html and OUT/sheet-N.png: a row per picture, a column per preset, each with the whole picture, a part
of it at twice the size, and two numbers: by how many points the share of pixels with a clipped channel grew, and the
gain in PSNR where the undisturbed picture is known, elsewhere the change of the mean.
"""
import io
import pathlib
import subprocess
import sys

import numpy as np
from PIL import Image, ImageDraw, ImageFont

sys.path.insert(0, str(pathlib.Path(__file__).resolve().parent.parent / 'bench' / 'auto'))
import camera  # noqa: E402

SIDE, CELL, PART, ROWS = 640, 200, 100, 7
LUMA = np.array([.299, .587, .114])


def psnr(clean, picture):
    return 10 * np.log10(255 ** 2 / max(np.mean((clean.astype(float) - picture) ** 2), 1e-9))


def clipped(picture):
    return 100 * np.mean(((picture == 0) | (picture == 255)).any(2))


def photograph(path):
    """Reduced, which takes noise and blocks away, to even sizes."""
    image = Image.open(path).convert('RGB')
    scale = max(1, round(max(image.size) / SIDE))
    size = [n // scale // 2 * 2 for n in image.size]
    return np.asarray(image.resize(size, Image.BOX))


def screenshot():
    image = Image.new('RGB', (480, 360), (246, 246, 246))
    draw, font = ImageDraw.Draw(image), ImageFont.load_default()
    draw.rectangle((0, 0, 479, 23), fill=(52, 101, 164))
    draw.text((8, 6), 'A window', fill='white', font=font)
    for row in range(20):
        draw.text((12, 34 + 15 * row), f'{row + 1:3}  The quick brown fox jumps over the lazy dog, again and again.',
                  fill=(20, 20, 20) if row % 4 else (164, 0, 0), font=font)
    draw.rectangle((400, 290, 465, 345), outline=(0, 0, 0), fill=(138, 226, 52))
    return np.asarray(image)


def drawing():
    """Flat colours with smooth outlines."""
    image = Image.new('RGB', (1440, 1080), (255, 250, 235))
    draw = ImageDraw.Draw(image)
    draw.ellipse((120, 150, 690, 720), fill=(204, 0, 0), outline='black', width=9)
    draw.polygon(((600, 900), (960, 210), (1320, 900)), fill=(32, 74, 135), outline='black')
    draw.rectangle((240, 660, 810, 990), fill=(237, 212, 0), outline='black', width=6)
    for i in range(12):
        draw.line((60, 60 + 84 * i, 1380, 30 + 90 * i), fill=(78, 154, 6), width=3 + i % 3 * 3)
    return np.asarray(image.resize((480, 360), Image.LANCZOS))


def pictures(photos):
    """Name, bytes of the file, extension, and the undisturbed picture where there is one."""
    def png(picture):
        stream = io.BytesIO()
        Image.fromarray(picture).save(stream, 'PNG')
        return stream.getvalue()

    def jpeg(picture, quality):
        stream = io.BytesIO()
        Image.fromarray(picture).save(stream, 'JPEG', quality=quality)
        return stream.getvalue()

    clean = {pathlib.Path(path).stem: photograph(path) for path in photos}
    for name, picture in clean.items():
        yield name, png(picture), 'png', None
    several = list(clean.items())[:3]
    for name, picture in several:
        for quality in (25, 40, 92):
            yield f'{name}, JPEG {quality}', jpeg(picture, quality), 'jpg', picture
    for number, (name, picture) in enumerate(several):
        for iso in ('mid', 'high'):
            noisy, twin, _ = camera.simulate(camera.enlarged(picture, 1.5), iso, np.random.default_rng(number))
            yield f'{name}, {iso} ISO', jpeg(noisy, 96), 'jpg', twin
    grey = (several[0][1] @ LUMA + .5).astype(np.uint8)
    yield f'{several[0][0]}, black and white', png(np.repeat(grey[..., None], 3, 2)), 'png', None
    for name, picture in (('screenshot', screenshot()), ('drawing', drawing())):
        yield name, png(picture), 'png', None
        yield f'{name}, JPEG 40', jpeg(picture, 40), 'jpg', picture


def columns(program):
    """The arguments of each column."""
    yield 'auto', ['adjust', '--auto']
    for preset in sorted((pathlib.Path(program).parent / 'presets').glob('*/*.toml')):
        yield preset.stem, [preset.parent.name, '--preset', preset.stem]


def part(picture):
    """The part with the most going on, at twice the size."""
    luma = picture @ LUMA
    best = max(((luma[y:y + PART, x:x + PART].std(), y, x) for y in range(0, max(1, picture.shape[0] - PART), PART // 2)
                for x in range(0, max(1, picture.shape[1] - PART), PART // 2)))
    return best[1:]


def cell(picture, corner, text):
    whole = Image.fromarray(picture)
    whole.thumbnail((CELL, CELL))
    y, x = corner
    detail = Image.fromarray(picture[y:y + PART, x:x + PART]).resize((2 * PART, 2 * PART), Image.NEAREST)
    result = Image.new('RGB', (CELL + 2 * PART + 8, CELL + 16), (34, 34, 34))
    result.paste(whole, (0, 14))
    result.paste(detail, (CELL + 2, 14))
    ImageDraw.Draw(result).text((2, 1), text, fill='white')
    return result


def row(program, out, name, data, extension, clean, arguments):
    source = out / f'in.{extension}'
    source.write_bytes(data)
    before = np.asarray(Image.open(source).convert('RGB'))
    corner = part(before)
    told = '' if clean is None else f' {psnr(clean, before):.2f} dB'
    cells = [cell(before, corner, f'{name}{told}')]
    for title, options in arguments:
        command = [program, options[0], source, '-o', out / 'out.png', '--force', *options[1:]]
        subprocess.run(command, check=True, stderr=subprocess.DEVNULL)
        after = np.asarray(Image.open(out / 'out.png').convert('RGB'))
        gain = f'mean {after.mean() - before.mean():+.1f}' if clean is None else \
            f'{psnr(clean, after) - psnr(clean, before):+.2f} dB'
        cells.append(cell(after, corner, f'{title}: clipped {clipped(after) - clipped(before):+.1f}, {gain}'))
        print(f'{name}; {title}; {clipped(after) - clipped(before):+.2f}; {gain}', flush=True)
    return cells


def main(program, out, *photos):
    out = pathlib.Path(out)
    out.mkdir(parents=True, exist_ok=True)
    arguments = list(columns(program))
    rows = [row(program, out, *picture, arguments) for picture in pictures(photos)]
    sheets = []
    for first in range(0, len(rows), ROWS):
        some = rows[first:first + ROWS]
        width, height = some[0][0].size
        sheet = Image.new('RGB', (width * len(some[0]), height * len(some)))
        for y, cells in enumerate(some):
            for x, image in enumerate(cells):
                sheet.paste(image, (x * width, y * height))
        sheets.append(f'sheet-{len(sheets) + 1}.png')
        sheet.save(out / sheets[-1])
    images = '\n'.join(f'<img src="{name}" alt="">' for name in sheets)
    (out / 'index.html').write_text('<!DOCTYPE html>\n<html lang="en"><meta charset="utf-8"><title>Presets</title>\n'
                                    f'<body style="margin: 0; background: #222">\n{images}\n', encoding='utf-8')


if __name__ == '__main__':
    main(*sys.argv[1:])
