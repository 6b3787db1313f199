"""Noisy pictures with clean twins, out of photographs and drawings."""
import zlib
from dataclasses import dataclass

import numpy as np
from PIL import Image

import camera

Image.MAX_IMAGE_PIXELS = None
WIDTH, HEIGHT = 512, 384
CAMERAS = [f'{kind} {iso}' for kind in ('camera', 'processed') for iso in camera.GAINS]
KINDS = ['white 2', 'white 3', 'white 5', 'white 10', 'white 20', 'clean', 'jpeg', 'smoothed', 'smoothed jpeg', *CAMERAS]


@dataclass
class Item:
    kind: str  # one of KINDS, 'E' behind it where the picture was enlarged first; 'native', 'drawing', 'drawing jpeg'
    noisy: np.ndarray
    clean: np.ndarray
    steps: list  # of the noisy picture's JPEG file, or None


def generator(path, salt):
    return np.random.default_rng(zlib.crc32(path.rsplit('/', 1)[-1].encode()) + salt)


def opened(path):
    image = Image.open(path)
    if image.mode in ('RGBA', 'LA', 'P'):
        image = Image.alpha_composite(Image.new('RGBA', image.size, 'white'), image.convert('RGBA'))
    return image.convert('RGB')


def crop(image, random, longest=None):
    """A crop of even sizes at a random place, of the picture reduced to `longest` on its longer side."""
    width, height = image.size
    if longest and longest < max(width, height):
        factor = max(longest / max(width, height), min(1, WIDTH / width), min(1, HEIGHT / height))
        image = image.resize((int(np.ceil(width * factor)), int(np.ceil(height * factor))), Image.LANCZOS)
        width, height = image.size
    w, h = min(width, WIDTH) // 2 * 2, min(height, HEIGHT) // 2 * 2
    x, y = (int(random.integers(0, n)) // 8 * 8 for n in (width - w + 1, height - h + 1))
    return np.asarray(image.crop((x, y, x + w, y + h)))


def item(clean, kind, random):
    """The picture in one of KINDS."""
    what, _, which = kind.partition(' ')
    if what in ('camera', 'processed'):
        noisy, twin, steps = camera.simulate(clean, which, random, what == 'processed')
        return Item(kind, noisy, twin, steps)
    noisy, steps = clean, None
    if what == 'white':
        noisy = camera.with_noise(clean, int(which), random)
    elif what == 'smoothed':
        sigma = np.exp(random.uniform(np.log(1.5), np.log(14)))
        noisy = camera.with_noise(clean, sigma, random, random.uniform(.4, 1.3))
    if kind in ('jpeg', 'smoothed jpeg'):
        noisy, steps = camera.jpeg(noisy, int(random.integers(65, 98)), int(random.choice([0, 2])))
    return Item(kind, noisy, clean, steps)


def of_photograph(path, crops, kinds, salt=0):
    """`kinds` of them and two JPEGs in each of `crops` crops, reduced by chance so that what was in the file is gone; and
    a crop at full size, as it is."""
    image, random = opened(path), generator(path, salt)
    for _ in range(crops):
        picture = crop(image, random, random.uniform(700, 1800))
        soft = camera.enlarged(picture, 1.5)
        some = [(str(kind), bool(random.integers(2))) for kind in random.permutation(KINDS)[:kinds]]
        for kind, enlarge in [*some, ('jpeg', False), ('jpeg', True)]:
            result = item(soft if enlarge else picture, kind, random)
            result.kind += ' E' if enlarge else ''
            yield result
    native = crop(image, random)
    tables = getattr(Image.open(path), 'quantization', None)
    yield Item('native', native, native, camera.first_steps(tables[0]) if tables else None)


def of_drawing(path, salt=0):
    random = generator(path, salt)
    clean = crop(opened(path), random, 1600)
    yield Item('drawing', clean, clean, None)
    yield item(clean, 'jpeg', random)
