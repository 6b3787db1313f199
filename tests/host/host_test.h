// The frame of the tests of the command-line host: a folder of its own per test, pictures made on
// the spot, and the built program run as a user runs it.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <exiv2/exiv2.hpp>
#include <filesystem>
#include <map>
#include <memory>
#include <string>
#include <vector>
#include <vips/vips8>

namespace vx::host_test {

namespace fs = std::filesystem;

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
  /// The same, expecting success and silence on stderr.
  void runWell(const std::vector<std::string>& arguments) const;
  /// The same, expecting the exit code and one line on stderr, in which `reason` occurs.
  void runBadly(int code, const std::string& reason, const std::vector<std::string>& arguments,
                const Environment& environment = {}) const;
  /// The same, expecting success.
  void runTelling(const std::string& reason, const std::vector<std::string>& arguments) const {
    runBadly(0, reason, arguments);
  }
  void write(const std::string& name, const std::string& text) const;
  /// Names in the folder, sorted: shows what was left behind.
  std::vector<std::string> files(const std::string& subfolder = "") const;

  fs::path folder_;
};

/// A picture with gradients, texture and saturated corners; every band another function of the
/// place. `depth` 8 or 16. Interpretation by bands: 1, 2 grey, 3, 4 RGB.
vips::VImage pattern(int width, int height, int bands, int depth);

/// Camera, orientation, place and a maker note (Nikon, four tags).
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

/// These, the size, XMP and, where the format can hold it, IPTC.
void addMetadata(const std::string& path, int width, int height);
std::unique_ptr<Exiv2::Image> metadataOf(const std::string& path);

std::vector<std::uint8_t> bytesOf(const std::string& path);
vips::VImage open(const std::string& path);
/// The largest difference of two images of one shape; fails the test where the shapes differ.
double largestDifference(const vips::VImage& a, const vips::VImage& b);

/// In decibels, the top being that of `a`'s format.
double psnr(const vips::VImage& a, const vips::VImage& b);

}  // namespace vx::host_test
