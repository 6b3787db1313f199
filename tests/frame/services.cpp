#include "tests/frame/services.h"

#include <climits>
#include <memory>

#include "frame/exceptions.h"

namespace vx::test {
namespace {

// In odd sizes, with bytes between the rows.
std::shared_ptr<const Picture> scene(int format, int width, int height) {
  auto p = std::make_shared<Picture>(format, width, height, 6);
  p->randomise(31, 255);
  paintScene(*p, deep(format) ? 900.0 : 7.0, 32);
  return p;
}

// A service that changes a picture; `change` returns the result of the call.
Service changing(std::string name, std::shared_ptr<const Picture> before,
                 std::function<int(Picture&)> change, bool sums = false) {
  const auto call = [before, change] {
    Picture p = *before;
    int result = 0;
    try {
      result = change(p);
    } catch (const MemoryException&) {
      result = 77;
    } catch (const std::runtime_error&) {
      result = 78;
    }
    p.bytes.push_back(static_cast<std::uint8_t>(result));
    return p.bytes;
  };
  return {name + ", format " + std::to_string(before->format), call, sums};
}

// With a host that reports, lends memory and does what it is told.
std::function<int(Picture&)> adjusting(const AdjustSettings& settings, const Host& told = {}) {
  return [=](Picture& p) {
    Host host = told;
    return adjust(p, settings, &host, true);
  };
}

Bytes estimate(const Picture& p) {
  NoiseProfile profile;
  const int result =
      vxDenoiseEstNoise(p.bytes.data(), p.format, p.step, p.width, p.height, &profile);
  Bytes bytes(sizeof profile + 1, static_cast<std::uint8_t>(result));
  std::memcpy(bytes.data(), &profile, sizeof profile);
  return bytes;
}

std::vector<Service> makeServices() {
  std::vector<Service> all;
  for (const int format : kFormats) {
    const auto picture = scene(format, 131, 90);
    all.push_back(changing("tone", picture, adjusting(kTone)));
    all.push_back(
        {"estimate, format " + std::to_string(format), [=] { return estimate(*picture); }});
  }
  const auto small = scene(1, 81, 66), deepSmall = scene(3, 66, 81), wide = scene(5, 2306, 22);
  AdjustSettings preview = kTone, mixed = denoising(0, kTone);
  preview.previewScale = 3;
  preview.sharpenAmount = 0.4f;
  mixed.unblockStrength = 0.5f;
  const std::vector<Service> others = {
      changing("tone in tiles", wide, adjusting(kTone)),
      changing("tone of a preview", small, adjusting(preview)),
      changing("noise filter of mode 0", scene(6, 131, 90), adjusting(denoising(0))),
      changing("non-local noise filter", small, adjusting(denoising(1)), true),
      changing("non-local noise filter", deepSmall, adjusting(denoising(1)), true),
      changing("block artifacts, noise and tone", small, adjusting(mixed)),
      changing("block artifacts", small, [](Picture& p) { return unblock(p, 40, 0, 3); }),
      changing("block artifacts, mode 1", deepSmall,
               [](Picture& p) { return unblock(p, 60, 1, 1); }),
      changing("block artifacts, mode 2", small, [](Picture& p) { return unblock(p, 30, 2, 2); }),
      changing("block artifacts, RGB", small, [](Picture& p) { return unblock(p, 98, 16, 2); }),
      changing("edges", small, edges),
      changing("edges", deepSmall, edges),
      // Those that end before the end.
      changing(
          "unknown format", small,
          [](Picture& p) { return adjust(p.bytes.data(), 2, p.step, p.width, p.height, kTone); }),
      changing("cancelled at once", small, adjusting(kTone, {.cancelAt = 0})),
      changing("cancelled after a tile", wide, adjusting(kTone, {.cancelAt = 1})),
      changing("report throws", wide, adjusting(kTone, {.throwAt = 2})),
      changing("allocator throws", wide, adjusting(kTone, {.throwAtAlloc = 2})),
      changing(
          "no memory", small,
          [](Picture& p) { return vxUnblock(0, p.bytes.data(), 3, 0, 1, INT_MAX, 50, 1, 1, 0); }),
      // Bit 1 of the mask has records made and none written.
      {"trace", [] {
         setDebugTrace(2, nullptr);
         return Bytes{static_cast<std::uint8_t>(vxSetupLib(2, nullptr)),
                      static_cast<std::uint8_t>(vxSetupLib(-1, "/nowhere"))};
       }}};
  all.insert(all.end(), others.begin(), others.end());
  return all;
}

}  // namespace

const std::vector<Service>& services() {
  static const std::vector<Service> all = makeServices();
  return all;
}

std::vector<Bytes> callAll() {
  std::vector<Bytes> results;
  for (const Service& service : services()) results.push_back(service.call());
  return results;
}

}  // namespace vx::test
