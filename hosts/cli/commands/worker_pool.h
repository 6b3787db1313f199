// Work on numbered pieces in several processes. Processes and not threads: the libraries that read
// pictures collect their complaints in one place per process, and a file that makes one of them
// crash costs that picture alone.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>

namespace vx::cli {

/// What became of a piece.
struct PieceResult {
  std::optional<std::string> text{};  // nothing where its worker died
  std::string how{};                  // it died, in words
  bool cancelled = false;             // it died of a signal that asked the whole program to stop
  std::size_t worker = 0;             // from 0, the place that the worker has among all
};

struct PoolWork {
  std::size_t count = 0;  // pieces
  int workers = 2;
  double memory = 0;  // bytes that the claims of all workers together stay below
  /// Runs in a worker at its start.
  std::function<void()> begin;
  /// Runs in a worker. Calls `claim` before it takes much memory, which waits until there is some;
  /// a worker alone always gets it.
  std::function<std::string(std::size_t index, const std::function<void(double bytes)>& claim)>
      work;
  /// Runs here, in the order of the pieces.
  std::function<void(std::size_t index, const PieceResult& result)> done;
  /// Runs here a few times a second, with the number of pieces that are finished.
  std::function<void(std::size_t finished)> idle;
};

/// Returns when all pieces are finished or, after cancelling, those that had begun. No thread may
/// have been started before. Throws FileError when no worker can be started.
void runPool(const PoolWork& pool);

}  // namespace vx::cli
