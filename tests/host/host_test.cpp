#include "tests/host/host_test.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <sstream>

namespace vx::host_test {
namespace {

std::string contentOf(const fs::path& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/// With a null pointer at the end.
std::vector<char*> pointersTo(Names& texts) {
  std::vector<char*> pointers;
  for (std::string& text : texts) pointers.push_back(text.data());
  pointers.push_back(nullptr);
  return pointers;
}

void redirect(const char* path, int descriptor) {
  const int file = ::open(path, O_WRONLY | O_CREAT | O_TRUNC, 0600);
  dup2(file, descriptor);
  close(file);
}

class VipsSetUp : public ::testing::Environment {
 public:
  void SetUp() override {
    setenv("VIPS_WARNING", "1", 1);  // to drop them
    if (vips_init("host_test") != 0) vips_error_exit(nullptr);
    vips_cache_set_max(0);
    Exiv2::XmpParser::initialize();
    Exiv2::LogMsg::setLevel(Exiv2::LogMsg::mute);
    Exiv2::XmpProperties::registerNs("http://ns.adobe.com/xmp/note/", "xmpNote");
  }
};
const auto* const kVipsSetUp = ::testing::AddGlobalTestEnvironment(new VipsSetUp);

}  // namespace

void HostTest::SetUp() {
  std::string name = (fs::temp_directory_path() / "vxhost.XXXXXX").string();
  ASSERT_NE(mkdtemp(name.data()), nullptr);
  folder_ = name;
}

void HostTest::TearDown() {
  std::error_code error;
  fs::remove_all(folder_, error);
}

Outcome HostTest::run(const std::vector<std::string>& arguments,
                      const Environment& environment) const {
  const std::string out = folder_.string() + ".out", err = folder_.string() + ".err";
  // All that allocates comes before the fork: other threads may hold the allocator's locks.
  Names words{VX_PROGRAM}, variables;
  words.insert(words.end(), arguments.begin(), arguments.end());
  for (const auto& [name, value] : environment.variables) variables.push_back(name + '=' + value);
  for (char** inherited = environ; *inherited != nullptr; ++inherited)
    variables.emplace_back(*inherited);
  const std::vector<char*> argv = pointersTo(words), envp = pointersTo(variables);
  const pid_t child = fork();
  if (child == 0) {
    if (chdir(folder_.c_str()) != 0) _exit(127);
    redirect(out.c_str(), STDOUT_FILENO);
    redirect(err.c_str(), STDERR_FILENO);
    if (environment.fileSizeLimit > 0) {
      const struct rlimit limit { environment.fileSizeLimit, environment.fileSizeLimit };
      setrlimit(RLIMIT_FSIZE, &limit);
    }
    execve(argv[0], argv.data(), envp.data());
    _exit(127);
  }
  int status = 0;
  waitpid(child, &status, 0);
  Outcome outcome{WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status), contentOf(out),
                  contentOf(err)};
  fs::remove(out);
  fs::remove(err);
  return outcome;
}

Outcome HostTest::run(const std::string& line, const Environment& environment) const {
  std::istringstream words(line);
  return run(Names(std::istream_iterator<std::string>(words), {}), environment);
}

void HostTest::runWell(const std::string& line) const {
  SCOPED_TRACE(line);
  const Outcome outcome = run(line);
  EXPECT_EQ(outcome.code, 0) << outcome.err;
  EXPECT_EQ(outcome.err, "");
}

void HostTest::runBadly(int code, const std::string& reason, const std::string& line,
                        const Environment& environment) const {
  SCOPED_TRACE(line);
  const Outcome outcome = run(line, environment);
  EXPECT_EQ(outcome.code, code);
  EXPECT_EQ(outcome.complaints(), 1) << outcome.err;
  EXPECT_NE(outcome.err.find(reason), std::string::npos) << outcome.err;
}

void HostTest::write(const std::string& name, const std::string& text) const {
  std::ofstream(path(name), std::ios::binary) << text;
}

Names HostTest::files(const std::string& subfolder) const {
  Names names;
  for (const auto& entry : fs::directory_iterator(folder_ / subfolder))
    names.push_back(entry.path().filename().string());
  std::sort(names.begin(), names.end());
  return names;
}

std::string HostTest::bytesOf(const std::string& name) const { return contentOf(path(name)); }

void HostTest::save(const VImage& image, const std::string& name) const {
  image.write_to_file(path(name).c_str());
}

VImage HostTest::open(const std::string& name) const {
  return VImage::new_from_file(path(name).c_str()).copy_memory();
}

std::unique_ptr<Exiv2::Image> HostTest::metadataOf(const std::string& name) const {
  std::unique_ptr<Exiv2::Image> image(Exiv2::ImageFactory::open(path(name)).release());
  image->readMetadata();
  return image;
}

void HostTest::addMetadata(const std::string& name) const {
  const auto image = metadataOf(name);
  for (const auto& [key, value] : kExif) image->exifData()[key] = std::string(value);
  image->exifData()["Exif.Photo.PixelXDimension"] = image->pixelWidth();
  image->exifData()["Exif.Photo.PixelYDimension"] = image->pixelHeight();
  image->xmpData()["Xmp.dc.title"] = "lang=x-default A title";
  if (image->checkMode(Exiv2::mdIptc) == Exiv2::amReadWrite)
    image->iptcData()["Iptc.Application2.Caption"] = "A caption";
  image->writeMetadata();
}

VImage picture(const VImage& samples, int depth) {
  const bool deep = depth == 16;
  const VipsInterpretation grey = deep ? VIPS_INTERPRETATION_GREY16 : VIPS_INTERPRETATION_B_W;
  const VipsInterpretation rgb = deep ? VIPS_INTERPRETATION_RGB16 : VIPS_INTERPRETATION_sRGB;
  return samples.rint()
      .cast(deep ? VIPS_FORMAT_USHORT : VIPS_FORMAT_UCHAR)
      .copy(VImage::option()->set("interpretation", samples.bands() < 3 ? grey : rgb));
}

VImage pattern(int width, int height, int bands, int depth) {
  const int top = depth == 8 ? 255 : 65535;
  std::vector<std::uint16_t> samples;
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int b = 0; b < bands; ++b) {
        const double wave = std::sin(0.11 * x + 0.9 * b) * std::cos(0.07 * y - 0.5 * b);
        const double slope = static_cast<double>(x + y) / (width + height);
        const double texture = ((x * 7 + y * 13 + b * 29) % 11) / 60.0;
        const double value = 0.42 + 0.3 * wave + 0.3 * (slope - 0.5) + texture - 0.08;
        samples.push_back(static_cast<std::uint16_t>(std::clamp(value, 0.0, 1.0) * top));
      }
  // The top must survive: one white and one black corner.
  std::fill_n(samples.begin(), bands, static_cast<std::uint16_t>(top));
  std::fill_n(samples.end() - bands, bands, std::uint16_t{0});
  const VImage image = VImage::new_from_memory(samples.data(), samples.size() * 2, width, height,
                                               bands, VIPS_FORMAT_USHORT);
  return picture(image, depth).copy_memory();  // the samples end here
}

std::string profileOf(const VImage& image) {
  if (image.get_typeof(VIPS_META_ICC_NAME) != VIPS_TYPE_BLOB) return {};
  std::size_t size = 0;
  const auto* const data = static_cast<const char*>(image.get_blob(VIPS_META_ICC_NAME, &size));
  return {data, size};
}

double largestDifference(const VImage& a, const VImage& b) {
  const bool alike = a.width() == b.width() && a.height() == b.height() && a.bands() == b.bands();
  EXPECT_TRUE(alike && a.format() == b.format());
  return alike ? (a - b).abs().max() : 1e9;
}

double psnr(const VImage& a, const VImage& b, double top) {
  const VImage error = a.cast(VIPS_FORMAT_DOUBLE) - b.cast(VIPS_FORMAT_DOUBLE);
  return 10 * std::log10(top * top / (error * error).avg());
}

}  // namespace vx::host_test
