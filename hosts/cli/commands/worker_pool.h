// Work on numbered pieces in several processes. Processes and not threads: the libraries that read
// pictures collect their complaints in one place per process, and a file that makes one of them
// crash costs that picture alone.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace vx::cli {

struct PoolWork {
  std::size_t count = 0;  // pieces
  int workers = 2;
  double memory = 0;  // bytes that the claims of all workers together stay below
  /// Runs in a worker. Calls `claim` before it takes much memory, which waits until there is some;
  /// a worker alone always gets it.
  std::function<std::string(std::size_t index, const std::function<void(double bytes)>& claim)>
      work;
  /// Runs here, in the order of the pieces; nothing is given for a worker that died, with `how`.
  std::function<void(std::size_t index, const std::optional<std::string>& result,
                     const std::string& how)>
      done;
  /// Runs here a few times a second, with the number of pieces that are finished.
  std::function<void(std::size_t finished)> idle;
};

/// Returns when all pieces are finished or, after cancelling, those that had begun. No thread may
/// have been started before. Throws FileError when no worker can be started.
void runPool(const PoolWork& pool);

}  // namespace vx::cli
