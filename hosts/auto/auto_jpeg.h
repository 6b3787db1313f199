/**
 * @file auto_jpeg.h
 * How strongly a JPEG file was coded, by its quantisation table, and the removal of its block
 * artifacts.
 *
 *     int quality = vxAutoTripQuality(vxAutoJpegQuality(table));
 *     if (quality > 0) vxAutoRemoveBlocks(samples, rowStep, width, height, 32767, quality, 0, 1);
 *
 * vxAutoRemoveBlocks calls vxUnblock: a host that uses it links libvxicore26.
 */
#ifndef VX_AUTO_JPEG_H
#define VX_AUTO_JPEG_H

#include "hosts/auto/auto_picture.h"

#ifdef __cplusplus
extern "C" {
#endif

/**
 * The quality, 1 to 100, whose luma table is nearest to the file's own: the example table of ITU
 * T.81 (K.1), scaled as libjpeg does. Equal to the encoder's setting where it scales that table.
 *
 * @param table  the 64 steps of the luma's quantisation table, row by row (not in zigzag order)
 * @return 0 for null and for a table with a step below 1
 */
VX_AUTO_API int vxAutoJpegQuality(const int* table);

/**
 * The quality of the round trips of vxUnblock that fits a file: its own.
 *
 * @param jpegQuality  of vxAutoJpegQuality
 * @return 0 where the blocks should be left alone: above 86, and below 1 (no JPEG)
 */
VX_AUTO_API int vxAutoTripQuality(int jpegQuality);

/** The first five AC steps of the table in zigzag order, as VxAutoEvidence wants them. */
VX_AUTO_API void vxAutoLumaSteps(const int* table, int* steps);

/**
 * Removes block artifacts as vxUnblock does, without its loss of brightness and of fractions.
 *
 * Only what the round trips change is added to the picture, and of that only what differs from its
 * mean over 17 by 17 pixels. The trips quantise the mean of a block, and their integer conversions
 * truncate, which makes every channel darker by up to a level. What remains is the change at the
 * scale of the blocks. Flat places and ramps stay as they are to the last bit, and grey pictures
 * stay grey. Against the plain result of vxUnblock, PSNR is 0.1 to 0.3 dB higher on photographs of
 * quality 20 to 75.
 *
 * Samples keep their fractions: hand the result to vxAdjustRgb in format 3.
 *
 * @param samples       16-bit samples, three at each pixel; null does nothing
 * @param rowStep       samples from row to row
 * @param width,height  pixels; below 1 there is nothing to do
 * @param white         the value of the brightest sample, 255 to 65535; results are limited to it
 * @param quality       of the round trips, 1 to 100
 * @param jpegMode,shiftStep  as for vxUnblock; 0 and 1 are best
 * @return 1; 0 without memory (10 bytes a pixel), and the picture is as it was
 */
VX_AUTO_API int vxAutoRemoveBlocks(unsigned short* samples, ptrdiff_t rowStep, int width,
                                   int height, int white, int quality, int jpegMode, int shiftStep);

#ifdef __cplusplus
}
#endif

#endif
