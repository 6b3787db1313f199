// The frame of the tests of the command-line host: a folder of its own per test, pictures made on
// the spot, and the built program run as a user runs it.
#pragma once

#include <exiv2/exiv2.hpp>
#include <filesystem>
#include <map>
#include <vips/vips8>

#include "tests/support/test.h"

namespace vx::host_test {

namespace fs = std::filesystem;
using vips::VImage;
using Names = std::vector<std::string>;

struct Outcome {
  int code;  // exit code, or 1000 + signal
  std::string out, err;

  /// The number of lines on stderr.
  std::ptrdiff_t complaints() const { return std::count(err.begin(), err.end(), '\n'); }
};

struct Environment {
  std::map<std::string, std::string> variables;
  std::uint64_t fileSizeLimit = 0;  // bytes; 0: none
};

class HostTest : public ::testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;

  std::string path(const std::string& name) const { return (folder_ / name).string(); }
  /// Runs the program in the test's folder.
  Outcome run(const std::vector<std::string>& arguments, const Environment& environment = {}) const;
  /// The same, with the arguments that blanks part.
  Outcome run(const std::string& line, const Environment& environment = {}) const;
  /// The same, expecting success and silence on stderr.
  void runWell(const std::string& line) const;
  /// The same, expecting the exit code and one line on stderr, in which `reason` occurs.
  void runBadly(int code, const std::string& reason, const std::string& line,
                const Environment& environment = {}) const;
  /// The same, expecting success.
  void runTelling(const std::string& reason, const std::string& line) const {
    runBadly(0, reason, line);
  }
  /// Names in the folder, sorted: shows what was left behind.
  Names files(const std::string& subfolder = "") const;

  void write(const std::string& name, const std::string& text) const;
  std::string bytesOf(const std::string& name) const;
  /// The format follows from the name, options in brackets behind it: "a.jpg[Q=60]".
  void save(const VImage& image, const std::string& name) const;
  VImage open(const std::string& name) const;
  /// What kExif lists, the size, XMP and, where the format can hold it, IPTC.
  void addMetadata(const std::string& name) const;
  std::unique_ptr<Exiv2::Image> metadataOf(const std::string& name) const;

  fs::path folder_;
};

/// Rounded to `depth` 8 or 16. Interpretation by bands: 1, 2 grey, 3, 4 RGB.
VImage picture(const VImage& samples, int depth);
/// A picture with gradients, texture and saturated corners; every band another function of the
/// place.
VImage pattern(int width, int height, int bands, int depth);

/// Of addMetadata(): camera, orientation, place and a maker note (Nikon, four tags).
inline constexpr std::pair<const char*, const char*> kExif[] = {
    {"Exif.Image.Make", "NIKON CORPORATION"},
    {"Exif.Image.Model", "NIKON D70"},
    {"Exif.Image.Orientation", "6"},
    {"Exif.Photo.DateTimeOriginal", "2024:05:06 07:08:09"},
    {"Exif.GPSInfo.GPSLatitudeRef", "N"},
    {"Exif.GPSInfo.GPSLatitude", "51/1 3/1 4/1"},
    {"Exif.Nikon3.Version", "48 50 49 48"},
    {"Exif.Nikon3.Quality", "FINE"},
    {"Exif.Nikon3.SerialNumber", "NO= 12345678"},
    {"Exif.Nikon3.ShutterCount", "4711"}};

/// The ICC profile; empty: none.
std::string profileOf(const VImage& image);

/// The largest difference of two images of one shape; fails the test where the shapes differ.
double largestDifference(const VImage& a, const VImage& b);

/// In decibels.
double psnr(const VImage& a, const VImage& b, double top = 255);

}  // namespace vx::host_test
