#ifndef VXICORE26_H
#define VXICORE26_H

/*
 * vxicore26: makes photographs better, in place, in the memory of a host application.
 *
 * The host keeps an interleaved raster image and passes its address, pixel format, row step and
 * size together with plain numeric settings. Nothing is kept between calls but the settings of the
 * debug trace and the choice of code for the processor, made when the library is loaded.
 *
 * Pixel formats
 *
 *   format  bytes per pixel  sample            colour at byte  other bytes
 *   1       3                8 bits unsigned   0, 1, 2         none
 *   3       6                16 bits unsigned  0, 2, 4         none
 *   5       4                8 bits unsigned   1, 2, 3         byte 0, left alone
 *   6       8                16 bits unsigned  2, 4, 6         bytes 0 and 1, left alone (but see
 *                                                              below)
 *
 *   The colour channels are red, green, blue in this order; all stages treat them alike but for
 *   hue and lightness. 16-bit samples are in the byte order of the machine and run from 0 to 32768,
 *   not to 65535: a host that holds 0 to 65535 scales on the way in and out. A sample of 32768 (or
 *   255 at 8 bits) is the brightest; results are limited to it.
 *   Format 6, picture below 2304 pixels on both axes: the limit 32768 is applied to the first three
 *   quarters of each row, the extra channel included, and not to the last quarter. Hosts that keep
 *   the extra channel at or below 32768, and limit the result themselves, never see the difference.
 *
 * Rows and sizes
 *
 *   `rowStep` is the signed distance in bytes from one row to the next; offsets are 64 bits wide,
 *   rows may start at any address, and a picture stored bottom up is passed with the address of its
 *   top row and a negative step (formats 5 and 6 of vxAdjustRgb, and the other functions; formats 1
 *   and 3 of vxAdjustRgb leave the picture alone when the step is below 1). Pictures are treated in
 *   even sizes: see vxAdjustRgb.
 *
 * Threads and floating-point state
 *
 *   A call runs on the calling thread and uses a team of OpenMP threads inside; OMP_NUM_THREADS
 *   limits it. Calls on different pictures may run at once. Results do not depend on the number of
 *   threads nor on the processor. The one exception is the non-local noise filter, whose Fourier
 *   transforms are planned by timing: between processes its result may differ, by 0.003 of white
 *   (root mean square) on a noisy picture of flat patches. FFTW's wisdom, when a host keeps it, pins
 *   the plans.
 *   Loading the library switches flush-to-zero and denormals-are-zero on for the loading thread,
 *   and leaves them on. Each call computes with its own state (nearest rounding, exceptions masked,
 *   both modes on) and puts the caller's state back before it returns and around each callback.
 *
 * Failures
 *
 *   Functions report by their results. Null `pixels` and sizes below 1 are no failure: nothing is
 *   done. Memory failures inside a stage may leave a function as a C++ exception, which a host in C
 *   cannot catch; exceptions thrown by a callback pass through, with everything released. In both
 *   cases the picture is as it was, unless it was hostFree that threw.
 *   Not in our hands: the OpenMP runtime ends the process when it cannot start its threads, FFTW
 *   when its planner, which only the non-local noise filter uses, finds no memory at all.
 */

#include <stddef.h>

#ifdef __cplusplus
extern "C" {
#endif

/** The noise of a picture: filled by vxDenoiseEstNoise, kept by the host, read by vxAdjustRgb. */
typedef struct NoiseProfile {
    float lumaLevel, lumaNoise, lumaReserved;
    float chromaLevel, chromaNoise, chromaReserved;
} NoiseProfile;

/** Allocates `size` bytes aligned to at least 4; null when it cannot. */
typedef void* (*VxHostAlloc)(size_t size, void* hostContext);
/** Releases what VxHostAlloc gave. */
typedef void  (*VxHostFree)(void* block, void* hostContext);
/** Takes a report: `position` of `total` (100; with very many tiles `position` may pass it).
 *  Returns 0 to cancel the call, anything else to go on. */
typedef int   (*VxProgress)(int position, int total, void* hostContext);

/**
 * Enhances a picture in place.
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
 * on one axis the tiles can leave gaps.
 *
 * @param pixels        first byte of the picture; null does nothing
 * @param format        1, 3, 5 or 6
 * @param rowStep       bytes from row to row
 * @param width,height  pixels
 * @param previewScale  the picture is a preview reduced by this factor; 1 at full size. Radii and
 *                      the width of the sharpening blur are divided by it, radii to not less than 6
 *                      pixels of the preview. Block artifacts are removed only at 1
 * @param hostAlloc,hostFree  memory for the four planes of a tiled picture; used only when both
 *                      are given, each plane falling back to the library's own memory when hostAlloc
 *                      gives null. May be null
 * @param progress      asked once before any work and after each tile; may be null. A call that it
 *                      cancels leaves the picture as it was
 * @param hostContext   handed to the three callbacks, which run on the calling thread and may call
 *                      the library
 *
 * Lightness, local equalisation: a tone curve for each place, from the histogram around it.
 * @param lumaEqAmount    0 to 1; neutral 0 (below 0.023 skipped); typical 0.15 to 0.4. Strength
 *                        1 - exp(-a^2 / 0.05); the contrast limit rises along with it. Cost: one
 *                        pass over a grid, the dearest part of the tone stage beside detail
 * @param lumaEqRadius    pixels of the full-size picture per cell, 6 and up; typical 50 to 200. The
 *                        smaller, the more local, and the larger the grid
 * @param lumaEqPeakGain  extra weight of middle tones in the histograms, above 0, or of the dark and
 *                        the bright ones, below; -1 to 1; neutral 0; no cost
 * @param lumaEqTopCut    share of the output range cut off at the top, 0 to 1; neutral 0; typical 0
 *                        to 0.1; works only together with lumaEqAmount; no cost
 * @param lumaEqFloor     lowest output of the equalisation, 0 to 1; neutral 0; typical 0 to 0.05;
 *                        works only together with lumaEqAmount; no cost
 *
 * Lightness, gamma: exponent 1 - g for g at or below 0, (4.5 - g) / 4.5 above, on the lightness or,
 * when detail is treated, on its base layer.
 * @param lumaGamma       -3 to 4; neutral 0; typical -0.5 to 1; above 0 brightens, below darkens.
 *                        Cost: one look-up per pixel
 *
 * Lightness, detail: an edge-preserving filter splits the lightness into base and detail.
 * @param lumaDetailRange   lightness step that counts as an edge, 0 to 1; neutral 0 (no split);
 *                          typical 0.05 to 0.2. From 0.05 on the base is filtered twice
 * @param lumaDetailRadius  pixels of the full-size picture, 6 and up; typical 10 to 40
 * @param lumaDetailGamma   exponent on the size of the detail relative to the strongest; above 0, to
 *                          3; neutral 1; typical 0.7 to 1; below 1 lifts weak detail
 * @param lumaDetailGain    gain of the detail; 0 removes it; 0 to 5; neutral 1; typical 1.1 to 2
 *                          The split is skipped when gamma and gain are both neutral. Cost: one or
 *                          two passes over a grid
 *
 * @param sharpenAmount   gain of the finest detail, 0 to 4; neutral 1 (within 0.001 skipped); below
 *                        1 softens; typical 1.2 to 2. Also sets the width of its blur, at most 7
 *                        pixels. Cost: two small filters over the lightness
 *
 * Saturation.
 * @param satEqAmount     strength of its local equalisation, 0 to 1; neutral 0 (up to 0.01 skipped);
 *                        typical 0.05 to 0.3. Cost: as for the lightness
 * @param satEqRadius     as lumaEqRadius
 * @param satContrast     gain of the saturation, 0 (grey) and up; neutral 1; typical 0.9 to 1.4
 * @param satGamma        exponent relative to the strongest saturation, above 0; neutral 1; typical
 *                        0.7 to 1.2; below 1 lifts weak colours. Cost: one look-up per pixel
 * @param hueShift        rotation of the hue in turns, -1 to 1; neutral 0. Cost: a few passes over
 *                        the hue
 *
 * Noise, grain and block artifacts.
 * @param denoiseStrength  0 to 1; neutral 0 (up to 0.001 skipped)
 * @param noiseProfile     what vxDenoiseEstNoise filled for the whole picture; null skips noise
 *                         filter and grain
 * @param grainRestore     share of the removed noise that is added back, 0 to 1; neutral 0
 * @param unblockStrength  0 to 1; neutral 0 (up to 0.02 skipped); JPEG quality 100 - 85 * strength, see
 *                         vxUnblock; typical 0.3 for files of quality 75, 0.5 for 50, 0.7 for 25. Only
 *                         at previewScale 1. Works on 8 bits, and makes the picture 0.4 % brighter:
 *                         bytes come back as value / 255, not / 256
 * @param denoiseMode      0: quick filter with settings from the profile; other: non-local filter
 *
 * @return 1 done (also when there was nothing to do); 0 cancelled; -1 out of memory, or a picture
 *         of 2304 and more on one axis and below 2 on the other; -2 unknown format. After 0, -1 and
 *         -2 the picture is as it was
 */
int vxAdjustRgb(void* pixels, int format, int rowStep, int width, int height, int previewScale,
                VxHostAlloc hostAlloc, VxHostFree hostFree, VxProgress progress, void* hostContext,
                float lumaEqAmount, float lumaEqRadius, float lumaEqPeakGain, float lumaGamma,
                float lumaEqTopCut, float lumaEqFloor,
                float lumaDetailRange, float lumaDetailRadius, float lumaDetailGamma, float lumaDetailGain,
                float sharpenAmount,
                float satEqAmount, float satEqRadius, float satContrast, float satGamma, float hueShift,
                float denoiseStrength, const NoiseProfile* noiseProfile, float grainRestore,
                float unblockStrength, int denoiseMode);

/**
 * Removes the block artifacts of JPEG: the mean of JPEG round trips at shifted block grids.
 *
 * Results are truncated, about one level darker on average. Works in place; a null `pixels` or a size
 * below 1 does nothing. A round trip whose stream needs more than about three bytes a pixel counts with
 * the unchanged picture: noise at the finest qualities, pictures of a few pixels. The one failure is a
 * C++ exception for want of memory, before the picture is touched. Memory: about 3.3 bytes a pixel.
 *
 * @param deep       0: 8-bit samples; other: 16-bit samples of 0 to 32767
 * @param pixels     first sample of the picture; three samples are taken at each pixel
 * @param pixelStep  samples from pixel to pixel, 3 for interleaved RGB
 * @param rowStep    from row to row, in bytes at 8 bits, in samples when `deep`
 * @param width,height  pixels
 * @param quality    JPEG quality of the round trips, 1 to 100, in the low eight bits (0 counts as 50,
 *                   more as 100); the lower, the stronger; best near that of the file
 * @param jpegMode   low four bits: chroma subsampling (0: none, 1: half width, other: half width and
 *                   height); the next four: 0 for YCbCr, other for RGB in the stream
 * @param shiftStep  pixels between tried shifts of the grid, 1 to 8; below 1 counts as 1
 * @param reserved   without effect
 * @return the number of round trips made
 */
int vxUnblock(int deep, void* pixels, int pixelStep, int rowStep, int width, int height,
              int quality, int jpegMode, int shiftStep, int reserved);

/**
 * Estimates the noise of a picture from its centre, at most 2048 by 2048 pixels: the median of local
 * deviations over the darker half of its pixels. lumaNoise is the standard deviation of the luma on a
 * scale of 1, lumaLevel the mean brightness where 1 is 1.402 times as much; noise that the picture
 * shows as fine texture counts too. chromaNoise is 0.35 times lumaNoise, the reserved fields are 0.
 *
 * A picture below 2048 pixels on an axis counts from its first column or row on, in multiples of 4
 * pixels; below 4 it has none and gives a lumaNoise of 2.16. Formats that cannot be read and null
 * `pixels` count as black.
 *
 * @param pixels        the picture, in the terms of vxAdjustRgb, with any row step; read only
 * @param noiseProfile  receives the estimate; null does nothing
 * @return 1
 */
int vxDenoiseEstNoise(const void* pixels, int format, int rowStep, int width, int height,
                      NoiseProfile* noiseProfile);

/**
 * Sharpens the luminance at edges and repairs the chroma of interleaved RGB, in place, on the
 * calling thread. The picture is split into luminance and chroma (ITU-R BT.601 weights) and back,
 * which alone costs up to one step of 8 bits; with the neutral values nothing else happens.
 *
 * Luminance: a Gaussian base B and the detail Y - B, which comes back multiplied by
 * `baseGain` + `adaptiveGain` * m / (r + `rangeFloor`), where m is the distance to the nearer of the
 * local extremes (3 by 3) and r their smoothed difference: the gain is largest in the middle of a
 * transition. Runs when a gain is above 1 or a blur sigma above 0.45. The outer three pixels stay.
 *
 * @param deep            0: 8-bit samples; other: 16-bit samples of 0 to 32767
 * @param rowStep         from row to row, in bytes at 8 bits, in samples when `deep`
 * @param baseGain        gain of the detail everywhere; neutral 1
 * @param rangeFloor      least local range in the division of the adaptive gain; 1 is the top of the
 *                        samples; typical 0.01
 * @param blurSigmaX,blurSigmaY      pixels; what counts as detail; 0 skips
 * @param adaptiveGain    extra gain at edges; neutral 0, typical 1 to 3
 * @param chromaBlurX,chromaBlurY    Gaussian blur of chroma, pixels; neutral 0, runs above 0.4
 * @param chromaShiftX,chromaShiftY  pixels to the right and downward, -7 to 7; neutral 0
 * @param alignSigmaX,alignSigmaY    pixels; how far to search for the chroma that belongs to a
 *                        pixel's luminance, at most 6; neutral 0. The cost grows with the product of
 *                        both
 * @param alignThreshold  a pixel whose luminance differs less from its blur keeps its chroma, in the
 *                        scale of `rangeFloor`; typical 0.02
 * @param edgeReserved    without effect
 * @return 1. A NaN that the settings provoke becomes the top of the range
 */
int vxYUVEdgeRGB(int deep, void* pixels, int rowStep, int width, int height,
                 double baseGain, double rangeFloor, double blurSigmaX, double blurSigmaY, double adaptiveGain,
                 double chromaBlurX, double chromaBlurY, int chromaShiftX, int chromaShiftY,
                 double alignSigmaX, double alignSigmaY, double alignThreshold, int edgeReserved);

/**
 * Sets the debug trace: bit 0 of `mask` writes records of vxUnblock and vxYUVEdgeRGB to the file
 * "vxtrace_log.txt" in `folder`, "/tmp/" until one is given. The file is opened and closed for each
 * record. A null `folder` keeps the folder last set.
 *
 * @return 1 when the file could be written; 0 when bit 0 is clear, the file cannot be opened, or
 *         the mask is negative, which changes nothing
 */
int  vxSetupLib(int mask, const char* folder);

/** The same without a result, and for negative masks too. */
void setDebugTrace(int mask, const char* folder);

#ifdef __cplusplus
}
#endif

#endif
