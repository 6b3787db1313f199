/**
 * @file auto_tone.h
 * A restrained tone for a photograph: exposure, local contrast and saturation.
 *
 * What is a little off is corrected completely, and what is far off counts as intended: night stays
 * night, fog stays fog, muted colours stay muted. So a second run finds little to do. Light
 * pictures are never darkened: snow stays white.
 */
#ifndef VX_AUTO_TONE_H
#define VX_AUTO_TONE_H

#include "hosts/auto/auto_noise.h"
#include "hosts/auto/auto_picture.h"

#ifdef __cplusplus
extern "C" {
#endif

/** What was seen of the exposure. */
enum {
  VX_AUTO_TONE_NOTHING_SEEN = 0, /**< no picture, or too small to tell */
  VX_AUTO_TONE_DRAWING = 1,      /**< a drawing or a screenshot: left alone */
  VX_AUTO_TONE_NIGHT = 2, /**< night or dusk, by a median lightness below 0.235: left alone */
  VX_AUTO_TONE_WELL_EXPOSED = 3, /**< keeps its mean brightness */
  VX_AUTO_TONE_DARK = 4          /**< underexposed a little: lightened */
};

/** Settings for vxAdjustRgb; those that are not here stay neutral. */
typedef struct VxAutoTone {
  /** @var seen
   *  one of the values above */
  int seen;
  /** @var lumaGamma
   *  above 0 lightens; 0 is neutral
   *  @var lumaEqAmount
   *  0 is off
   *  @var lumaEqRadius
   *  pixels of the picture
   *  @var satContrast
   *  1 is neutral */
  float lumaGamma, lumaEqAmount, lumaEqRadius, satContrast;
} VxAutoTone;

/**
 * Chooses the tone by trying it on a reduced copy of at most 480 pixels with vxAdjustRgb: a host
 * that uses this links libvxicore26. Well exposed is a picture whose median lightness (the mean of
 * the strongest and the weakest colour) is 0.34 and more, whose mean luma is 0.32 and more, or
 * whose lights reach 0.85; it keeps its mean luma within 2 of 255. The share of pixels with a
 * clipped colour grows by at most half a point (on the copy).
 *
 * @param picture  null counts as no picture. Below 64 pixels on an axis nothing is seen
 * @param noise    of vxAutoMeasureNoise, which knows drawings; may be null
 * @param tone     receives the result; null does nothing
 * @return 1; 0 when there was no memory, and nothing is seen
 */
VX_AUTO_API int vxAutoChooseTone(const VxAutoPicture* picture, const VxAutoNoise* noise,
                                 VxAutoTone* tone);

/**
 * Tells in a line what was seen and chosen, such as "a little dark; gamma 0.52, local contrast
 * 0.10" or "night or dusk; tone left alone".
 *
 * @param text  receives at most `size` bytes with a final 0; may be null when size is 0
 * @return the length of the whole line without the final 0
 */
VX_AUTO_API size_t vxAutoDescribeTone(const VxAutoTone* tone, char* text, size_t size);

#ifdef __cplusplus
}
#endif

#endif
