#include "hosts/cli/pictures/standard_stream.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <vector>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

// Where the descriptor of standard input's copy can be opened; empty until it is read.
std::filesystem::path copyOfInput;

void writeAll(int file, std::span<const std::uint8_t> bytes, const char* what) {
  while (!bytes.empty()) {
    throwIfCancelled();
    const ssize_t written = write(file, bytes.data(), bytes.size());
    if (written < 0 && errno == EINTR) continue;
    if (written < 0) throw FileError(std::string(what) + systemReason(errno));
    bytes = bytes.subspan(static_cast<std::size_t>(written));
  }
}

}  // namespace

std::filesystem::path standardInput() {
  if (!copyOfInput.empty()) return copyOfInput;
  const int file = memfd_create("standard input", MFD_CLOEXEC);
  if (file < 0) throw FileError("cannot keep standard input: " + systemReason(errno));
  std::vector<std::uint8_t> block(std::size_t{1} << 20);
  for (;;) {
    throwIfCancelled();
    const ssize_t got = read(STDIN_FILENO, block.data(), block.size());
    if (got == 0) break;
    if (got < 0 && errno == EINTR) continue;
    if (got < 0) throw FileError("cannot read standard input: " + systemReason(errno));
    writeAll(file, {block.data(), static_cast<std::size_t>(got)}, "cannot keep standard input: ");
  }
  copyOfInput = "/proc/self/fd/" + std::to_string(file);
  return copyOfInput;
}

bool isStandardInput(const std::filesystem::path& path) {
  return !copyOfInput.empty() && path == copyOfInput;
}

std::string nameOf(const std::filesystem::path& input) {
  return isStandardInput(input) ? "standard input" : input.string();
}

void writeStandardOutput(std::span<const std::uint8_t> bytes) {
  if (isatty(STDOUT_FILENO) == 1)
    throw FileError("standard output is a terminal; a picture would be noise there");
  writeAll(STDOUT_FILENO, bytes, "cannot write to standard output: ");
}

}  // namespace vx::cli
