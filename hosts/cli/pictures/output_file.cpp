#include "hosts/cli/pictures/output_file.h"

#include <fcntl.h>
#include <stdlib.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <string>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

namespace fs = std::filesystem;

[[noreturn]] void fail(const char* what, int error) {
  throw FileError(std::string(what) + ": " + systemReason(error));
}

/// A new file with a unique name, removed again unless it was renamed.
class PartFile {
 public:
  explicit PartFile(const fs::path& target) {
    const std::string extension = target.extension().string();
    path_ = (target.parent_path() / (".vxicore-XXXXXX" + extension)).string();
    file_ = mkostemps(path_.data(), static_cast<int>(extension.size()), O_CLOEXEC);
    if (file_ < 0) fail("cannot write into its folder", errno);
    setPartFile(path_.c_str());
  }
  PartFile(const PartFile&) = delete;
  PartFile& operator=(const PartFile&) = delete;
  ~PartFile() {
    if (file_ >= 0) close(file_);
    if (!renamed_) unlink(path_.c_str());
    setPartFile(nullptr);
  }

  int file() const { return file_; }

  /// fsync and close report what a full disk or a network folder kept back until now.
  void finish(mode_t mode) {
    fchmod(file_, mode);
    if (fsync(file_) != 0 && errno != EINVAL && errno != EROFS) fail("cannot write", errno);
    const int file = file_;
    file_ = -1;
    if (close(file) != 0) fail("cannot write", errno);
  }

  void rename(const fs::path& target, bool force) {
    if (force) {
      if (::rename(path_.c_str(), target.c_str()) != 0)
        fail("cannot rename the finished file", errno);
    } else if (renameat2(AT_FDCWD, path_.c_str(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) !=
               0) {
      // File systems without that flag: a hard link refuses an existing name just as well.
      if (errno != EINVAL && errno != ENOSYS) failTaken(errno);
      if (link(path_.c_str(), target.c_str()) != 0) failTaken(errno);
      return;
    }
    renamed_ = true;
  }

 private:
  [[noreturn]] static void failTaken(int error) {
    if (error == EEXIST) throw FileError("exists already (--force replaces it)");
    fail("cannot rename the finished file", error);
  }

  std::string path_;
  int file_ = -1;
  bool renamed_ = false;
};

mode_t newFileMode() {
  const mode_t mask = umask(0);
  umask(mask);
  return 0666 & ~mask;
}

}  // namespace

void checkWritable(const fs::path& target, bool force) {
  struct stat status {};
  if (stat(target.c_str(), &status) == 0) {
    if (!S_ISREG(status.st_mode)) throw FileError("is not a regular file");
    if (!force) throw FileError("exists already (--force replaces it)");
  } else if (errno != ENOENT) {
    fail("cannot write", errno);
  }
  const fs::path folder = target.has_parent_path() ? target.parent_path() : fs::path(".");
  if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
    throw FileError("its folder does not exist");
  }
  if (access(folder.c_str(), W_OK | X_OK) != 0) fail("cannot write into its folder", errno);
}

void writeFile(const fs::path& target, std::span<const std::uint8_t> bytes, bool force) {
  writeFile(target, force, WhenCancelled::kStop,
            [bytes](int file) { writeAll(file, bytes, "cannot write"); });
}

void writeFile(const fs::path& target, bool force, WhenCancelled whenCancelled,
               const std::function<void(int file)>& content) {
  checkWritable(target, force);
  std::error_code error;
  const fs::path resolved = fs::exists(target, error) ? fs::canonical(target, error) : target;
  if (error) fail("cannot write", error.value());
  struct stat status {};
  const bool replaces = stat(resolved.c_str(), &status) == 0;

  PartFile part(resolved);
  content(part.file());
  part.finish(replaces ? status.st_mode & 07777 : newFileMode());
  if (whenCancelled == WhenCancelled::kStop) throwIfCancelled();
  part.rename(resolved, force);
}

}  // namespace vx::cli
