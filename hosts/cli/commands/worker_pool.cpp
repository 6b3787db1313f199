#include "hosts/cli/commands/worker_pool.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"

namespace vx::cli {
namespace {

// A worker is told the number of a piece. It answers with a claim, for which it waits for a byte,
// or with a result: a kind, a length or number of bytes, and the text of a result.
enum class Kind : std::uint64_t { kClaim, kResult };

struct Header {
  Kind kind;
  std::uint64_t size;
};

bool readAll(int file, void* target, std::size_t size) {
  auto* at = static_cast<char*>(target);
  while (size > 0) {
    const ssize_t got = read(file, at, size);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    at += got;
    size -= static_cast<std::size_t>(got);
  }
  return true;
}

bool writeAll(int file, const void* source, std::size_t size) {
  const auto* at = static_cast<const char*>(source);
  while (size > 0) {
    const ssize_t put = write(file, at, size);
    if (put < 0 && errno == EINTR) continue;
    if (put < 0) return false;
    at += put;
    size -= static_cast<std::size_t>(put);
  }
  return true;
}

// Until a worker obeys, the signal of its parent would kill it.
void maskCancel(int how) {
  sigset_t signals;
  sigemptyset(&signals);
  sigaddset(&signals, SIGUSR1);
  sigprocmask(how, &signals, nullptr);
}

[[noreturn]] void serve(const PoolWork& pool, int in, int out) noexcept {
  obeyParent();
  maskCancel(SIG_UNBLOCK);
  pool.begin();
  const auto claim = [&](double bytes) {
    const Header header{Kind::kClaim, static_cast<std::uint64_t>(bytes) + 1};
    char granted = 0;
    if (!writeAll(out, &header, sizeof header) || !readAll(in, &granted, 1)) _exit(0);
  };
  std::uint64_t index = 0;
  while (readAll(in, &index, sizeof index)) {
    const std::string result = pool.work(index, claim);
    const Header header{Kind::kResult, result.size()};
    if (!writeAll(out, &header, sizeof header) || !writeAll(out, result.data(), result.size()))
      break;
  }
  _exit(0);  // what the parent keeps for its end is not ours to do
}

struct Worker {
  pid_t process = -1;
  int in = -1, out = -1;  // of the worker's, as seen from here: written, read
  std::optional<std::size_t> index{};
  double claimed = 0, asked = 0;
};

class Pool {
 public:
  explicit Pool(const PoolWork& pool)
      : pool_(pool), workers_(static_cast<std::size_t>(pool.workers)) {}
  Pool(const Pool&) = delete;
  Pool& operator=(const Pool&) = delete;
  ~Pool() {
    for (Worker& worker : workers_) end(worker);
  }

  void run() {
    bool told = false;
    for (;;) {
      if (cancelRequested() && !std::exchange(told, true))
        for (const Worker& worker : workers_)
          if (worker.process > 0) kill(worker.process, SIGUSR1);
      for (Worker& worker : workers_) assign(worker);
      grant();
      if (!anyBusy()) break;
      wait();
      hand();
      pool_.idle(finished_);
    }
  }

 private:
  void start(Worker& worker) {
    std::array<int, 2> down{}, up{};
    if (pipe2(down.data(), O_CLOEXEC) != 0) fail();
    if (pipe2(up.data(), O_CLOEXEC) != 0) {
      close(down[0]), close(down[1]);
      fail();
    }
    std::fflush(nullptr);
    maskCancel(SIG_BLOCK);
    worker.process = fork();
    if (worker.process == 0) {
      // Other workers must see the end of their pipes when this program ends.
      for (const Worker& other : workers_)
        if (other.in >= 0) close(other.in), close(other.out);
      close(down[1]), close(up[0]);
      serve(pool_, down[0], up[1]);
    }
    maskCancel(SIG_UNBLOCK);
    close(down[0]), close(up[1]);
    worker.in = down[1], worker.out = up[0];
    if (worker.process < 0) {
      end(worker);
      fail();
    }
  }

  [[noreturn]] static void fail() {
    throw FileError("cannot start a process: " + systemReason(errno));
  }

  static PieceResult end(Worker& worker) {
    if (worker.in >= 0) close(worker.in), close(worker.out);
    int status = 0;
    if (worker.process > 0)
      while (waitpid(worker.process, &status, 0) < 0 && errno == EINTR) continue;
    worker = Worker();
    PieceResult result{.text = {}, .how = "its process ended early"};
    if (WIFSIGNALED(status))
      result.how = std::string("its process died: ") + strsignal(WTERMSIG(status));
    result.cancelled = WIFEXITED(status) && WEXITSTATUS(status) == kExitCancelled;
    return result;
  }

  void assign(Worker& worker) {
    if (worker.index || next_ == pool_.count || cancelRequested()) return;
    if (worker.process < 0) start(worker);
    const std::uint64_t index = next_;
    worker.index = next_++;
    writeAll(worker.in, &index, sizeof index);  // one that died is noticed when its pipe ends
  }

  void grant() {
    double claimed = 0;
    for (const Worker& worker : workers_) claimed += worker.claimed;
    for (Worker& worker : workers_) {
      if (worker.asked == 0 || (claimed > 0 && claimed + worker.asked > pool_.memory)) continue;
      worker.claimed = worker.asked;
      worker.asked = 0;
      claimed += worker.claimed;
      writeAll(worker.in, "", 1);
    }
  }

  bool anyBusy() const {
    for (const Worker& worker : workers_)
      if (worker.index) return true;
    return false;
  }

  void wait() {
    std::vector<pollfd> files;
    for (const Worker& worker : workers_) files.push_back({worker.out, POLLIN, 0});
    if (poll(files.data(), files.size(), 200) <= 0) return;
    for (std::size_t i = 0; i < files.size(); ++i)
      if (files[i].revents != 0) take(workers_[i]);
  }

  void take(Worker& worker) {
    Header header{};
    std::string text;
    bool whole = readAll(worker.out, &header, sizeof header);
    if (!worker.index) {  // died between two pieces
      end(worker);
      return;
    }
    if (whole && header.kind == Kind::kClaim) {
      worker.asked = static_cast<double>(header.size);
      return;
    }
    if (whole) {
      text.resize(header.size);
      whole = readAll(worker.out, text.data(), text.size());
    }
    const std::size_t index = *std::exchange(worker.index, std::nullopt);
    worker.claimed = worker.asked = 0;
    PieceResult& result = results_[index];
    result = whole ? PieceResult{.text = std::move(text)} : end(worker);
    result.worker = static_cast<std::size_t>(&worker - workers_.data());
    ++finished_;
  }

  void hand() {
    for (auto first = results_.find(handed_); first != results_.end();
         first = results_.find(++handed_)) {
      pool_.done(handed_, first->second);
      results_.erase(first);
    }
  }

  const PoolWork& pool_;
  std::vector<Worker> workers_;
  std::map<std::size_t, PieceResult> results_;  // that wait for one before them
  std::size_t next_ = 0, handed_ = 0, finished_ = 0;
};

}  // namespace

void runPool(const PoolWork& pool) {
  // A worker that died must not take this program with it.
  struct sigaction ignore {
  }, before{};
  ignore.sa_handler = SIG_IGN;
  sigaction(SIGPIPE, &ignore, &before);
  Pool(pool).run();
  sigaction(SIGPIPE, &before, nullptr);
}

}  // namespace vx::cli
