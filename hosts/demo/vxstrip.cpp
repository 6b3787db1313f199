// vxstrip OUT.png BEFORE AFTER...: the same part of each picture at 100 %, side by side, as people
// see it (upright, in sRGB).
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <vector>
#include <vips/vips8>

namespace {

using vips::VImage;

constexpr int kPanelWidth = 420;
constexpr int kPanelHeight = 560;
constexpr int kGap = 6;

VImage upright(const char* path) {
  VImage image = VImage::new_from_file(path).autorot();
  if (image.get_typeof(VIPS_META_ICC_NAME) != 0)
    image = image.icc_transform("srgb", VImage::option()->set("embedded", true));
  image = image.colourspace(VIPS_INTERPRETATION_sRGB);
  return image.has_alpha() ? image.flatten() : image;
}

struct Place {
  int left, top;
};

// The panel-sized part with the most going on: that of the strongest local contrast, looked for in
// steps of half a panel.
Place busiest(const VImage& image, int width, int height) {
  const VImage grey = image.colourspace(VIPS_INTERPRETATION_B_W).extract_band(0).copy_memory();
  Place best{0, 0};
  double most = -1;
  for (int top = 0; top == 0 || top + height <= image.height(); top += std::max(1, height / 2)) {
    for (int left = 0; left == 0 || left + width <= image.width(); left += std::max(1, width / 2)) {
      const double contrast = grey.crop(left, top, width, height).sobel().avg();
      if (contrast > most) best = {left, top};
      most = std::max(most, contrast);
    }
  }
  return best;
}

void draw(const char* out, const std::vector<const char*>& paths) {
  std::vector<VImage> panels;
  Place place{0, 0};
  int width = 0, height = 0;
  for (const char* path : paths) {
    const VImage image = upright(path);
    if (panels.empty()) {
      width = std::min(kPanelWidth, image.width());
      height = std::min(kPanelHeight, image.height());
      place = busiest(image, width, height);
    }
    panels.push_back(image.crop(place.left, place.top, width, height).copy_memory());
  }
  VImage::arrayjoin(panels, VImage::option()
                                ->set("across", static_cast<int>(panels.size()))
                                ->set("shim", kGap)
                                ->set("background", std::vector<double>{255, 255, 255}))
      .pngsave(out, VImage::option()->set("strip", true));
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fputs("usage: vxstrip OUT.png BEFORE AFTER...\n", stderr);
    return 2;
  }
  if (vips_init(argv[0]) != 0) return 1;
  try {
    draw(argv[1], {argv + 2, argv + argc});
  } catch (const vips::VError& error) {
    std::fprintf(stderr, "vxstrip: %s\n", error.what());
    return 1;
  }
  return 0;
}
