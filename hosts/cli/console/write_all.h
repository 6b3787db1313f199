// Writing to a file or pipe until all of it is there.
#pragma once

#include <cstdint>
#include <span>
#include <string>

namespace vx::cli {

enum class WhenCancelled { kStop, kFinish };

/// Throws FileError with `failed` before the system's reason; Cancelled where cancelling was asked
/// for, which is looked at between pieces of 8 MB unless the writing is to be finished.
void writeAll(int file, std::span<const std::uint8_t> bytes, const std::string& failed,
              WhenCancelled whenCancelled = WhenCancelled::kStop);

}  // namespace vx::cli
