/**
 * @file auto_noise.h
 * The noise of a picture, and the settings of the noise filter that fit it.
 *
 *     VxAutoNoise noise;
 *     vxAutoMeasureNoise(&picture, &evidence, &noise);               // or vxAutoAssumeNoise
 *     VxAutoDenoise use = vxAutoChooseDenoise(&noise, VX_AUTO_NON_LOCAL, 1);
 *     vxAdjustRgb(..., use.strength, &use.profile, 0, 0, use.mode);  // does nothing at strength 0
 *
 * What vxDenoiseEstNoise measures is the deviation from pixel to pixel. The noise of a camera is
 * correlated over several pixels by demosaicking, smoothing and JPEG, and shows little of it; fine
 * texture shows much. The estimate here looks at blocks of several sizes and at the fine colour.
 * Two small networks, fitted to what the filters gain on simulated pictures, turn that into an
 * amount for each filter, or into "off" where the filter is likely to do harm.
 *
 * Every function gives a defined answer for every input, NaN and null pointers included. Same
 * input, same output.
 */
#ifndef VX_AUTO_NOISE_H
#define VX_AUTO_NOISE_H

#include "hosts/auto/auto_picture.h"
#include "vxicore26.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What the file tells beside the pixels. All 0: nothing is known. */
typedef struct VxAutoEvidence {
  /** @var isoSpeed
   *  EXIF PhotographicSensitivity, such as 1600; 0 when not known
   *  @var exposureTime
   *  EXIF ExposureTime in seconds; 0 when not known
   *  @var fullMegapixels
   *  the size at which the camera took the picture (EXIF PixelXDimension by PixelYDimension, in
   *  millions); 0 when not known. A picture that has become smaller lost noise */
  double isoSpeed, exposureTime, fullMegapixels;
  /** @var lumaSteps
   *  of a JPEG file: the first five AC steps of the luma's quantisation table in zigzag order
   *  (entries 1 to 5 of the DQT segment); all 0 for other files. The quantiser hides noise that
   *  is weaker than its steps */
  int lumaSteps[5];
} VxAutoEvidence;

/** What was seen of the noise. */
enum {
  VX_AUTO_NOTHING_SEEN = 0, /**< no picture, or too small to tell */
  VX_AUTO_CLEAN = 1,        /**< no noise that a filter could remove without harm */
  VX_AUTO_DRAWING = 2,      /**< a drawing or a screenshot */
  VX_AUTO_NOISY = 3,        /**< noise that was measured */
  VX_AUTO_ASSUMED = 4       /**< noise of a given sigma (vxAutoAssumeNoise) */
};

/** The noise of a picture. Has no pointers; hosts may copy and store it. */
typedef struct VxAutoNoise {
  /** @var seen
   *  one of the values above */
  int seen;
  /** @var sigma
   *  standard deviation of the luma (ITU-R BT.601) in flat places, in levels of 255; what was
   *  seen, also when it was taken for texture
   *  @var correlation
   *  deviation within blocks in relation to that from pixel to pixel: about 1.2 for white noise, 2
   *  to 5 for the noise of cameras */
  float sigma, correlation;
  /** @var nonLocal
   *  what the non-local filter should take away, as a standard deviation in levels of 255; 0 is off
   *  @var fast
   *  the range of the fast filter in levels of 255; 0 is off */
  float nonLocal, fast;
} VxAutoNoise;

/**
 * Measures the noise of a picture. Linear time, about 10 ms per megapixel; memory for the
 * statistics, less than a byte per pixel.
 *
 * Blocks whose deviations lie at the low end are flat, and what deviates there is noise: after J.
 * Immerkær, "Fast noise variance estimation", 1996 (the filter) and S. Pyatykh, J. Hesser, L.
 * Zheng, "Image noise level estimation by principal component analysis", 2013 (the low end of block
 * statistics).
 *
 * @param picture   null counts as no picture. Below 32 pixels on an axis nothing is seen
 * @param evidence  what the file tells; may be null
 * @param noise     receives the result; null does nothing
 * @return 1; 0 when there was no memory, and nothing is seen
 */
VX_AUTO_API int vxAutoMeasureNoise(const VxAutoPicture* picture, const VxAutoEvidence* evidence,
                                   VxAutoNoise* noise);

/**
 * Noise of a sigma that the user gives.
 *
 * @param sigma  standard deviation of the luma in levels of 255; up to 100, more counts as 100; NaN
 *               and below 0 as 0, which is off
 */
VX_AUTO_API VxAutoNoise vxAutoAssumeNoise(double sigma);

/**
 * The noise that is left when the picture is reduced for a preview. An estimate of the reduced
 * picture itself would not tell: reduced texture is finer and looks like noise.
 *
 * @param scale  1 and up, as the previewScale of vxAdjustRgb; less counts as 1
 */
VX_AUTO_API VxAutoNoise vxAutoReducedNoise(const VxAutoNoise* noise, int scale);

/** What to hand to vxAdjustRgb. */
enum {
  VX_AUTO_FAST = 0,      /**< the denoiseMode of the quick filter */
  VX_AUTO_NON_LOCAL = 1, /**< the denoiseMode of the non-local filter */
  VX_AUTO_ANY_MODE = 2   /**< the better of those that do good: non-local */
};
typedef struct VxAutoDenoise {
  /** @var mode
   *  denoiseMode: 0 or 1
   *  @var strength
   *  denoiseStrength; 0 is off. It may pass 1
   *  @var profile
   *  noiseProfile, for exactly this mode and strength */
  int mode;
  float strength;
  NoiseProfile profile;
} VxAutoDenoise;

/**
 * The settings that fit the noise.
 *
 * @param noise   null counts as none
 * @param mode    one of the three above
 * @param amount  in relation to what fits: 1 is the automatic, 0 is off, 2 twice as strong; to 4
 *                (more counts as 4; NaN and below 0 as 0). Where the automatic is off, so is every
 *                amount of it
 */
VX_AUTO_API VxAutoDenoise vxAutoChooseDenoise(const VxAutoNoise* noise, int mode, double amount);

/**
 * Tells in a line what was seen and chosen, such as "noise 4.1, correlated; non-local, strength
 * 1.50" or "no noise seen; off".
 *
 * @param noise,choice  null is left out
 * @param text          receives at most `size` bytes with a final 0; may be null when size is 0
 * @return the length of the whole line without the final 0
 */
VX_AUTO_API size_t vxAutoDescribeDenoise(const VxAutoNoise* noise, const VxAutoDenoise* choice,
                                         char* text, size_t size);

#ifdef __cplusplus
}
#endif

#endif
