"""A simulated camera: noisy pictures whose clean twins are known.

Clean picture -> linear light -> white balance undone -> RGGB mosaic with shot and read noise -> demosaicking
(bilinear, or gradient-corrected after Malvar, He and Cutler, "High-quality linear interpolation for demosaicing of
Bayer-patterned color images", 2004) -> white balance, gamma -> what the camera does to its pictures -> JPEG. The twin
takes the same way without noise and at JPEG quality 100.
"""
import io

import numpy as np
from PIL import Image

WHITE_BALANCE = np.array([2.0, 1.0, 1.6])
TO_YCC = np.array([[.299, .587, .114], [-.168736, -.331264, .5], [.5, -.418688, -.081312]])
FROM_YCC = np.linalg.inv(TO_YCC)
GAINS = {'low': 2e-4, 'mid': 1.2e-3, 'high': 5e-3}  # variance for a unit of linear light
BILINEAR_GREEN = np.array([[0, 1, 0], [1, 4, 1], [0, 1, 0]]) / 4
BILINEAR = np.array([[1, 2, 1], [2, 4, 2], [1, 2, 1]]) / 4
# Malvar, He, Cutler: green at red and blue, red at green in its row, in the other rows, red at blue.
GREEN = np.array([[0, 0, -1, 0, 0], [0, 0, 2, 0, 0], [-1, 2, 4, 2, -1], [0, 0, 2, 0, 0], [0, 0, -1, 0, 0]]) / 8
ROW = np.array([[0, 0, .5, 0, 0], [0, -1, 0, -1, 0], [-1, 4, 5, 4, -1], [0, -1, 0, -1, 0], [0, 0, .5, 0, 0]]) / 8
CROSS = np.array([[0, 0, -1.5, 0, 0], [0, 2, 0, 2, 0], [-1.5, 0, 6, 0, -1.5], [0, 2, 0, 2, 0], [0, 0, -1.5, 0, 0]]) / 8


def convolve(plane, kernel):
    down, across = kernel.shape[0] // 2, kernel.shape[1] // 2
    padded = np.pad(plane, ((down, down), (across, across)), mode='reflect')
    result = np.zeros_like(plane)
    for (y, x), weight in np.ndenumerate(kernel):
        if weight:
            result += weight * padded[y:y + plane.shape[0], x:x + plane.shape[1]]
    return result


def gaussian(plane, sigma):
    if sigma <= 0:
        return plane
    reach = max(1, int(3 * sigma + .5))
    taps = np.exp(-.5 * (np.arange(-reach, reach + 1) / sigma) ** 2)
    taps /= taps.sum()
    return convolve(convolve(plane, taps[None, :]), taps[:, None])


def box(plane, radius):
    side = 2 * radius + 1
    sums = np.pad(plane, ((radius + 1, radius),) * 2, mode='symmetric').cumsum(0).cumsum(1)
    return (sums[side:, side:] - sums[:-side, side:] - sums[side:, :-side] + sums[:-side, :-side]) / side ** 2


def guided(guide, plane, radius, variance):
    """He, Sun and Tang, "Guided image filtering", 2010."""
    mean_guide, mean = box(guide, radius), box(plane, radius)
    spread = np.maximum(box(guide * guide, radius) - mean_guide ** 2, 0)
    slope = (box(guide * plane, radius) - mean_guide * mean) / (spread + variance)
    return box(slope, radius) * guide + box(mean - slope * mean_guide, radius)


def demosaicked(raw, red, green, blue, gradients):
    if not gradients:
        return np.stack([convolve(raw * red, BILINEAR), convolve(raw * green, BILINEAR_GREEN),
                         convolve(raw * blue, BILINEAR)], -1)
    row, column, cross = convolve(raw, ROW), convolve(raw, ROW.T), convolve(raw, CROSS)
    in_red_row = np.zeros_like(red)
    in_red_row[0::2] = True
    beside, below = np.where(in_red_row, row, column), np.where(in_red_row, column, row)
    return np.stack([np.where(red, raw, np.where(blue, cross, beside)), np.where(green, raw, convolve(raw, GREEN)),
                     np.where(blue, raw, np.where(red, cross, below))], -1)


def first_steps(table):
    """The first five AC steps in zigzag order, of a table in rows as Pillow gives it."""
    return [table[i] for i in (1, 8, 16, 9, 2)]


def jpeg(picture, quality, subsampling):
    """The picture as its JPEG file shows it, and the luma's first five AC steps in zigzag order."""
    stream = io.BytesIO()
    Image.fromarray(picture).save(stream, 'JPEG', quality=quality, subsampling=subsampling)
    image = Image.open(stream)
    return np.asarray(image.convert('RGB')), first_steps(image.quantization[0])


def choose_camera(random, processed):
    """The settings of a camera; `processed`: it reduces noise along edges and sharpens, and its file was saved again."""
    camera = {'gradients': bool(random.integers(2)), 'smooth': random.choice([0, 0, .5, .8]),
              'smooth_colour': random.choice([0, 1, 2]), 'quality': int(random.integers(72, 98)),
              'subsampling': int(random.integers(3)), 'reduction': 0, 'sharpening': 0, 'again': None}
    if processed:
        camera |= {'quality': int(random.integers(90, 98)), 'reduction': random.choice([0, 1, 1.5, 2.5]),
                   'radius': int(random.choice([2, 3])), 'sharpening': random.choice([0, .5, 1]),
                   'width': random.choice([.7, 1, 1.5]), 'again': int(random.integers(70, 81))}
    return camera


def photograph(clean, gain, camera, random, noise):
    """The picture (uint8, even sizes) as the camera's file shows it, and the steps of its luma."""
    light = clean / 255
    light = np.where(light <= .04045, light / 12.92, ((light + .055) / 1.055) ** 2.4) / WHITE_BALANCE
    red, green, blue = (np.zeros(clean.shape[:2], bool) for _ in range(3))
    red[0::2, 0::2] = green[0::2, 1::2] = green[1::2, 0::2] = blue[1::2, 1::2] = True
    raw = light[..., 0] * red + light[..., 1] * green + light[..., 2] * blue
    if noise:
        raw = raw + random.normal(0, 1, raw.shape) * np.sqrt(gain * raw + (2 * gain) ** 2 + 1e-7)
    light = np.clip(demosaicked(np.clip(raw, -.02, 1), red, green, blue, camera['gradients']) * WHITE_BALANCE, 0, 1)
    ycc = 255 * np.where(light <= .0031308, 12.92 * light, 1.055 * light ** (1 / 2.4) - .055) @ TO_YCC.T
    luma, colours = gaussian(ycc[..., 0], camera['smooth']), [gaussian(ycc[..., c], camera['smooth_colour']) for c in (1, 2)]
    if camera['reduction']:
        variance = camera['reduction'] ** 2 * (306 ** 2) * gain * .2  # noise of the luma at middle brightness
        colours = [guided(luma, c, 2 * camera['radius'], 4 * variance) for c in colours]
        luma = guided(luma, luma, camera['radius'], variance)
    if camera['sharpening']:
        luma = luma + camera['sharpening'] * (luma - gaussian(luma, camera['width']))
    picture = np.clip(np.rint(np.stack([luma, *colours], -1) @ FROM_YCC.T), 0, 255).astype(np.uint8)
    if not noise:
        return jpeg(picture, 100, 0)
    picture, steps = jpeg(picture, camera['quality'], camera['subsampling'])
    return (picture, steps) if camera['again'] is None else jpeg(picture, camera['again'], 2)


def simulate(clean, iso, random, processed=False):
    """Noisy picture, its clean twin, steps of the noisy one's luma."""
    camera, gain = choose_camera(random, processed), GAINS[iso] * 2 ** random.uniform(-.7, .7)
    noisy, steps = photograph(clean, gain, camera, random, True)
    return noisy, photograph(clean, gain, camera, random, False)[0], steps


def with_noise(clean, sigma, random, blur=0):
    """White noise, or such noise smoothed (its sigma is meant afterwards)."""
    noise = random.normal(0, 1, clean.shape)
    if blur:
        noise = np.stack([gaussian(noise[..., c], blur) for c in range(3)], -1)
    return np.clip(np.rint(clean + sigma * noise / noise.std()), 0, 255).astype(np.uint8)


def enlarged(picture, factor):
    """The middle of the picture, enlarged to its size: full-size pictures of cameras are as soft."""
    height, width = picture.shape[:2]
    h, w = int(height / factor) // 2 * 2, int(width / factor) // 2 * 2
    y, x = (height - h) // 2, (width - w) // 2
    return np.asarray(Image.fromarray(picture[y:y + h, x:x + w]).resize((width, height), Image.BICUBIC))
