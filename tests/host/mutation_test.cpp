// Damaged files of every format through the whole program: VX_MUTATIONS says how many, for longer
// runs.
#include <chrono>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <random>

#include "tests/host/host_test.h"

namespace vx::host_test {
namespace {

constexpr int kFewest = 320, kAtOnce = 40;

/// Damage as transfers, disks and malice do it.
std::string mutated(std::string bytes, std::mt19937& random) {
  const auto below = [&random](std::size_t n) { return n == 0 ? 0 : random() % n; };
  for (std::size_t times = 1 + below(4); times > 0 && !bytes.empty(); --times) {
    // Every other place is near the front, where the structure is.
    const std::size_t at =
        below(random() % 2 != 0 ? bytes.size() : std::min(bytes.size(), std::size_t{400}));
    const std::size_t length = std::min(bytes.size() - at, 1 + below(40));
    switch (below(6)) {
      case 0:
        bytes[at] = static_cast<char>(bytes[at] ^ 1 << below(8));
        break;
      case 1:
        bytes.replace(
            at, std::min<std::size_t>(length, 4),
            std::string(std::min<std::size_t>(length, 4), random() % 2 != 0 ? '\xff' : '\0'));
        break;
      case 2:
        bytes.erase(at, length);
        break;
      case 3:
        bytes.insert(at, bytes, below(bytes.size()), length);
        break;
      case 4:
        for (std::size_t i = 0; i < length; ++i) bytes[at + i] = static_cast<char>(random());
        break;
      default:
        bytes.resize(at);
    }
  }
  return bytes;
}

class Mutations : public HostTest {
 protected:
  /// Pictures of all codings, with metadata, by the name that their format has.
  Names makeSources() const {
    const VImage picture = pattern(61, 45, 3, 8), deep = pattern(61, 45, 3, 16);
    Names names;
    for (const std::string coding :
         {"a.jpg[Q=70]", "b.jpg[interlace]", "c.png", "d.png[palette]", "e.png[interlace]", "f.tif",
          "g.tif[compression=lzw,tile,tile-width=16,tile-height=16]",
          "h.tif[compression=deflate,bigtiff]", "i.webp", "j.webp[lossless]", "k.heic", "l.avif",
          "m.jxl"}) {
      const std::string name = coding.substr(0, coding.find('['));
      const std::string ending = name.substr(2);
      const char* module = ending == "jxl" ? "jxlsave" : "heifsave";
      if ((ending == "jxl" || ending == "heic" || ending == "avif") &&
          vips_type_find("VipsOperation", module) == 0)
        continue;
      save(ending == "tif" ? deep : picture, coding);
      if (ending == "jpg" || ending == "webp" || name == "f.tif" || name == "g.tif")
        addMetadata(name);
      names.push_back(name);
    }
    return names;
  }

  /// Every picture ends in a result or in a line of its own, and nothing else is left.
  void expectAnswers(const Names& names, const std::string& folder, const Outcome& outcome) const {
    EXPECT_LE(outcome.code, 1) << outcome.err;
    Names results;
    std::size_t failed = 0;
    std::istringstream lines(outcome.out);
    for (std::string text; std::getline(lines, text);) {
      const nlohmann::json told = nlohmann::json::parse(text);
      if (told["status"] == "done")
        results.push_back(fs::path(told["result"].get<std::string>()).filename());
      else
        ++failed;
      EXPECT_EQ(told.value("error", "").find("its process"), std::string::npos) << text;
    }
    EXPECT_EQ(results.size() + failed, names.size()) << outcome.err;
    EXPECT_EQ(files(folder + "/out"), results);
    for (const std::string& result : results) EXPECT_GT(open(folder + "/out/" + result).avg(), -1);
    std::istringstream complaints(outcome.err);
    for (std::string line; std::getline(complaints, line);)
      EXPECT_TRUE(line.starts_with("vxicore: ")) << line;
  }
};

TEST_F(Mutations, EndInAResultOrInALine) {
  const char* wanted = std::getenv("VX_MUTATIONS");
  const int count = wanted == nullptr ? kFewest : std::atoi(wanted);
  const Names sources = makeSources();
  std::mt19937 random(20260101);
  double slowest = 0;
  for (int first = 0; first < count && !HasFailure(); first += kAtOnce) {
    const std::string folder = std::to_string(first);
    fs::create_directories(path(folder + "/out"));
    Names names;
    for (int i = 0; i < kAtOnce; ++i) {
      const std::string& source = sources[random() % sources.size()];
      names.push_back(folder + '/' + std::to_string(1000 + i) +
                      fs::path(source).extension().string());
      write(names.back(), mutated(bytesOf(source), random));
    }
    Names arguments{"adjust", "-o", folder + "/out/",  "--json",           "--luma-gamma",
                    "1",      "-q", "--accept-damage", "--max-megapixels", "20"};
    arguments.insert(arguments.end(), names.begin(), names.end());
    SCOPED_TRACE("files " + folder + " and following");
    const auto start = std::chrono::steady_clock::now();
    expectAnswers(names, folder, run(arguments));
    const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
    slowest = std::max(slowest, taken.count());
    if (!HasFailure()) fs::remove_all(path(folder));
  }
  RecordProperty("seconds_of_the_slowest_forty", std::to_string(slowest));
}

}  // namespace
}  // namespace vx::host_test
