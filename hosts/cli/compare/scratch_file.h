// A file without a name that several processes fill.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string_view>

namespace vx::cli {

/// Where a text lies in a scratch file.
struct Piece {
  std::uint64_t offset = 0, size = 0;
};

/// Gone with the last process that holds it, however that ends.
class ScratchFile {
 public:
  /// On the disk of `folder`. Throws FileError.
  explicit ScratchFile(const std::filesystem::path& folder);
  ~ScratchFile();
  ScratchFile(const ScratchFile&) = delete;
  ScratchFile& operator=(const ScratchFile&) = delete;

  /// From this process and its children at the same time. Throws FileError.
  Piece append(std::string_view text) const;

  /// Writes the text of a piece to a file, without a copy in memory. Throws FileError.
  void give(const Piece& piece, int file) const;

 private:
  int file_;
};

}  // namespace vx::cli
