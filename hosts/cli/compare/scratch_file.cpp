#include "hosts/cli/compare/scratch_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <string>

#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

constexpr std::size_t kMostAtOnce = std::size_t{8} << 20;

[[noreturn]] void fail(int error) { throw FileError("cannot write: " + systemReason(error)); }

/// While it lives, the file's end belongs to this process. A lock of the process and not of the
/// file's description, which children share with their parent; it goes with a process that dies.
class EndLock {
 public:
  explicit EndLock(int file) : file_(file) {
    while (set(F_WRLCK) != 0)
      if (errno != EINTR) fail(errno);
  }
  ~EndLock() { set(F_UNLCK); }
  EndLock(const EndLock&) = delete;
  EndLock& operator=(const EndLock&) = delete;

 private:
  int set(int kind) const {
    struct flock lock {};
    lock.l_type = static_cast<short>(kind);
    lock.l_whence = SEEK_SET;
    return fcntl(file_, F_SETLKW, &lock);
  }

  int file_;
};

}  // namespace

ScratchFile::ScratchFile(const std::filesystem::path& folder) {
  std::string path = (folder / ".vxicore-XXXXXX").string();
  file_ = mkostemp(path.data(), O_CLOEXEC);
  if (file_ < 0) fail(errno);
  unlink(path.c_str());
}

ScratchFile::~ScratchFile() { close(file_); }

Piece ScratchFile::append(std::string_view text) const {
  const EndLock lock(file_);
  struct stat status {};
  if (fstat(file_, &status) != 0) fail(errno);
  const Piece piece{static_cast<std::uint64_t>(status.st_size), text.size()};
  for (off_t at = status.st_size; !text.empty();) {
    const ssize_t put = pwrite(file_, text.data(), std::min(text.size(), kMostAtOnce), at);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) fail(errno);
    text.remove_prefix(static_cast<std::size_t>(put));
    at += put;
  }
  return piece;
}

void ScratchFile::give(const Piece& piece, int file) const {
  auto at = static_cast<off_t>(piece.offset);
  for (std::uint64_t left = piece.size; left > 0;) {
    const ssize_t put = sendfile(file, file_, &at, std::min<std::uint64_t>(left, kMostAtOnce));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) fail(put < 0 ? errno : EIO);
    left -= static_cast<std::uint64_t>(put);
  }
}

}  // namespace vx::cli
