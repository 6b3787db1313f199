#include "edge/yuv_transform.h"

#include "edge/edge_plane.h"
#include "prim/colour.h"

namespace vx {

void rgbToYuv(const float* rgb, int rgbStep, EdgePlane (&yuv)[3], int top, int rows) {
  prim::primRGBToYUV_32f_C3P3R(rgb, rgbStep, at(yuv[0], 0, top), yuv[0].step, at(yuv[1], 0, top),
                               yuv[1].step, at(yuv[2], 0, top), yuv[2].step, yuv[0].width, rows);
}

void yuvToRgb(const EdgePlane (&yuv)[3], int top, int rows, float* rgb, int rgbStep) {
  prim::primYUVToRGB_32f_P3C3R(at(yuv[0], 0, top), yuv[0].step, at(yuv[1], 0, top), yuv[1].step,
                               at(yuv[2], 0, top), yuv[2].step, rgb, rgbStep, yuv[0].width, rows);
}

}  // namespace vx
