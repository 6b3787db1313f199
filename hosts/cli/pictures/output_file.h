// Writing a file so that nobody ever sees half of it: under a name of its own beside the target,
// then renamed.
#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <span>

#include "hosts/cli/console/write_all.h"

namespace vx::cli {

/// Throws FileError when `target` must not be written: it exists and `force` is not given, it is
/// not a regular file, or its folder is missing. Called before the work starts, so that
/// none is wasted.
void checkWritable(const std::filesystem::path& target, bool force);

/// Puts `bytes` in `target` (through a symbolic link, if it is one). An existing file is replaced
/// only with `force`, keeps its permission bits, and stays as it was when anything fails. Throws
/// FileError.
void writeFile(const std::filesystem::path& target, std::span<const std::uint8_t> bytes,
               bool force);

/// The same for what `content` writes to a descriptor, piece by piece.
void writeFile(const std::filesystem::path& target, bool force, WhenCancelled whenCancelled,
               const std::function<void(int file)>& content);

}  // namespace vx::cli
