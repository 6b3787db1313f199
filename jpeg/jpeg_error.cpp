#include "jpeg/jpeg.h"

namespace vx {

const char* jpegErrorText(int code) noexcept {
  static constexpr const char* kTexts[] = {
      "ROI Success",
      "Interrupt Success",
      "Success",
      "Exception detected",
      "Invalid Encoder",
      "Unsupported subsampling",
      "Unsupported bytes per pixel",
      "Memory error",
      "Bad Huffman table",
      "Bad Quantization table",
      "Invalid JPEG_PROPERTIES",
      "Error close file",
      "Invalid file name",
      "Error EOF",
      "Not supported",
      "Not JPEG",
      "Error COMP",
      "Error SOF",
      "Error DNL",
      "No Huffman table",
      "No Quantization table",
      "No frame",
      "Multiply frame",
      "Data error",
      "No image",
      "File error",
      "Internal error",
      "Bad RST marker",
      "Thumbnail too small",
      "Thumbnail has wrong color",
      "Output buffer too small",
      "Unsupported frame was found",
      "Error access to jpeg_comment buffer",
  };
  if (code <= kJpegRoiSuccess && code >= kJpegCommentBuffer) return kTexts[kJpegRoiSuccess - code];
  return code == kJpegReserved ? "Reserved" : "Unknown error code";
}

}  // namespace vx
