#include "hosts/cli/pictures/parts/resolution.h"

#include <algorithm>
#include <cmath>
#include <cstdio>

#include "hosts/cli/pictures/parts/tiff_numbers.h"

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;

constexpr double kMetresPerInch = 0.0254;
constexpr const char* kX = "Exif.Image.XResolution";
constexpr const char* kY = "Exif.Image.YResolution";
constexpr const char* kUnit = "Exif.Image.ResolutionUnit";
constexpr std::size_t kJfifSize = 12;      // up to the density
constexpr Resolution kSquare{1, 1, true};  // what says nothing

bool isJfif(const JpegSegment& segment) {
  return segment.is(marker::kApp0, "JFIF\0"sv) && segment.payload.size() >= kJfifSize;
}

bool usable(double value) { return std::isfinite(value) && value > 0 && value < 1e9; }

std::optional<Resolution> checked(double x, double y, bool shapeOnly) {
  if (!usable(x) || !usable(y) || (shapeOnly && x == y)) return std::nullopt;
  return Resolution{x, y, shapeOnly};
}

double positive(const Exiv2::ExifData& exif, const char* key) {
  const auto tag = exif.findKey(Exiv2::ExifKey(key));
  if (tag == exif.end() || tag->count() == 0) return 0;
  const Exiv2::Rational value = tag->toRational();
  return value.second == 0 ? 0 : static_cast<double>(value.first) / value.second;
}

// A whole number within what rounding to pixels per metre does.
bool nearlyWhole(double value) {
  return value > 0.5 && std::abs(value - std::round(value)) < 0.015;
}

Exiv2::URational rational(double value) {
  if (nearlyWhole(value)) return {static_cast<std::uint32_t>(std::lround(value)), 1};
  const double scale = value < 4e5 ? 10000 : 1;
  return {static_cast<std::uint32_t>(std::min(value * scale + 0.5, 4e9)),
          static_cast<std::uint32_t>(scale)};
}

// As JFIF states it: a shape (0), per inch (1) or per centimetre (2).
struct Density {
  int unit;
  std::uint32_t x, y;
};

Density densityOf(const Resolution& r) {
  constexpr double kMost = 65535;
  const auto scaled = [&r](int unit, double scale) {
    const auto whole = [scale](double value) {
      return static_cast<std::uint32_t>(std::max(1.0, std::round(value * scale)));
    };
    return Density{unit, whole(r.x), whole(r.y)};
  };
  const double larger = std::max(r.x, r.y);
  if (r.shapeOnly) {
    const bool exact = larger <= kMost && nearlyWhole(r.x) && nearlyWhole(r.y);
    return scaled(0, exact ? 1 : kMost / larger);
  }
  const auto whole = [&r](double scale) {
    return nearlyWhole(r.x * scale) && nearlyWhole(r.y * scale);
  };
  constexpr double kMetresPerCentimetre = 0.01;
  if (larger * kMetresPerInch > kMost) return {0, 1, 1};  // says nothing
  if (whole(kMetresPerCentimetre) && !whole(kMetresPerInch)) return scaled(2, kMetresPerCentimetre);
  return scaled(1, kMetresPerInch);
}

}  // namespace

std::optional<Resolution> resolutionOf(const Exiv2::ExifData& exif) {
  const double x = positive(exif, kX), y = positive(exif, kY);
  const auto unit = exif.findKey(Exiv2::ExifKey(kUnit));
  const long number = unit == exif.end() || unit->count() == 0 ? 2 : unit->toLong();
  if (number == 1) return checked(x, y, true);
  const double perMetre = number == 3 ? 100 : 1 / kMetresPerInch;
  return checked(x * perMetre, y * perMetre, false);
}

void setResolution(Exiv2::ExifData& exif, const std::optional<Resolution>& resolution) {
  const Resolution r = resolution.value_or(kSquare);
  const double scale = r.shapeOnly ? 1 : kMetresPerInch;
  exif[kX] = rational(r.x * scale);
  exif[kY] = rational(r.y * scale);
  exif[kUnit] = static_cast<std::uint16_t>(r.shapeOnly ? 1 : 2);
}

std::optional<Resolution> resolutionOf(const JpegLayout& layout) {
  if (layout.segments.empty() || !isJfif(layout.segments.front())) return std::nullopt;
  const std::uint8_t* header = layout.segments.front().payload.data();
  const double scale = header[7] == 1 ? 1 / kMetresPerInch : header[7] == 2 ? 100 : 1;
  return checked(big16(header + 8) * scale, big16(header + 10) * scale, scale == 1);
}

void setJfifResolution(std::vector<std::uint8_t>& file,
                       const std::optional<Resolution>& resolution) {
  const Density density = densityOf(resolution.value_or(kSquare));
  std::string header("JFIF\0\1\1"sv);
  header += static_cast<char>(density.unit);
  appendBig16(header, density.x);
  appendBig16(header, density.y);
  header.append(2, '\0');  // no thumbnail
  const JpegLayout layout = jpegLayout(file);
  const std::string segment = jpegSegment(marker::kApp0, header);
  auto start = file.begin() + std::min<std::ptrdiff_t>(2, std::ssize(file));
  if (!layout.segments.empty() && isJfif(layout.segments.front()))
    start = file.erase(start, start + 4 + std::ssize(layout.segments.front().payload));
  file.insert(start, segment.begin(), segment.end());
}

void setTiffResolution(std::vector<std::uint8_t>& file,
                       const std::optional<Resolution>& resolution) {
  constexpr std::size_t kXTag = 282, kYTag = 283, kUnitTag = 296, kShort = 3, kRational = 5;
  const TiffNumbers tiff(file);
  const Resolution r = resolution.value_or(kSquare);
  const double scale = r.shapeOnly ? 1 : kMetresPerInch;
  const auto put = [&](std::size_t at, std::uint64_t value, std::size_t size) {
    if (at > file.size() || file.size() - at < size) return;
    for (std::size_t i = 0; i < size; ++i)
      file[at + i] = static_cast<std::uint8_t>(value >> 8 * tiff.power(i, size));
  };
  const bool big = tiff.number(2, 2) == 43;
  const std::size_t word = big ? 8 : 4, head = big ? 8 : 2, entry = big ? 20 : 12;
  const std::size_t directory = tiff.number(big ? 8 : 4, word);
  const std::size_t count = std::min<std::size_t>(tiff.number(directory, head), 65535);
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t at = directory + head + entry * i, value = at + 4 + word;
    const std::size_t tag = tiff.number(at, 2), type = tiff.number(at + 2, 2);
    if (tag == kUnitTag && type == kShort) put(value, r.shapeOnly ? 1 : 2, 2);
    if ((tag != kXTag && tag != kYTag) || type != kRational) continue;
    const std::size_t place = big ? value : tiff.number(value, 4);
    const Exiv2::URational number = rational((tag == kXTag ? r.x : r.y) * scale);
    put(place, number.first, 4);
    put(place + 4, number.second, 4);
  }
}

std::optional<Resolution> resolutionOfPhys(std::string_view phys) {
  if (phys.size() != 9) return std::nullopt;
  const std::uint8_t* bytes = bytesOf(phys).data();
  return checked(big32(bytes), big32(bytes + 4), bytes[8] != 1);
}

std::string physOf(const Resolution& resolution) {
  const double most = std::max(resolution.x, resolution.y);
  // Shapes may be fractions.
  const double scale = resolution.shapeOnly && most < 65536 ? 10000 : 1;
  std::string phys;
  for (const double value : {resolution.x, resolution.y})
    appendBig32(phys, static_cast<std::uint32_t>(std::max(1.0, std::round(value * scale))));
  phys += resolution.shapeOnly ? '\0' : '\1';
  return phys;
}

std::string inWords(const Resolution& resolution) {
  const double scale = resolution.shapeOnly ? 1 : kMetresPerInch;
  const double x = std::round(resolution.x * scale * 10) / 10;
  const double y = std::round(resolution.y * scale * 10) / 10;
  char text[80];
  if (resolution.shapeOnly)
    std::snprintf(text, sizeof text, "pixels %g:%g", x, y);
  else if (x == y)
    std::snprintf(text, sizeof text, "%g dpi", x);
  else
    std::snprintf(text, sizeof text, "%g x %g dpi", x, y);
  return text;
}

}  // namespace vx::cli
