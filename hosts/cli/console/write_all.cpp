#include "hosts/cli/console/write_all.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"

namespace vx::cli {

void writeAll(int file, std::span<const std::uint8_t> bytes, const std::string& failed,
              WhenCancelled whenCancelled) {
  constexpr std::size_t kPiece = std::size_t{8} << 20;
  while (!bytes.empty()) {
    if (whenCancelled == WhenCancelled::kStop) throwIfCancelled();
    const ssize_t written = write(file, bytes.data(), std::min(bytes.size(), kPiece));
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw FileError(failed + ": " + systemReason(errno));
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

}  // namespace vx::cli
