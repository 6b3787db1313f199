#pragma once

#include <mutex>

namespace vx {

// The debug trace: an append-only text file for the host's support people, "vxtrace_log.txt" in a
// folder that the host names. Off unless the host asks. Bit 0 of the mask lets records be written;
// any other bit only makes the callers format what is then dropped. Each record opens and closes
// the file, so that a crash loses nothing already traced; records are numbered through the life of
// the process. Every function may be called from any thread.

/// Size of the buffer in which a caller formats the text of a record.
constexpr int kTraceText = 512;

/// Stores the mask and, unless `folder` is null, the folder (any length), and writes two records
/// that show both when bit 0 is set.
///
/// @return 1 when the record of the mask was written, else 0. Without memory for the path nothing
/// changes and the result is 0.
int setTrace(int mask, const char* folder) noexcept;

/// Appends the record "<<<<number: title\n -- body \n>>>>\n".
///
/// @return 1 when it was written; 0 when bit 0 is clear or the file cannot be opened
int traceLine(const char* title, const char* body) noexcept;

/// Held for as long as a call of these works; a fork() takes it, too.
std::mutex& traceLock() noexcept;

/// The mask last set. Callers format a record only when it is not 0.
int getTraceMask() noexcept;

}  // namespace vx
