// Leaving on SIGINT, SIGTERM or SIGHUP: the first asks the work to stop at its next callback, the
// second leaves at once. Neither leaves a file that is not finished.
#pragma once

namespace vx::cli {

void installSignalHandlers();
bool cancelRequested() noexcept;
void throwIfCancelled();

/// The part file that a second signal has to remove; null when there is none. The text has to stay
/// until it is replaced by null.
void setPartFile(const char* path) noexcept;

}  // namespace vx::cli
