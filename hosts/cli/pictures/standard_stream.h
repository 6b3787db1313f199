// Pictures that come and go through pipes.
#pragma once

#include <cstdint>
#include <filesystem>
#include <span>
#include <string>

namespace vx::cli {

/// Reads standard input to its end, once per process, into a file that has no name and no place on
/// a disk. Returns the path under which it can be opened. Throws FileError, also for
/// what would take more than half of the memory, and Cancelled.
std::filesystem::path standardInput();
bool isStandardInput(const std::filesystem::path& path);
/// What users call an input.
std::string nameOf(const std::filesystem::path& input);

/// Throws FileError when standard output is a terminal, closed or full.
void writeStandardOutput(std::span<const std::uint8_t> bytes);

}  // namespace vx::cli
