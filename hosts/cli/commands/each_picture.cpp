#include "hosts/cli/commands/each_picture.h"

#include <cstdio>
#include <new>

#include "hosts/cli/console/cancel.h"
#include "hosts/cli/console/error.h"
#include "hosts/cli/pictures/standard_stream.h"

namespace vx::cli {

void tell(Progress& progress, const std::filesystem::path& input, const std::string& text) {
  progress.clear();
  std::fprintf(stderr, "vxicore: %s: %s\n", nameOf(input).c_str(), text.c_str());
}

int forEachPicture(const std::vector<std::filesystem::path>& inputs,
                   const std::function<void(std::size_t index, Progress& progress)>& work) {
  Progress progress;
  bool failed = false;
  for (std::size_t i = 0; i < inputs.size(); ++i) {
    const std::string count =
        inputs.size() > 1 ? std::to_string(i + 1) + "/" + std::to_string(inputs.size()) + " " : "";
    progress.beginPicture(count + inputs[i].filename().string());
    try {
      throwIfCancelled();
      work(i, progress);
    } catch (const Cancelled&) {
      tell(progress, inputs[i], "cancelled");
      return kExitCancelled;
    } catch (const FileError& error) {
      tell(progress, inputs[i], error.what());
      failed = true;
    } catch (const std::bad_alloc&) {
      tell(progress, inputs[i], "not enough memory");
      failed = true;
    }
  }
  return failed ? kExitSomeFailed : kExitDone;
}

}  // namespace vx::cli
