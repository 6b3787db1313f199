#ifndef VXICORE26_H
#define VXICORE26_H

/**
 * @file vxicore26.h
 * Makes photographs better, in place, in the memory of a host application.
 *
 * The host keeps an interleaved raster image and passes its address, pixel format, row step and
 * size together with plain numeric settings. Nothing is kept between calls but the settings of the
 * debug trace and the choice of code for the processor, made when the library is loaded.
 *
 * @section formats Pixel formats
 *
 * | format | bytes per pixel | sample           | colour at byte | other bytes                |
 * |--------|-----------------|------------------|----------------|----------------------------|
 * | 1      | 3               | 8 bits unsigned  | 0, 1, 2        | none                       |
 * | 3      | 6               | 16 bits unsigned | 0, 2, 4        | none                       |
 * | 5      | 4               | 8 bits unsigned  | 1, 2, 3        | byte 0, left alone         |
 * | 6      | 8               | 16 bits unsigned | 2, 4, 6        | bytes 0 and 1, left alone  |
 *
 * The colour channels are red, green, blue in this order; all stages treat them alike but for hue
 * and lightness. **16-bit samples run from 0 to 32768, not to 65535**, in the byte order of the
 * machine: a host that holds 0 to 65535 scales on the way in and out. A sample of 32768 (or 255 at
 * 8 bits) is the brightest; results are limited to it.
 *
 * Format 6, picture below 2304 pixels on both axes: the limit 32768 is applied to the first three
 * quarters of each row, the extra channel included, and not to the last quarter. Hosts that keep
 * the extra channel at or below 32768, and limit the result themselves, never see the difference.
 *
 * @section rows Rows and sizes
 *
 * `rowStep` is the signed distance in bytes from one row to the next; offsets are 64 bits wide,
 * rows may start at any address, and a picture stored bottom up is passed with the address of its
 * top row and a negative step (formats 5 and 6 of vxAdjustRgb, and the other functions; formats 1
 * and 3 of vxAdjustRgb leave the picture alone when the step is below 1). Bytes between the end of
 * a row and the next are neither read nor written. Rows that overlap (a step shorter than a row)
 * are all read first and then written one after the other from the first row on, so that a later
 * row stands where two meet. Pictures are treated in even sizes: see vxAdjustRgb.
 *
 * @section threads Threads
 *
 * A call returns when its work is done. It runs on the calling thread and shares loops out to a
 * team of OpenMP threads; `OMP_NUM_THREADS`, or omp_set_num_threads() of the host, limits it. Calls
 * on different pictures may run at once. Results do not depend on the number of threads nor on the
 * processor, and are the same in every process.
 *
 * The team's threads stay asleep in the process afterwards, so that the library stays in memory
 * behind dlclose(). They are not copied by fork(). The child may call the library all the same:
 * its first thread, the one that called fork(), then computes alone, and threads that it starts
 * have teams of their own. Results stay the same.
 *
 * @section floatmode Floating-point state
 *
 * Loading the library switches flush-to-zero and denormals-are-zero on for the loading thread, and
 * leaves them on. A new thread inherits the state of the thread that starts it, so that all threads
 * which the loading thread starts later, and those that they start, have both modes, too. A host
 * that computes with denormal numbers switches the modes off on the loading thread after loading.
 * Each call computes with its own state (nearest rounding, exceptions masked, both modes on) and
 * puts the caller's state back before it returns and around each callback. Rounding modes and
 * unmasked traps of the host change no result.
 *
 * @section callbacks Callbacks
 *
 * Only vxAdjustRgb takes callbacks (VxHostAlloc, VxHostFree, VxProgress). They run on the calling
 * thread, under the caller's floating-point state, one at a time, never while the team is at work.
 * They may take any time, may call the library, and may throw (VxHostFree may not): the exception
 * passes through vxAdjustRgb with all memory released and the picture as it was. They must not
 * leave by longjmp().
 *
 * @section failures Failures
 *
 * Functions report by their results. Null `pixels` and sizes below 1 are no failure: nothing is
 * done. Without memory
 * - vxAdjustRgb returns -1 where it finds none for a tiled picture; a picture in one piece stays as
 *   it is, with the result 1;
 * - a stage of vxAdjustRgb that finds none for its work is left out, the others run, and the result
 *   is 1;
 * - vxDenoiseEstNoise measures nothing: lumaNoise is above 1;
 * - vxUnblock, the removal of block artifacts in vxAdjustRgb, and vxYUVEdgeRGB throw a C++
 *   exception derived from std::exception, which a host in C cannot catch. The picture is then as
 *   it was.
 *
 * No other exception leaves a function but those of the host's callbacks. Not in our hands: the
 * OpenMP runtime ends the process when it cannot start its threads.
 *
 * @section costs Costs
 *
 * Costs of settings are processor milliseconds per megapixel, measured on one thread at 4
 * megapixels (AVX-512; medians); they are there to be compared. A call of vxAdjustRgb with all
 * settings neutral has 5.5.
 */

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The noise of a picture: filled by vxDenoiseEstNoise, kept by the host, read by vxAdjustRgb. It
 * has no pointers: hosts may copy it, store it with the picture, or fill it by themselves.
 */
typedef struct NoiseProfile {
  /** @var lumaLevel
   *  mean brightness; that of white is 1 / 1.402
   *  @var lumaNoise
   *  standard deviation of the luma, white being 1; above 1 nothing could be measured
   *  @var lumaReserved
   *  0 */
  float lumaLevel, lumaNoise, lumaReserved;
  /** @var chromaLevel
   *  as lumaLevel
   *  @var chromaNoise
   *  standard deviation of the chroma
   *  @var chromaReserved
   *  0 */
  float chromaLevel, chromaNoise, chromaReserved;
} NoiseProfile;

/** Allocates `size` bytes aligned to at least 4; returns null when it cannot. */
typedef void* (*VxHostAlloc)(size_t size, void* hostContext);
/** Releases what VxHostAlloc gave; must not throw. */
typedef void (*VxHostFree)(void* block, void* hostContext);
/** Takes a report: `position` of `total` (100; with very many tiles `position` may pass it).
 *  Returns 0 to cancel the call, anything else to go on. */
typedef int (*VxProgress)(int position, int total, void* hostContext);

/**
 * Enhances a picture in place. Pictures of what the settings do: @ref settings.
 *
 * The stages run in this order: block artifacts, noise, then tone and detail (sharpening of the
 * lightness, local equalisation, gamma and detail of the lightness, saturation, hue), then the
 * return of grain. A stage at its neutral value is skipped. ALL SETTINGS 0 IS NOT NEUTRAL; the
 * neutral set, from which hosts should start, is
 *
 *     sharpenAmount 1, lumaGamma 0, lumaDetailGain 1, lumaDetailGamma 1, satContrast 1, satGamma 1,
 *     everything else 0
 *
 * and gives every sample back, but for float rounding on the way to hue, lightness, saturation and
 * back.
 *
 * A picture below 2304 pixels on both axes is treated in one piece; of an odd width or height the
 * last column or row keeps the host's values. A larger picture is treated in overlapping tiles
 * (about 1536 by 1152) that are blended, and statistics are then those of a tile; it takes four
 * float planes of the picture's size (16 bytes per pixel) beside the memory of one tile. Where a
 * tiled picture is so narrow that an axis has one tile (below 2304 wide, below 1728 high) and odd
 * on that axis, its first column or row becomes black: hosts pad to even sizes. From 318777 pixels
 * on one axis the tiles can leave gaps. The non-local noise filter takes some 50 bytes more for
 * each pixel of the picture or tile that it works on.
 *
 * @param pixels        first byte of the picture; null does nothing
 * @param format        1, 3, 5 or 6
 * @param rowStep       bytes from row to row
 * @param width,height  pixels
 * @param previewScale  the picture is a preview reduced by this factor; 1 at full size. Radii and
 *                      the width of the sharpening blur are divided by it, radii to not less than 6
 *                      pixels of the preview. Block artifacts are removed only at 1
 * @param hostAlloc,hostFree  memory for the four planes of a tiled picture; used only when both are
 *                      given, each plane falling back to the library's own memory when hostAlloc
 *                      gives null. May be null
 * @param progress      asked once before any work and after each tile; may be null. A call that it
 *                      cancels leaves the picture as it was. A picture in one piece is asked once:
 *                      what has begun cannot be stopped
 * @param hostContext   handed to the three callbacks, see @ref callbacks
 *
 * Lightness, local equalisation: a tone curve for each place, from the histogram around it.
 * @param lumaEqAmount    0 to 1; neutral 0 (up to 0.022 skipped); typical 0.15 to 0.4. Strength
 *                        1 - exp(-a^2 / 0.05); the contrast limit rises along with it. Cost: 2 at a
 *                        radius of 50 and more, 10 at 10
 * @param lumaEqRadius    pixels of the full-size picture per cell, 6 and up; typical 50 to 200. The
 *                        smaller, the more local, and the larger the grid. No effect alone
 * @param lumaEqPeakGain  extra weight of middle tones in the histograms, above 0, or of the dark
 *                        and the bright ones, below; -1 to 1; neutral 0; no cost
 * @param lumaEqTopCut    share of the output range cut off at the top, 0 to 1; neutral 0; typical 0
 *                        to 0.1; works only together with lumaEqAmount; no cost
 * @param lumaEqFloor     lowest output of the equalisation, 0 to 1; neutral 0; typical 0 to 0.05;
 *                        works only together with lumaEqAmount; no cost
 *
 * Lightness, gamma: exponent 1 - g for g at or below 0, (4.5 - g) / 4.5 above, on the lightness or,
 * when detail is treated, on its base layer.
 * @param lumaGamma       -3 to 4; neutral 0; typical -0.5 to 1; above 0 brightens, below darkens.
 *                        Cost: 1
 *
 * Lightness, detail: an edge-preserving filter splits the lightness into base and detail.
 * @param lumaDetailRange   lightness step that counts as an edge, 0 to 1; neutral 0 (no split);
 *                          typical 0.05 to 0.2. From 0.05 on the base is filtered twice. Cost: 6,
 *                          from 0.05 on 8; none while gain and gamma are both neutral
 * @param lumaDetailRadius  pixels of the full-size picture, 6 and up; typical 10 to 40; smaller
 *                          ones cost more
 * @param lumaDetailGamma   exponent on the size of the detail relative to the strongest; above 0,
 *                          to 3; neutral 1; typical 0.7 to 1; below 1 lifts weak detail
 * @param lumaDetailGain    gain of the detail; 0 removes it; 0 to 5; neutral 1; typical 1.1 to 2
 *
 * @param sharpenAmount   gain of the finest detail, 0 to 4; neutral 1 (within 0.001 skipped); below
 *                        1 softens; typical 1.2 to 2. Also sets the width of its blur, at most 7
 *                        pixels. Cost: 0.7
 *
 * Saturation.
 * @param satEqAmount     strength of its local equalisation, 0 to 1; neutral 0 (up to 0.01
 *                        skipped); typical 0.05 to 0.3. Cost: 2, as for the lightness
 * @param satEqRadius     as lumaEqRadius
 * @param satContrast     gain of the saturation, 0 (grey) and up; neutral 1; typical 0.9 to 1.4.
 *                        Cost: 0.3
 * @param satGamma        exponent relative to the strongest saturation, above 0; neutral 1; typical
 *                        0.7 to 1.2; below 1 lifts weak colours. Cost: 1.4
 * @param hueShift        rotation of the hue in turns, -1 to 1; neutral 0. Cost: 0.7
 *
 * Noise, grain and block artifacts.
 * @param denoiseStrength  0 to 1, in relation to the noise of the profile; neutral 0 (up to 0.001
 *                         skipped); typical 20 times lumaNoise, at most 0.8, in mode 0, and 0.25 +
 *                         15 times lumaNoise, at most 0.6, in the others. Cost: 11
 * @param noiseProfile     what vxDenoiseEstNoise filled for the whole picture, read before the call
 *                         returns; its noises divided by previewScale for a preview. Null skips
 *                         noise filter and grain
 * @param grainRestore     share of the removed noise that is added back, 0 to 1; neutral 0 (up to
 *                         0.01 skipped); typical 0.1 to 0.3. Cost: 12 bytes per pixel of the
 *                         picture or tile
 * @param unblockStrength  0 to 1; neutral 0 (up to 0.02 skipped); JPEG quality 100 - 85 * strength,
 *                         see vxUnblock; typical 0.3 for files of quality 75, 0.5 for 50 and 0.7
 *                         for 25 or less. Only at previewScale 1. Works on 8 bits, and makes the
 *                         picture 0.4 % brighter: bytes come back as value / 255, not / 256.
 *                         Cost: 53
 * @param denoiseMode      0: quick filter with settings from the profile, neutral; other: non-local
 *                         filter, which keeps more detail. Cost: about 45 times that of the quick
 *                         filter
 *
 * @return 1 done (also when there was nothing to do); 0 cancelled; -1 out of memory, or a picture
 *         of 2304 and more on one axis and below 2 on the other; -2 unknown format. After 0, -1 and
 *         -2 the picture is as it was
 */
int vxAdjustRgb(void* pixels, int format, int rowStep, int width, int height, int previewScale,
                VxHostAlloc hostAlloc, VxHostFree hostFree, VxProgress progress, void* hostContext,
                float lumaEqAmount, float lumaEqRadius, float lumaEqPeakGain, float lumaGamma,
                float lumaEqTopCut, float lumaEqFloor, float lumaDetailRange,
                float lumaDetailRadius, float lumaDetailGamma, float lumaDetailGain,
                float sharpenAmount, float satEqAmount, float satEqRadius, float satContrast,
                float satGamma, float hueShift, float denoiseStrength,
                const NoiseProfile* noiseProfile, float grainRestore, float unblockStrength,
                int denoiseMode);

/**
 * Removes the block artifacts of JPEG: the mean of JPEG round trips at shifted block grids.
 *
 * Results are truncated, about one level darker on average. Works in place; a null `pixels` or a
 * size below 1 does nothing. A round trip whose stream needs more than about three bytes a pixel
 * counts with the unchanged picture: noise at the finest qualities, pictures of a few pixels. The
 * one failure is want of memory, before the picture is touched: see @ref failures. Memory: about
 * 3.3 bytes a pixel. Neutral is not to call it. Cost: 52 at a `shiftStep` of 1 (64 round trips), 22
 * at 2 (16), 13 at 4 (4), 12 at 8 (1).
 *
 * @param deep       0: 8-bit samples; other: 16-bit samples of 0 to 32767
 * @param pixels     first sample of the picture; three samples are taken at each pixel
 * @param pixelStep  samples from pixel to pixel, 3 for interleaved RGB
 * @param rowStep    from row to row, in bytes at 8 bits, in samples when `deep`
 * @param width,height  pixels
 * @param quality    JPEG quality of the round trips, 1 to 100, in the low eight bits (0 counts as
 *                   50, more as 100); the lower, the stronger; best near that of the file,
 *                   typically 30 to 85
 * @param jpegMode   low four bits: chroma subsampling (0: none, 1: half width, other: half width
 *                   and height); the next four: 0 for YCbCr, other for RGB in the stream; typically
 *                   0
 * @param shiftStep  pixels between tried shifts of the grid, 1 to 8; below 1 counts as 1; typically
 *                   1
 * @param reserved   without effect
 * @return the number of round trips made
 */
int vxUnblock(int deep, void* pixels, int pixelStep, int rowStep, int width, int height,
              int quality, int jpegMode, int shiftStep, int reserved);

/**
 * Estimates the noise of a picture from its centre, at most 2048 by 2048 pixels: the median of
 * local deviations over the darker half of its pixels. lumaNoise is the standard deviation of the
 * luma on a scale of 1, lumaLevel the mean brightness where 1 is 1.402 times as much; noise that
 * the picture shows as fine texture counts too. chromaNoise is 0.35 times lumaNoise, the reserved
 * fields are 0.
 *
 * A picture below 2048 pixels on an axis counts from its first column or row on, in multiples of 4
 * pixels; below 4 it has none and gives a lumaNoise of 2.16. Formats that cannot be read and null
 * `pixels` count as black. Cost: 8, of at most 4.2 megapixels.
 *
 * @param pixels        the picture, in the terms of vxAdjustRgb, with any row step; read only
 * @param format        1, 3, 5 or 6
 * @param rowStep       bytes from row to row
 * @param width,height  pixels
 * @param noiseProfile  receives the estimate; null does nothing
 * @return 1
 */
int vxDenoiseEstNoise(const void* pixels, int format, int rowStep, int width, int height,
                      NoiseProfile* noiseProfile);

/**
 * Sharpens the luminance at edges and repairs the chroma of interleaved RGB, in place, on the
 * calling thread. Pictures of what the settings do: @ref settings. The picture is split into
 * luminance and chroma (ITU-R BT.601 weights) and back, which alone costs up to one step of 8 bits;
 * with the neutral values nothing else happens.
 *
 * Luminance: a Gaussian base B and the detail Y - B, which comes back multiplied by `baseGain` +
 * `adaptiveGain` * m / (r + `rangeFloor`), where m is the distance to the nearer of the local
 * extremes (3 by 3) and r their smoothed difference: the gain is largest in the middle of a
 * transition. Runs when a gain is above 1 or a blur sigma above 0.45. The outer three pixels stay.
 *
 * Cost: 4.7 for the split; 3.4 for the luminance, 1.4 for blur or shift of chroma; 10 for a
 * realignment of 2 by 2 pixels, 25 for 6 by 6.
 *
 * @param deep            0: 8-bit samples; other: 16-bit samples of 0 to 32767
 * @param pixels          first sample of the picture; null does nothing
 * @param rowStep         from row to row, in bytes at 8 bits, in samples when `deep`
 * @param width,height    pixels
 * @param baseGain        gain of the detail everywhere, 0 and up; neutral 1, typical 1 to 2; below
 *                        1 softens
 * @param rangeFloor      least local range in the division of the adaptive gain; 1 is the top of
 *                        the samples; above 0, to 1; typical 0.01; above the noise it keeps noise
 *                        from being sharpened. No effect without adaptiveGain
 * @param blurSigmaX,blurSigmaY      pixels, to 2.44; what counts as detail; 0 skips; typical 0.8 to
 *                                   2
 * @param adaptiveGain    extra gain at edges, 0 and up; neutral 0, typical 1 to 3
 * @param chromaBlurX,chromaBlurY    Gaussian blur of chroma, pixels, to 2.44; neutral 0, runs above
 *                        0.4; typical 1 to 2
 * @param chromaShiftX,chromaShiftY  pixels to the right and downward, -7 to 7; neutral 0;
 *                        typical -2 to 2
 * @param alignSigmaX,alignSigmaY    pixels; how far to search for the chroma that belongs to a
 *                        pixel's luminance, at most 6; neutral 0; typical 2 to 4 along the
 *                        bleeding, 1 across. The cost grows with the product of both
 * @param alignThreshold  a pixel whose luminance differs less from its blur keeps its chroma, in
 *                        the scale of `rangeFloor`, 0 to 1; typical 0.02. No effect without
 *                        alignSigma
 * @param edgeReserved    without effect
 * @return 1. A NaN that the settings provoke becomes the top of the range
 */
int vxYUVEdgeRGB(int deep, void* pixels, int rowStep, int width, int height, double baseGain,
                 double rangeFloor, double blurSigmaX, double blurSigmaY, double adaptiveGain,
                 double chromaBlurX, double chromaBlurY, int chromaShiftX, int chromaShiftY,
                 double alignSigmaX, double alignSigmaY, double alignThreshold, int edgeReserved);

/**
 * Sets the debug trace: bit 0 of `mask` writes records of vxUnblock and vxYUVEdgeRGB to the file
 * "vxtrace_log.txt" in `folder`, "/tmp/" until one is given. The file is opened and closed for each
 * record. A null `folder` keeps the folder last set.
 *
 * The name can be predicted, and symbolic links at it are followed: in a folder where others may
 * write, such as "/tmp/", another user can point it at any file that the host may write to. Give a
 * folder of the host's own.
 *
 * @param mask    bit 0 switches the trace on, 0 off (as after loading)
 * @param folder  an existing folder; null keeps the one last set
 * @return 1 when the file could be written; 0 when bit 0 is clear, the file cannot be opened, or
 *         the mask is negative, which changes nothing
 */
int vxSetupLib(int mask, const char* folder);

/**
 * vxSetupLib without a result, and for negative masks too.
 *
 * @param mask,folder  as for vxSetupLib
 */
void setDebugTrace(int mask, const char* folder);

#ifdef __cplusplus
}
#endif

#endif
