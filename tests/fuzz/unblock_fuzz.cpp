// vxUnblock, whatever its arguments: the number of round trips and only samples changed, or want of
// memory and nothing changed. libFuzzer's interface.

#include "tests/fuzz/target.h"
#include "vxicore26.h"

using namespace vx::test;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static GuardedMemory memory(128 * 1024);
  ByteSource source(data, size);
  int width = source.integer(1, 40);
  int height = source.integer(1, 24);
  if (source.oneIn(16)) height = 1 + static_cast<int>(source.byte() * 3);  // several strips
  const bool sized = width >= 1 && height >= 1;
  // All round trips are made for every pixel.
  if (sized && std::int64_t{width} * height > 8192)
    width = 1 + width % 8, height = 1 + height % 999;
  const int deep = source.oneIn(2) ? source.integer(1, 2) : 0;
  const int sampleBytes = deep != 0 ? 2 : 1;

  int pixelStep = source.oneIn(2) ? source.integer(-5, 5) : 3;
  int rowStep = 0;
  std::uint8_t* placed = nullptr;
  const auto place = [&](int pixel, int row) {
    pixelStep = pixel;
    rowStep = row;
    const std::int64_t last = pixel * (std::int64_t{width} - 1);
    if (sized)
      placed = memory.place(
          {std::ptrdiff_t{row} * sampleBytes, std::min<std::int64_t>(0, last) * sampleBytes,
           (std::abs(last) + 3) * sampleBytes, height},
          source);
    return placed != nullptr;
  };
  const auto rowSamples = std::abs(std::int64_t{pixelStep}) * (std::clamp(width, 1, 8192) - 1) + 3;
  if (rowSamples > 65536 ||
      !place(pixelStep, fuzzStep(source, static_cast<int>(rowSamples), height)))
    place(3, 3 * std::clamp(width, 1, 8192));
  void* const pixels = sized ? placed : memory.forbidden();
  // Samples between the three of a pixel and the next pixel must stay.
  if (placed != nullptr && std::abs(std::int64_t{pixelStep}) > 3)
    for (int y = 0; y < height; ++y)
      for (int x = 0; x + 1 < width; ++x) {
        const std::ptrdiff_t lower = std::ptrdiff_t{pixelStep} * (pixelStep > 0 ? x : x + 1);
        memory.except(placed + (std::ptrdiff_t{rowStep} * y + lower + 3) * sampleBytes,
                      (std::abs(std::ptrdiff_t{pixelStep}) - 3) * sampleBytes);
      }

  const int quality = source.integer(0, 101), mode = source.integer(0, 18);
  const int shiftStep = source.integer(0, 9), reserved = source.integer(0, 1);
  const bool faults = source.oneIn(8);
  const int refused = faults ? static_cast<int>(source.byte() % 48) : -1;
  const Surroundings surroundings(source, faults);
  memory.forbidTheRest();
  const bool done = endsOrLacksMemory(surroundings, refused, source.oneIn(2), [&] {
    const int perAxis = (8 + std::clamp(shiftStep, 1, 8) - 1) / std::clamp(shiftStep, 1, 8);
    require(vxUnblock(deep, pixels, pixelStep, rowStep, width, height, quality, mode, shiftStep,
                      reserved) == perAxis * perAxis,
            "the answer is the number of round trips");
  });
  memory.check(done);
  return 0;
}
