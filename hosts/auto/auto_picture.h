/**
 * @file auto_picture.h
 * A picture in the host's memory, as the functions that choose settings read it. They write
 * nothing into it and keep nothing of it.
 *
 * All headers of this library are C; none needs more than vxicore26.h and the standard library.
 * Linking it does not link libvxicore26: hosts that remove blocks or choose a tone do that
 * themselves.
 */
#ifndef VX_AUTO_PICTURE_H
#define VX_AUTO_PICTURE_H

#include <stddef.h>

#if defined(__GNUC__)
#define VX_AUTO_API __attribute__((visibility("default")))
#else
#define VX_AUTO_API
#endif

#ifdef __cplusplus
extern "C" {
#endif

/** Interleaved or planar samples at any steps; rows may start at odd addresses. */
typedef struct VxAutoPicture {
  /** @var pixels
   *  the red (or only) sample of the first pixel; null: a picture of which nothing is known
   *  @var channelStep
   *  bytes from red to green and from green to blue; 0 for grey
   *  @var pixelStep
   *  bytes from pixel to pixel
   *  @var rowStep
   *  bytes from row to row, negative for a picture stored bottom up */
  const void* pixels;
  ptrdiff_t channelStep, pixelStep, rowStep;
  /** @var width
   *  pixels; below 1 there are none
   *  @var height
   *  pixels
   *  @var white
   *  the value of the brightest sample: 255 and below for samples of 8 bits, above for those of 16
   *  bits, such as 32768 or 65535; below 1 counts as 255 */
  int width, height, white;
} VxAutoPicture;

/**
 * The picture of a call to vxAdjustRgb.
 *
 * @param pixels,format,rowStep,width,height  as there; another format gives a picture of which
 *                                            nothing is known
 */
VX_AUTO_API VxAutoPicture vxAutoPicture(const void* pixels, int format, int rowStep, int width,
                                        int height);

#ifdef __cplusplus
}
#endif

#endif
