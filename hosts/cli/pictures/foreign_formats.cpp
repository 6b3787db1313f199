#include "hosts/cli/pictures/foreign_formats.h"

#include <algorithm>
#include <array>
#include <cctype>

namespace vx::cli {
namespace {

using std::string_view_literals::operator""sv;

constexpr const char* kRaw =
    "is a raw file of a camera: develop it first, and give the TIFF or JPEG that comes out";

struct Magic {
  std::size_t at;
  std::string_view bytes;
};

constexpr std::array kRawMagics{Magic{0, "FUJIFILMCCD-RAW"sv},
                                Magic{4, "ftypcrx "sv},
                                Magic{8, "CR\2\0"sv},
                                Magic{0, "IIRO"sv},
                                Magic{0, "IIRS"sv},
                                Magic{0, "MMOR"sv},
                                Magic{0, "IIU\0"sv},
                                Magic{0, "FOVb"sv},
                                Magic{6, "HEAPCCDR"sv},
                                Magic{0, "\0MRM"sv}};

// Of raw files that begin like a TIFF.
constexpr std::array kRawExtensions{".3fr"sv, ".arw"sv, ".cr2"sv, ".dcr"sv, ".dng"sv,
                                    ".erf"sv, ".fff"sv, ".iiq"sv, ".k25"sv, ".kdc"sv,
                                    ".mef"sv, ".mos"sv, ".nef"sv, ".nrw"sv, ".pef"sv,
                                    ".rwl"sv, ".sr2"sv, ".srf"sv, ".srw"sv};

struct Known {
  Magic magic;
  const char* name;
};

constexpr std::array kOthers{Known{{0, "GIF8"sv}, "a GIF picture"},
                             Known{{0, "BM"sv}, "a BMP picture"},
                             Known{{0, "8BPS"sv}, "a Photoshop document"},
                             Known{{4, "jP  \r\n\x87\n"sv}, "a JPEG 2000 picture"},
                             Known{{0, "\xff\x4f\xff\x51"sv}, "a JPEG 2000 picture"},
                             Known{{0, "v/1\1"sv}, "an OpenEXR picture"},
                             Known{{0, "#?RADIANCE"sv}, "a Radiance picture"},
                             Known{{0, "gimp xcf"sv}, "an XCF document"},
                             Known{{0, "%PDF"sv}, "a PDF document"},
                             Known{{0, "%!PS"sv}, "a PostScript document"},
                             Known{{0, "<svg"sv}, "an SVG drawing"},
                             Known{{0, "\0\0\1\0"sv}, "an icon"},
                             Known{{0, "P5"sv}, "a PGM picture"},
                             Known{{0, "P6"sv}, "a PPM picture"},
                             Known{{4, "ftyp"sv}, "a video or a kind of HEIF"}};

bool matches(std::string_view head, const Magic& magic) {
  return head.size() >= magic.at && head.substr(magic.at).starts_with(magic.bytes);
}

bool hasRawExtension(const std::filesystem::path& path) {
  std::string extension = path.extension().string();
  for (char& c : extension) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return std::find(kRawExtensions.begin(), kRawExtensions.end(), extension) != kRawExtensions.end();
}

}  // namespace

std::string foreignFormat(const std::filesystem::path& path, std::string_view head) {
  for (const Magic& magic : kRawMagics)
    if (matches(head, magic)) return kRaw;
  const bool tiff = head.starts_with("II*\0"sv) || head.starts_with("MM\0*"sv);
  if (tiff) return hasRawExtension(path) ? kRaw : "";
  for (const Known& known : kOthers)
    if (matches(head, known.magic))
      return std::string("is ") + known.name + ", which is not read here";
  return "";
}

}  // namespace vx::cli
