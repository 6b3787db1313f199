// libvips' collected complaints as one line.
#pragma once

#include <vips/vips.h>

#include <string>
#include <string_view>

#include "hosts/cli/console/error.h"

namespace vx::cli {

inline std::string vipsReason() {
  std::string reason;
  bool gap = false;
  for (const char c : std::string_view(vips_error_buffer())) {
    if (c == '\n' || c == '\r') {
      gap = true;
      continue;
    }
    if (gap && !reason.empty()) reason += "; ";
    gap = false;
    reason += c;
  }
  vips_error_clear();
  return reason.empty() ? "unknown reason" : reason;
}

inline FileError vipsError(const std::string& what) {
  return FileError(what + ": " + vipsReason());
}

}  // namespace vx::cli
