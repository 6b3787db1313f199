#pragma once

namespace vx {

/// Removes block artifacts from the host's picture, in place: the mean of JPEG round trips with the
/// picture at every place of the 8x8 grid that `shiftStep` allows. Each trip codes the picture with
/// its edges repeated to 8 more on both axes, and decodes it, exactly as jpegRoundTrip does with a
/// block of three bytes for each of the larger image's pixels (rows rounded up to 32 bytes) and 128
/// more, but for its limit of 65535 pixels on an axis; a trip whose stream does not fit counts with
/// the unchanged picture. The mean is truncated.
///
/// Method: A. Nosratinia, "Enhancement of JPEG-compressed images by re-application of JPEG", 2001.
///
/// Arguments as for vxUnblock; `pixels` may be null and the sizes below 1: then nothing is done.
/// Results do not depend on the number of threads.
///
/// @return the number of round trips
/// @throw MemoryException before the picture is touched
int vp_unblock(int deep, void* pixels, int pixelStep, int rowStep, int width, int height,
               int quality, int jpegMode, int shiftStep);

}  // namespace vx
