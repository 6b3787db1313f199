#include "frame/exports/trace.h"

#include <cstdio>
#include <memory>
#include <mutex>
#include <new>
#include <string>

namespace vx {
namespace {

struct Places {
  std::string folder;
  std::string file;
};

// All of it is initialised by the compiler, because the load notification may run before any
// constructor of the library would.
constinit std::mutex mutex;
constinit int traceMask = 1;
// Null until the first setTrace. Never released: an exit handler of the host may still call the
// library.
constinit const Places* places = nullptr;
constinit unsigned recordNumber = 0;

constexpr const char* kFirstFolder = "/tmp/";
constexpr const char* kFirstFile = "/tmp/vxdlltrace.txt";

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

// Appends one record; the mutex is held. `format` takes the number and what follows.
template <class... Values>
int append(const char* format, Values... values) {
  const char* path = places == nullptr ? kFirstFile : places->file.c_str();
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path, "ae"));
  if (file == nullptr) return 0;
  std::fprintf(file.get(), format, static_cast<int>(recordNumber++), values...);
  return 1;
}

constexpr char kTextRecord[] = "<<<<%d: %s\n -- %s \n>>>>\n";
constexpr char kNumberRecord[] = "<<<<%d: %s %d \n>>>>\n";

}  // namespace

std::mutex& traceLock() noexcept { return mutex; }

int setTrace(int mask, const char* folder) noexcept try {
  const std::lock_guard lock(mutex);
  if (folder == nullptr) folder = places == nullptr ? kFirstFolder : places->folder.c_str();
  // A folder that ends in a slash keeps both.
  const Places* const next = new Places{folder, std::string(folder) + "/vxtrace_log.txt"};
  delete places;
  places = next;
  traceMask = mask;
  if ((mask & 1) == 0) return 0;
  append(kTextRecord, "setTrace - traceFile: ", places->file.c_str());
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
