#include "hosts/cli/commands/wisdom.h"

#include <fcntl.h>
#include <fftw3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <exception>
#include <memory>

#include "hosts/cli/pictures/output_file.h"

namespace vx::cli {
namespace {

namespace fs = std::filesystem;

// The XDG base directory rules require that a relative path is ignored.
fs::path cacheFile() {
  const auto absolute = [](const char* name) {
    const char* value = std::getenv(name);
    const fs::path path = value ? value : "";
    return path.is_absolute() ? path : fs::path();
  };
  fs::path folder = absolute("XDG_CACHE_HOME");
  if (folder.empty()) {
    const fs::path home = absolute("HOME");
    if (home.empty()) return {};
    folder = home / ".cache";
  }
  return folder / "vxicore" / "fftw-wisdom";
}

// Empty for anything but a regular file of a plausible size: all plans of the filter together take
// some ten kilobytes.
std::string textOf(const fs::path& path) {
  constexpr off_t kMost = off_t{1} << 20;
  const int file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return {};
  struct stat status {};
  std::string text;
  if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_size <= kMost) {
    text.resize(static_cast<std::size_t>(status.st_size));
    if (read(file, text.data(), text.size()) != status.st_size) text.clear();
  }
  close(file);
  return text;
}

std::string currentWisdom() {
  const std::unique_ptr<char, decltype(&std::free)> text(fftwf_export_wisdom_to_string(),
                                                         &std::free);
  return text ? text.get() : "";
}

}  // namespace

Wisdom::Wisdom() : file_(cacheFile()) {
  if (!file_.empty()) fftwf_import_wisdom_from_string(textOf(file_).c_str());
  known_ = currentWisdom();
}

void Wisdom::keep() const {
  const std::string text = currentWisdom();
  if (file_.empty() || text == known_) return;
  try {
    fs::create_directories(file_.parent_path());
    writeFile(file_, {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}, true);
  } catch (const std::exception&) {
    // The pictures are written; nothing depends on the cache.
  }
}

}  // namespace vx::cli
