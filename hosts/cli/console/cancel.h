// Leaving on SIGINT, SIGTERM or SIGHUP: the first asks the work to stop at its next callback, the
// second leaves at once. Neither leaves an unfinished file behind.
#pragma once

namespace vx::cli {

void installSignalHandlers();
/// In a worker process: SIGUSR1 from its parent asks the work to stop, however often it comes.
void obeyParent();
bool cancelRequested() noexcept;
/// As if a signal had asked for it.
void requestCancel() noexcept;
void throwIfCancelled();

/// The unfinished file that a second signal has to remove; null when there is none. The text must
/// stay valid until null is set.
void setPartFile(const char* path) noexcept;

}  // namespace vx::cli
