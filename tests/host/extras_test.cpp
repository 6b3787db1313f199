// What phones put into a JPEG beside the picture.
#include "hosts/cli/pictures/parts/extended_xmp.h"
#include "hosts/cli/pictures/parts/jpeg_extras.h"
#include "hosts/cli/pictures/parts/motion_photo.h"
#include "tests/host/host_test.h"
#include "tests/host/picture_files.h"

namespace vx::host_test {
namespace {

using std::string_literals::operator""s;

class Extras : public HostTest {
 protected:
  void SetUp() override {
    HostTest::SetUp();
    save(pattern(64, 48, 3, 8), "plain.jpg[strip]");
    save(pattern(16, 12, 3, 8), "small.jpg[strip]");
    plain_ = bytesOf("plain.jpg");
    gainMap_ = withSegments(bytesOf("small.jpg"), xmpSegment(xmpPacket("hdrgm:Version='1.0'")));
  }

  /// As a phone with both writes it.
  std::string phonePicture() const {
    const std::string claims = xmpPacket(
        "hdrgm:Version='1.0' Cam:MotionPhoto='1' Cam:MotionPhotoVersion='1' "
        "photoshop:Credit='somebody'",
        directory({{"Primary", "image/jpeg", 0},
                   {"GainMap", "image/jpeg", gainMap_.size()},
                   {"MotionPhoto", "video/mp4", video_.size()}}));
    return withSegments(plain_, xmpSegment(claims)) + gainMap_ + video_;
  }

  std::string behindPicture(const std::string& name) const {
    const std::string bytes = bytesOf(name);
    return bytes.substr(cli::jpegLayout(cli::bytesOf(bytes)).end);
  }

  /// The XMP of a file, with the prefixes of the first file that this process read.
  std::map<std::string, std::string> xmpOf(const std::string& name) const {
    std::map<std::string, std::string> all;
    const auto image = metadataOf(name);
    for (const Exiv2::Xmpdatum& datum : image->xmpData()) all[datum.key()] = datum.toString();
    return all;
  }

  std::string plain_, gainMap_, video_ = video(5000);
};

TEST_F(Extras, TheVideoOfAMotionPhotoGoesAlongAndIsFound) {
  write("in.jpg", phonePicture());
  runTelling("left out: a gain map\n", "adjust in.jpg -o out.jpg --hue-shift 0");
  EXPECT_TRUE(behindPicture("out.jpg") == video_);
  auto xmp = xmpOf("out.jpg");
  EXPECT_EQ(xmp["Xmp.Box.Directory[2]/Box:Item/Item:Semantic"], "MotionPhoto");
  EXPECT_EQ(xmp["Xmp.Box.Directory[2]/Box:Item/Item:Length"], std::to_string(video_.size()));
  EXPECT_EQ(xmp["Xmp.Box.Directory[1]/Box:Item/Item:Semantic"], "Primary");
  EXPECT_FALSE(xmp.contains("Xmp.Box.Directory[3]/Box:Item/Item:Semantic"));
  EXPECT_EQ(xmp["Xmp.Cam.MotionPhoto"], "1");
  EXPECT_EQ(xmp["Xmp.photoshop.Credit"], "somebody");
  EXPECT_FALSE(xmp.contains("Xmp.hdrgm.Version"));
  // What came out is whole: nothing more to lose in its place.
  runWell("adjust out.jpg -o out.jpg --force --hue-shift 0");
  EXPECT_TRUE(behindPicture("out.jpg") == video_);

  // The older form counts from the end of the file, with or without anything between.
  write("in.jpg", withSegments(plain_, xmpSegment(xmpPacket("Cam:MicroVideo='1' "
                                                            "Cam:MicroVideoOffset='5000'"))) +
                      std::string(40, '\0') + video_);
  runWell("adjust in.jpg -o out.jpg --force --hue-shift 0");
  EXPECT_TRUE(behindPicture("out.jpg") == video_);
  EXPECT_EQ(xmpOf("out.jpg")["Xmp.Cam.MicroVideoOffset"], "5000");
}

TEST_F(Extras, WithoutTheDataTheClaimGoesToo) {
  write("in.jpg", phonePicture());
  for (const std::string options :
       {"out.png", "out.tif", "out.webp", "home.jpg --strip-location"}) {
    SCOPED_TRACE(options);
    const std::string name = options.substr(0, options.find(' '));
    runTelling("a gain map and the video", "adjust in.jpg --hue-shift 0 -o " + options);
    const auto xmp = xmpOf(name);
    EXPECT_TRUE(xmp.contains("Xmp.photoshop.Credit"));
    for (const auto& [key, value] : xmp)
      EXPECT_TRUE(key.find("Cam") == key.npos && key.find("Box") == key.npos) << key;
    EXPECT_EQ(bytesOf(name).find("ftypmp42"), std::string::npos);
  }
  // As programs leave it behind that cut a file at the end of the picture.
  write("cut.jpg", phonePicture().substr(0, phonePicture().size() - gainMap_.size() - 5000));
  runTelling("it no longer does", "adjust cut.jpg -o cut.jpg --force --hue-shift 0");
  EXPECT_EQ(xmpOf("cut.jpg").size(), 1U);
}

TEST_F(Extras, LossInItsPlaceIsRefused) {
  const auto withList = [&](std::size_t type) {
    // The offsets count from behind the start of the picture, the segment's head and "MPF".
    const std::size_t list = 2 + 4 + 4, own = multiPicture({{}, {}}).size();
    return withSegments(
               plain_,
               multiPicture({{plain_.size() + own, 0, 0x030000},
                             {bytesOf("small.jpg").size(), plain_.size() + own - list, type}})) +
           bytesOf("small.jpg");
  };
  const std::pair<std::string, std::string> losses[] = {
      {phonePicture(), "a gain map"},
      {withList(0x020002), "1 further picture"},
      {plain_ + "something else behind the picture", "33 bytes behind the picture"},
      {withSegments(plain_,
                    xmpSegment(xmpPacket("xmpNote:HasExtendedXMP='" + std::string(32, 'A') + "'"))),
       "damaged extended XMP"}};
  for (const auto& [bytes, reason] : losses) {
    SCOPED_TRACE(reason);
    write("in.jpg", bytes);
    fs::create_symlink(path("in.jpg"), path("link.jpg"));
    for (const std::string name : {"in.jpg", "link.jpg"})
      runBadly(1, reason, "adjust in.jpg --force --hue-shift 0 -o " + name);
    EXPECT_TRUE(bytesOf("in.jpg") == bytes) << "must not be touched";
    runTelling(reason, "adjust in.jpg -o in.jpg --force --hue-shift 0 --drop-extras");
    EXPECT_FALSE(bytesOf("in.jpg") == bytes);
    fs::remove(path("link.jpg"));
  }
  // A preview of the picture is no loss; it is told.
  write("in.jpg", withList(0x010001));
  runTelling("left out: 1 preview", "adjust in.jpg -o in.jpg --force --hue-shift 0");
  const Outcome outcome = run("adjust in.jpg -o in.jpg --force --hue-shift 0.1 -v");
  EXPECT_NE(outcome.out.find("metadata  kept: none"), std::string::npos) << outcome.out;
}

TEST_F(Extras, TheReportTellsWhatWasThere) {
  write("in.jpg", phonePicture());
  const Outcome outcome = run("adjust in.jpg -o in.jpg --force --drop-extras --hue-shift 0 -v");
  EXPECT_NE(outcome.out.find("video 5000 bytes (before: "), std::string::npos) << outcome.out;
  EXPECT_NE(outcome.out.find("video 5000 bytes, gain map)"), std::string::npos) << outcome.out;
}

TEST_F(Extras, ExtendedXmpIsCarried) {
  const std::string large(150000, 'd');
  const std::string extension = xmpPacket("GDepth:Data='" + large + "'");
  write("in.jpg", withSegments(plain_, xmpSegment(xmpPacket("photoshop:Credit='somebody' "
                                                            "xmpNote:HasExtendedXMP='" +
                                                            digestOf(extension) + "'")) +
                                           extensionSegments(extension)));
  for (const std::string out : {"out.jpg", "out.png", "out.tif", "out.webp"})
    runWell("adjust in.jpg --hue-shift 0 -o " + out);
  EXPECT_NE(extensionOf(bytesOf("out.jpg")).find(large), std::string::npos);
  EXPECT_EQ(xmpOf("out.jpg")["Xmp.photoshop.Credit"], "somebody") << "short ones stay in front";
  for (const std::string out : {"out.png", "out.tif", "out.webp"}) {
    auto xmp = xmpOf(out);
    EXPECT_TRUE(xmp["Xmp.GDepth.Data"] == large) << out;
    EXPECT_FALSE(xmp.contains("Xmp.xmpNote.HasExtendedXMP")) << out;
    runWell("adjust --force --hue-shift 0 -o back.jpg " + out);
    EXPECT_NE(extensionOf(bytesOf("back.jpg")).find(large), std::string::npos) << out;
  }
}

TEST_F(Extras, ExifBeyondOneSegmentIsCarriedOrTold) {
  save(pattern(20, 20, 3, 8), "in.tif");
  const std::string large(100000, 'u');
  const auto image = metadataOf("in.tif");
  image->exifData()["Exif.Photo.UserComment"] = "charset=Ascii " + large;
  image->exifData()["Exif.Image.Model"] = "A camera";
  image->writeMetadata();
  runWell("adjust in.tif -o out.png --hue-shift 0");
  EXPECT_NE(metadataOf("out.png")->exifData()["Exif.Photo.UserComment"].toString().find(large),
            std::string::npos);
  for (const std::string out : {"out.jpg", "out.webp"}) {
    runTelling("EXIF beyond 64 kB (Exif.Photo.UserComment)",
               "adjust in.tif --hue-shift 0 -o " + out);
    EXPECT_EQ(metadataOf(out)->exifData()["Exif.Image.Model"].toString(), "A camera");
  }
  // Several segments, as some programs write them, stay several.
  const std::string block = chunkOf(bytesOf("out.png"), "eXIf");
  write("split.jpg", withSegments(plain_, segment(0xe1, "Exif\0\0"s + block.substr(0, 65000)) +
                                              segment(0xe1, "Exif\0\0"s + block.substr(65000))));
  runWell("adjust split.jpg -o split.jpg --force --hue-shift 0");
  runWell("adjust split.jpg -o back.png --hue-shift 0");
  EXPECT_NE(metadataOf("back.png")->exifData()["Exif.Photo.UserComment"].toString().find(large),
            std::string::npos);
}

// Offsets, lengths and numbers of files may be anything; the sanitizers watch.
TEST_F(Extras, HostileFilesGiveAnAnswer) {
  const std::string extension = xmpPacket("GDepth:Data='" + std::string(3000, 'd') + "'");
  const std::string file = withSegments(
      phonePicture(), multiPicture({{100, 0, 0}, {50, 3000, 0}, {50, 4000, 0x10001}}) +
                          extensionSegments(extension) + segment(0xe1, "Exif\0\0MM\0*"s) +
                          segment(0xe1, "Exif\0\0more"s));
  Exiv2::XmpData named;
  named["Xmp.xmpNote.HasExtendedXMP"] = digestOf(extension);
  unsigned state = 1;
  const auto random = [&state](std::size_t below) {
    state = state * 1664525 + 1013904223;
    return (state >> 8) % below;
  };
  const std::string numbers[] = {"0", "1", "4294967295", "99999999999", "-1", "5000", ""};
  for (int turn = 0; turn < 3000; ++turn) {
    std::string bytes = file;
    for (std::size_t i = 0; i <= random(4); ++i)
      bytes[random(2500)] = static_cast<char>(random(4) == 0 ? 0xff : random(256));
    if (turn % 3 == 0) bytes.resize(random(bytes.size()));
    Exiv2::XmpData claims;
    Exiv2::XmpParser::decode(claims, xmpPacket("Cam:MicroVideoOffset='" + numbers[random(7)] + "'",
                                               directory({{"Primary", "", 0},
                                                          {"GainMap", "", random(6000)},
                                                          {"MotionPhoto", "", random(2) * 5000}})));
    for (Exiv2::Xmpdatum& datum : claims)
      if (datum.key().ends_with("Length")) datum.setValue(numbers[random(7)]);
    const cli::Bytes view = cli::bytesOf(bytes);
    const cli::JpegLayout layout = cli::jpegLayout(view);
    ASSERT_LE(layout.end, bytes.size());
    const cli::JpegExtras extras = cli::jpegExtras(view, layout, claims);
    EXPECT_LE(extras.unknownBytes + extras.video.size(), bytes.size() - layout.end);
    Exiv2::XmpData reference = named;
    cli::mergeExtendedXmp(layout, reference);
    cli::joinedExif(layout);
    cli::settleClaims(claims, extras.video.size());
  }
}

}  // namespace
}  // namespace vx::host_test
