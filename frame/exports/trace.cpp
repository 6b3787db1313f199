#include "frame/exports/trace.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <new>
#include <string>

namespace vx {
namespace {

// Never destroyed: an exit handler of the host may still call the library.
template <class T>
union Immortal {
  T value;
  constexpr explicit Immortal(const char* text) : value(text) {}
  constexpr ~Immortal() {}
};

// All of it is initialised by the compiler, because the load notification may run before any
// constructor of the library would. Clang takes these strings for no constants; the priority then
// puts them before the notification.
constinit std::mutex mutex;
constinit int traceMask = 1;
[[gnu::init_priority(101)]] Immortal<std::string> traceDir("/tmp/");
[[gnu::init_priority(101)]] Immortal<std::string> traceFile("");  // empty until the first setTrace
constinit unsigned recordNumber = 0;

constexpr const char* kFirstFile = "/tmp/vxdlltrace.txt";

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Appends one record; the mutex is held. `format` takes the number and what follows.
template <class... Values>
int append(const char* format, Values... values) {
  const char* path = traceFile.value.empty() ? kFirstFile : traceFile.value.c_str();
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path, "ae"));
  if (file == nullptr) return 0;
  std::fprintf(file.get(), format, static_cast<int>(recordNumber++), values...);
  return 1;
}

constexpr char kTextRecord[] = "<<<<%d: %s\n -- %s \n>>>>\n";
constexpr char kNumberRecord[] = "<<<<%d: %s %d \n>>>>\n";

}  // namespace

int setTrace(int mask, const char* folder) noexcept try {
  const std::lock_guard lock(mutex);
  std::string dir = folder != nullptr ? std::string(folder) : traceDir.value;
  std::string file = dir + "/vxtrace_log.txt";  // a folder that ends in a slash keeps both
  traceMask = mask;
  traceDir.value.swap(dir);
  traceFile.value.swap(file);
  if ((mask & 1) == 0) return 0;
  append(kTextRecord, "setTrace - traceFile: ", traceFile.value.c_str());
  return append(kNumberRecord, "setTrace - traceMask: ", mask);
} catch (const std::bad_alloc&) {
  return 0;
}

int traceLine(const char* title, const char* body) noexcept {
  const std::lock_guard lock(mutex);
  if ((traceMask & 1) == 0) return 0;
  return append(kTextRecord, title, body);
}

int getTraceMask() noexcept {
  const std::lock_guard lock(mutex);
  return traceMask;
}

}  // namespace vx
