#include "hosts/cli/pictures/standard_stream.h"

#include <poll.h>
#include <sys/mman.h>
#include <unistd.h>

#include <cerrno>
#include <span>
#include <vector>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/console/write_all.h"

namespace vx::cli {
namespace {

// Where the descriptor of standard input's copy can be opened; empty until it is read.
std::filesystem::path copyOfInput;

// What a pipe brings is kept in memory, and half of that is left to the picture.
constexpr std::uint64_t kMostOfMemory = 2;

// Returns 0 at the end. A signal that asks to cancel ends the waiting.
std::size_t readSome(std::span<std::uint8_t> block) {
  pollfd input{STDIN_FILENO, POLLIN, 0};
  for (;;) {
    throwIfCancelled();
    if (poll(&input, 1, 200) <= 0) continue;
    const ssize_t got = read(STDIN_FILENO, block.data(), block.size());
    if (got >= 0) return static_cast<std::size_t>(got);
    if (errno != EINTR && errno != EAGAIN)
      throw FileError("cannot read standard input: " + systemReason(errno));
  }
}

}  // namespace

std::filesystem::path standardInput() {
  if (!copyOfInput.empty()) return copyOfInput;
  const int file = memfd_create("standard input", MFD_CLOEXEC);
  if (file < 0) throw FileError("cannot keep standard input: " + systemReason(errno));
  const auto memory = static_cast<std::uint64_t>(sysconf(_SC_PHYS_PAGES)) *
                      static_cast<std::uint64_t>(sysconf(_SC_PAGESIZE));
  std::uint64_t kept = 0;
  std::vector<std::uint8_t> block(std::size_t{1} << 20);
  while (const std::size_t got = readSome(block)) {
    kept += got;
    if (kept > memory / kMostOfMemory)
      throw FileError("standard input is larger than half of the memory");
    writeAll(file, std::span(block).first(got), "cannot keep standard input");
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
  writeAll(STDOUT_FILENO, bytes, "cannot write to standard output");
}

}  // namespace vx::cli
