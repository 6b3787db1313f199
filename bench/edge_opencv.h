#pragma once

// The luminance stage of the edge enhancer in OpenCV's operations: two Gaussian blurs, dilation,
// erosion and the same arithmetic, on one thread.

#ifdef VX_BENCH_OPENCV
/// Steps in bytes; false when the benchmark was built without OpenCV.
bool edgeLumaByOpenCv(const float* input, int inputStep, float* output, int outputStep, int width,
                      int height);
#else
inline bool edgeLumaByOpenCv(const float*, int, float*, int, int, int) { return false; }
#endif
