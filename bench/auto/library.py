"""The library and its automatic settings, called from Python on pictures of uint8 (height, width, 3)."""
import ctypes as c
import os

import numpy as np

FAST, NON_LOCAL = 0, 1
MODES = {'fast': FAST, 'non-local': NON_LOCAL}
INPUTS = 11
WHITE = 32767  # of samples of 16 bits


class Profile(c.Structure):
    _fields_ = [(name, c.c_float) for name in ('luma_level', 'luma_noise', 'r1', 'chroma_level', 'chroma_noise', 'r2')]


class Picture(c.Structure):
    _fields_ = [('pixels', c.c_void_p), ('channel_step', c.c_ssize_t), ('pixel_step', c.c_ssize_t),
                ('row_step', c.c_ssize_t), ('width', c.c_int), ('height', c.c_int), ('white', c.c_int)]


class Evidence(c.Structure):
    _fields_ = [('iso_speed', c.c_double), ('exposure_time', c.c_double), ('full_megapixels', c.c_double),
                ('luma_steps', c.c_int * 5)]


class Noise(c.Structure):
    _fields_ = [('seen', c.c_int), ('sigma', c.c_float), ('correlation', c.c_float), ('non_local', c.c_float),
                ('fast', c.c_float)]


class Denoise(c.Structure):
    _fields_ = [('mode', c.c_int), ('strength', c.c_float), ('profile', Profile)]


class Library:
    def __init__(self, build):
        self.library = c.CDLL(os.path.join(build, 'libvxicore26.so'))
        self.auto = c.CDLL(os.path.join(build, 'libvx_auto_module.so'))
        self.library.vxAdjustRgb.argtypes = ([c.c_void_p] + [c.c_int] * 5 + [c.c_void_p] * 4 + [c.c_float] * 17 +
                                             [c.POINTER(Profile), c.c_float, c.c_float, c.c_int])
        self.library.vxUnblock.argtypes = [c.c_int, c.c_void_p] + [c.c_int] * 8
        self.auto.vxAutoRemoveBlocks.argtypes = [c.c_void_p, c.c_ssize_t] + [c.c_int] * 6
        self.auto.vxAutoChooseDenoise.restype = Denoise
        self.auto.vxAutoChooseDenoise.argtypes = [c.POINTER(Noise), c.c_int, c.c_double]

    def denoise(self, picture, strength, profile, mode):
        result = np.array(picture, order='C')
        height, width = picture.shape[:2]
        neutral = [0] * 8 + [1] * 3 + [0, 0, 1, 1, 0]
        self.library.vxAdjustRgb(result.ctypes.data, 1, 3 * width, width, height, 1, None, None, None, None, *neutral,
                                 strength, c.byref(profile), 0, 0, mode)
        return result

    def with_amount(self, picture, amount, correlation, mode):
        return self.chosen(picture, Noise(3, 0, correlation, amount, amount), mode)

    def chosen(self, picture, noise, mode):
        use = self.auto.vxAutoChooseDenoise(c.byref(noise), mode, 1)
        return self.denoise(picture, use.strength, use.profile, mode) if use.strength > 0 else picture

    def without_blocks(self, picture, quality):
        """In floats of 255: the samples keep their fractions."""
        height, width = picture.shape[:2]
        samples = np.array(np.rint(picture * (WHITE / 255)), np.uint16, order='C')
        self.auto.vxAutoRemoveBlocks(samples.ctypes.data, 3 * width, width, height, WHITE, quality, 0, 1)
        return samples * (255 / WHITE)

    def unblocked(self, picture, quality):
        """As vxUnblock alone does it, on bytes."""
        result = np.array(picture, order='C')
        height, width = picture.shape[:2]
        self.library.vxUnblock(0, result.ctypes.data, 3, 3 * width, width, height, quality, 0, 1, 0)
        return result

    def measure(self, picture, steps=None):
        view, evidence, noise = *self._views(picture, steps), Noise()
        self.auto.vxAutoMeasureNoise(c.byref(view), c.byref(evidence), c.byref(noise))
        return noise

    def inputs(self, picture, steps=None):
        view, evidence = self._views(picture, steps)
        values = (c.c_double * INPUTS)()
        self.auto.vxBenchInputs(c.byref(view), c.byref(evidence), values)
        return np.array(values)

    def by_the_first_estimate(self, picture, mode):
        """What hosts did with vxDenoiseEstNoise alone: strength 20 times the noise in the fast mode, up to 0.8; 0.25 +
        15 times in the other, up to 0.6; nothing below a level of 255."""
        profile = Profile()
        height, width = picture.shape[:2]
        self.library.vxDenoiseEstNoise(np.ascontiguousarray(picture).ctypes.data_as(c.c_void_p), 1, 3 * width, width,
                                       height, c.byref(profile))
        noise = profile.luma_noise
        if not 1 / 255 <= noise <= 1:
            return picture
        strength = min(.8, 20 * noise) if mode == FAST else min(.6, .25 + 15 * noise)
        return self.denoise(picture, strength, profile, mode)

    @staticmethod
    def _views(picture, steps):
        assert picture.flags.c_contiguous
        height, width = picture.shape[:2]
        return (Picture(picture.ctypes.data, 1, 3, 3 * width, width, height, 255),
                Evidence(0, 0, 0, (c.c_int * 5)(*(steps or [0] * 5))))


def psnr(clean, picture):
    error = np.mean((clean.astype(np.float32) - picture) ** 2)
    return 10 * np.log10(65025 / max(float(error), 1e-7))
