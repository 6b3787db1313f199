#include "bench/read_picture.h"

#include <vips/vips8>

RgbPicture readPicture(const std::string& path, int shrink) {
  vips::VImage image = vips::VImage::new_from_file(path.c_str());
  image = image.colourspace(VIPS_INTERPRETATION_sRGB);
  if (image.has_alpha()) image = image.flatten();
  if (shrink > 1) image = image.shrink(shrink, shrink);
  image = image.cast(VIPS_FORMAT_UCHAR);
  // The library works on even sizes.
  RgbPicture picture{image.width() & ~1, image.height() & ~1, {}};
  image = image.crop(0, 0, picture.width, picture.height);
  std::size_t bytes = 0;
  void* memory = image.write_to_memory(&bytes);
  const auto* samples = static_cast<std::uint8_t*>(memory);
  picture.samples.assign(samples, samples + bytes);
  g_free(memory);
  return picture;
}
