// The frame of the tests of --compare.
#pragma once

#include "tests/host/host_test.h"

namespace vx::host_test {

class PageTest : public HostTest {
 protected:
  /// The pictures in a page, in its order.
  std::vector<VImage> pictures(const std::string& page) const {
    const std::string text = bytesOf(page), mark = "src=\"data:image/jpeg;base64,";
    std::vector<VImage> found;
    for (std::size_t at = text.find(mark); at != std::string::npos; at = text.find(mark, at + 1)) {
      const std::size_t start = at + mark.size();
      const std::string code = text.substr(start, text.find('"', start) - start);
      gsize size = 0;
      guchar* bytes = g_base64_decode(code.c_str(), &size);
      VipsBlob* blob = vips_blob_new(nullptr, bytes, size);
      found.push_back(VImage::jpegload_buffer(blob).copy_memory());
      vips_area_unref(VIPS_AREA(blob));
      g_free(bytes);
    }
    return found;
  }
};

}  // namespace vx::host_test
