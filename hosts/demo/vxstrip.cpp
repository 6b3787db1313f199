// vxstrip [--noise SIGMA] [--part LEFT,TOP,WIDTH,HEIGHT[,ZOOM]] OUT BEFORE AFTER...: the same part
// of each picture at 100 % or ZOOM times as large, side by side, as people see it (upright, in
// sRGB); without --part the one with the most going on. OUT is PNG, or WebP by its extension.
// --noise adds Gaussian noise of SIGMA steps of 255, the same in every run: the freely licensed
// photographs at hand have none.
#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <random>
#include <string>
#include <string_view>
#include <vector>
#include <vips/vips8>

namespace {

using vips::VImage;

constexpr int kPanelWidth = 420;
constexpr int kPanelHeight = 560;
constexpr int kGap = 6;
constexpr int kWebpQuality = 80;

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

struct Part {
  Place place{-1, -1};  // to be looked for
  int width = kPanelWidth, height = kPanelHeight;
  int zoom = 1;
  double noise = 0;
};

VImage noisy(const VImage& image, double sigma) {
  std::mt19937 random(1);
  std::normal_distribution<float> noise(0, static_cast<float>(sigma));
  std::vector<float> samples(static_cast<std::size_t>(image.width()) *
                             static_cast<std::size_t>(image.height() * image.bands()));
  for (float& sample : samples) sample = noise(random);
  const VImage added =
      VImage::new_from_memory(samples.data(), samples.size() * sizeof(float), image.width(),
                              image.height(), image.bands(), VIPS_FORMAT_FLOAT);
  return (image + added).rint().cast(VIPS_FORMAT_UCHAR).copy_memory();
}

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

void draw(const std::string& out, const std::vector<const char*>& paths, Part part) {
  std::vector<VImage> panels;
  for (const char* path : paths) {
    const VImage image = upright(path);
    if (part.place.left < 0) {
      part.width = std::min(part.width, image.width());
      part.height = std::min(part.height, image.height());
      part.place = busiest(image, part.width, part.height);
    }
    VImage panel = image.crop(part.place.left, part.place.top, part.width, part.height);
    if (part.noise > 0) panel = noisy(panel, part.noise);
    panels.push_back(panel.zoom(part.zoom, part.zoom).copy_memory());
  }
  const VImage strip =
      VImage::arrayjoin(panels, VImage::option()
                                    ->set("across", static_cast<int>(panels.size()))
                                    ->set("shim", kGap)
                                    ->set("background", std::vector<double>{255, 255, 255}));
  auto* options = VImage::option()->set("strip", true);
  if (out.ends_with(".webp")) {
    strip.webpsave(out.c_str(), options->set("Q", kWebpQuality)->set("effort", 6));
  } else {
    strip.pngsave(out.c_str(), options);
  }
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<const char*> arguments(argv + 1, argv + argc);
  Part part;
  bool usage = false;
  if (arguments.size() > 2 && std::string_view(arguments[0]) == "--noise") {
    part.noise = std::atof(arguments[1]);
    arguments.erase(arguments.begin(), arguments.begin() + 2);
  }
  if (arguments.size() > 2 && std::string_view(arguments[0]) == "--part") {
    usage = std::sscanf(arguments[1], "%d,%d,%d,%d,%d", &part.place.left, &part.place.top,
                        &part.width, &part.height, &part.zoom) < 4;
    arguments.erase(arguments.begin(), arguments.begin() + 2);
  }
  if (usage || arguments.size() < 2) {
    std::fputs(
        "usage: vxstrip [--noise SIGMA] [--part LEFT,TOP,WIDTH,HEIGHT[,ZOOM]] OUT BEFORE "
        "AFTER...\n",
        stderr);
    return 2;
  }
  if (vips_init(argv[0]) != 0) return 1;
  try {
    draw(arguments[0], {arguments.begin() + 1, arguments.end()}, part);
  } catch (const vips::VError& error) {
    std::fprintf(stderr, "vxstrip: %s\n", error.what());
    return 1;
  }
  return 0;
}
