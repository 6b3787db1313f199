#pragma once

#include <algorithm>
#include <cstdint>
#include <functional>
#include <random>
#include <stdexcept>
#include <vector>

#include "jpeg/jpeg.h"
#include "tests/support/attached.h"

namespace vx::test {

/// Interleaved RGB without padding.
struct Rgb {
  Rgb(int w, int h)
      : width(w), height(h), bytes(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 3) {}
  std::uint8_t* row(int y) { return bytes.data() + std::ptrdiff_t{3} * width * y; }

  int width, height;
  std::vector<std::uint8_t> bytes;
};

enum class Scene { smooth, edges, noise };

/// Gradients; those with hard edges and mild noise; or noise alone.
inline Rgb makePicture(Scene scene, int width, int height, unsigned seed = 1) {
  Rgb picture(width, height);
  std::mt19937 rng(seed);
  for (int y = 0; y < height; ++y)
    for (int x = 0; x < width; ++x)
      for (int c = 0; c < 3; ++c) {
        const int random = static_cast<int>(rng() % 256);
        int value = random;
        if (scene != Scene::noise) value = (x * (3 + c) + y * (5 - c)) / 4 % 200 + 20;
        if (scene == Scene::edges) {
          if ((x / 11 + y / 7) % 3 == 0) value = (c * 97 + x / 11 * 53) % 256;
          value += random % 13 - 6;
        }
        picture.row(y)[3 * x + c] = static_cast<std::uint8_t>(std::clamp(value, 0, 255));
      }
  return picture;
}

/// A record for a picture, released at the end.
class Codec {
 public:
  Codec(Rgb& picture, std::vector<std::uint8_t>& stream) {
    jpegInit(&p);
    p.imageData = picture.bytes.data();
    p.imageWidth = p.streamWidth = picture.width;
    p.imageHeight = p.streamHeight = picture.height;
    p.imageChannels = p.streamChannels = 3;
    p.imageColor = kJpegRgb;
    p.streamColor = kJpegYcc;
    p.streamData = stream.data();
    p.streamSize = static_cast<int>(stream.size());
  }
  Codec(const Codec&) = delete;
  Codec& operator=(const Codec&) = delete;
  ~Codec() { jpegFree(&p); }

  JpegProperties p;
};

/// Room for any stream of a picture.
inline std::vector<std::uint8_t> roomFor(const Rgb& picture) {
  return std::vector<std::uint8_t>((static_cast<std::size_t>(picture.width) + 16) *
                                       (static_cast<std::size_t>(picture.height) + 16) * 12 +
                                   1024);
}

using ChangeRecord = std::function<void(JpegProperties&)>;

/// The stream of a picture, up to its end marker.
inline std::vector<std::uint8_t> encode(Rgb& picture, const ChangeRecord& change) {
  std::vector<std::uint8_t> stream = roomFor(picture);
  Codec codec(picture, stream);
  change(codec.p);
  if (jpegWrite(&codec.p, kJpegWriteImage) != kJpegOk) throw std::runtime_error("not written");
  const std::uint8_t end[] = {0xFF, 0xD9};
  stream.erase(std::find_end(stream.begin(), stream.end(), end, end + 2) + 2, stream.end());
  return stream;
}

/// Reads a stream: mode 1, then mode 3.
inline int decode(
    Rgb& picture, std::vector<std::uint8_t>& stream,
    const ChangeRecord& change = [](JpegProperties&) {}) {
  Codec codec(picture, stream);
  change(codec.p);
  if (const int status = jpegRead(&codec.p, kJpegReadParameters)) return status;
  return jpegRead(&codec.p, kJpegReadImage);
}

}  // namespace vx::test
