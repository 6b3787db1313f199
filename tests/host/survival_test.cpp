// The page of what survives, made by doing it: docs/what-survives.md must be what this finds.
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <sstream>

#include "hosts/cli/pictures/png_chunks.h"
#include "tests/host/host_test.h"
#include "tests/host/picture_files.h"

namespace vx::host_test {
namespace {

using std::string_literals::operator""s;

constexpr double kPerMillimetre = 300 / 25.4;
const std::string kText = "A text of its own", kOther = "Another text, d'apr\xc3\xa8s";

const char* const kPage = R"(# What survives

What a file holds beside its pixels, and whether a result has it too. Source down, result across. This page is made
by a test, which treats a picture with all of it in every pair of JPEG, PNG, TIFF and WebP and looks at the results; the
test fails when the page says something else. To write it anew:
`VX_WRITE_PAGES=1 build/release/host_tests --gtest_filter='Survival.*'`.

- **yes**: it is in the result. **no**: it is left out, and a note tells it. **-**: the source has no place for it.
- *Place* is where the picture was taken (GPS). *Large XMP* is more than 64 kB, which a JPEG splits over several
  segments. *Texts* are the comment of a JPEG, the texts of a PNG, and the description tag of EXIF in the others.
  **part**: of the texts of a PNG, the Description becomes the comment or the description tag.
- *Depth* is 16 bits per sample; JPEG and WebP hold 8. *Transparency* needs `--background` where the result has none.

)";

const char* const kEnd = R"(
Beyond the table:

- The video of a motion photo stays with a JPEG that becomes a JPEG, and its XMP says where it is. In other formats, and
  with `--strip` or `--strip-location`, it is left out.
- Gain maps (Ultra HDR and the like) fit only the pixels that they were made for, and are left out with what claims
  them. So are further pictures in the file, unknown data behind the picture and the layers that an image editor keeps
  in a TIFF.
- All that is told in a note. When the result would replace its source, the loss is refused instead: the source stays
  as it is. `--drop-extras` allows it.
- Thumbnails and previews show the picture as it was before; they are left out.
- Colours mean the same: `gAMA` and `cHRM` of a PNG stay in a PNG and become an ICC profile elsewhere; so does `cICP`,
  and where no profile can state it (PQ, HLG) only PNG is written. Grey pixels have a profile for grey, RGB pixels one
  for RGB.
)";

class Survival : public HostTest {
 protected:
  // A picture with everything that the format can hold.
  void makeSource(const std::string& format) {
    const bool deep = format == "png" || format == "tif", alpha = format != "jpg";
    VImage image = pattern(60, 40, alpha ? 4 : 3, deep ? 16 : 8);
    profile_ = profileOf(
        pattern(8, 8, 3, 8).icc_transform("p3", VImage::option()->set("input_profile", "srgb")));
    vips_image_set_blob_copy(image.get_image(), VIPS_META_ICC_NAME, profile_.data(),
                             profile_.size());
    const std::string name = "in." + format;
    save(image.copy(VImage::option()->set("xres", kPerMillimetre)->set("yres", kPerMillimetre)),
         name + (format == "webp" ? "[lossless]" : ""));
    addMetadata(name);
    const auto file = metadataOf(name);
    Exiv2::ExifData& exif = file->exifData();
    if (format == "webp") {
      for (const char* key : {"Exif.Image.XResolution", "Exif.Image.YResolution"})
        exif[key] = Exiv2::URational(300, 1);
      exif["Exif.Image.ResolutionUnit"] = std::uint16_t{2};
    }
    if (format == "tif" || format == "webp") exif["Exif.Image.ImageDescription"] = kText;
    if (format == "jpg") file->setComment(kText);
    const std::string large(100000, 'd');
    if (format != "jpg") file->xmpData()["Xmp.photoshop.History"] = large;
    if (format == "jpg") file->xmpData()["Xmp.xmpNote.HasExtendedXMP"] = digestOf(history(large));
    file->writeMetadata();
    if (format == "jpg")
      write(name, withSegments(bytesOf(name), jfif(300) + extensionSegments(history(large))));
    if (format == "png")
      write(name, withChunks(bytesOf(name),
                             cli::pngChunk("tEXt", "Description\0"s + kText) +
                                 cli::pngChunk("iTXt", "Title\0\0\0fr\0Titre\0"s + kOther)));
  }

  static std::string history(const std::string& text) {
    return xmpPacket("photoshop:History='" + text + "'");
  }

  bool holdsLargeXmp(const std::string& name) const {
    const std::string large(100000, 'd');
    if (name.ends_with("jpg")) return extensionOf(bytesOf(name)).find(large) != std::string::npos;
    return metadataOf(name)->xmpData()["Xmp.photoshop.History"].toString() == large;
  }

  bool holdsResolution(const std::string& name) const {
    const auto near = [](double perInch) { return std::abs(perInch - 300) < 0.01; };
    if (name.ends_with("jpg")) return bytesOf(name).substr(13, 5) == "\1\1\x2c\1\x2c"s;
    if (name.ends_with("png")) return near(open(name).xres() * 25.4);
    const auto image = metadataOf(name);
    Exiv2::ExifData& exif = image->exifData();
    const double value = exif["Exif.Image.XResolution"].toFloat();
    return near(exif["Exif.Image.ResolutionUnit"].toLong() == 3 ? value * 2.54 : value);
  }

  std::string textsOf(const std::string& name, bool both) const {
    const std::string bytes = bytesOf(name);
    const bool one = bytes.find(kText) != std::string::npos;
    const bool other = both && bytes.find(kOther) != std::string::npos;
    if (!both) return one ? "yes" : "no";
    return one && other ? "yes" : one || other ? "part" : "no";
  }

  using Row = std::vector<std::pair<const char*, std::string>>;

  // "-" where the source cannot hold it: `in` is then the source's own row.
  Row look(const std::string& name, bool bothTexts) const {
    const auto word = [](bool there) { return there ? "yes"s : "no"s; };
    const auto file = metadataOf(name);
    Exiv2::ExifData& exif = file->exifData();
    const auto has = [&exif](const char* key, const char* value) {
      const auto tag = exif.findKey(Exiv2::ExifKey(key));
      return tag != exif.end() && tag->toString() == value;
    };
    const VImage image = open(name);
    return {
        {"ICC profile", word(profileOf(image) == profile_)},
        {"EXIF", word(has("Exif.Photo.DateTimeOriginal", "2024:05:06 07:08:09"))},
        {"Maker note", word(has("Exif.Nikon3.ShutterCount", "4711"))},
        {"Place", word(has("Exif.GPSInfo.GPSLatitude", "51/1 3/1 4/1"))},
        {"Orientation", word(has("Exif.Image.Orientation", "6"))},
        {"XMP", word(file->xmpData()["Xmp.dc.title"].toString() == "lang=\"x-default\" A title")},
        {"Large XMP", word(holdsLargeXmp(name))},
        {"IPTC", word(file->iptcData()["Iptc.Application2.Caption"].toString() == "A caption")},
        {"Resolution", word(holdsResolution(name))},
        {"Texts", textsOf(name, bothTexts)},
        {"Depth", word(image.format() == VIPS_FORMAT_USHORT)},
        {"Transparency", word(image.bands() == 4)}};
  }

  std::string profile_;
};

TEST_F(Survival, ThePageSaysWhatIsSo) {
  const Names formats{"jpg", "png", "tif", "webp"};
  const std::map<std::string, std::string> names{
      {"jpg", "JPEG"}, {"png", "PNG"}, {"tif", "TIFF"}, {"webp", "WebP"}};
  std::string page = kPage;
  for (const std::string& from : formats) {
    makeSource(from);
    const Row source = look("in." + from, from == "png");
    std::vector<Row> rows;
    page += "## From " + names.at(from) + "\n\n| |";
    for (const std::string& to : formats) {
      const Outcome outcome = run("adjust in." + from + " -o out." + to + " --force --hue-shift 0" +
                                  (to == "jpg" ? " --background ffffff" : ""));
      ASSERT_EQ(outcome.code, 0) << outcome.err;
      rows.push_back(look("out." + to, from == "png"));
      page += " to " + names.at(to) + " |";
    }
    page += "\n|---|---|---|---|---|\n";
    for (std::size_t i = 0; i < source.size(); ++i) {
      page += std::string("| ") + source[i].first + " |";
      for (const Row& row : rows)
        page += " " + (source[i].second == "yes" ? row[i].second : "-") + " |";
      page += "\n";
    }
    page += "\n";
  }
  page += std::string(kEnd).substr(1);
  if (std::getenv("VX_WRITE_PAGES") != nullptr) std::ofstream(VX_SURVIVAL_PAGE) << page;
  std::ifstream file(VX_SURVIVAL_PAGE);
  std::ostringstream committed;
  committed << file.rdbuf();
  EXPECT_EQ(committed.str(), page) << "VX_WRITE_PAGES=1 writes it anew";
}

}  // namespace
}  // namespace vx::host_test
