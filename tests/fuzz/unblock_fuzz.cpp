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
  // All round trips are made for every pixel.
  if (width >= 1 && height >= 1 && std::int64_t{width} * height > 8192)
    width = 1 + width % 8, height = 1 + height % 999;
  const int deep = source.oneIn(2) ? source.integer(1, 2) : 0;
  Shape shape = {width, height, deep != 0 ? 2 : 1};
  if (source.oneIn(2)) shape.pixelStep = source.integer(-5, 5);
  if (shape.rowSamples() > 1 << 16) shape.pixelStep = 3;
  int rowStep = 0;
  std::uint8_t* const placed = placePicture(memory, source, shape, rowStep);
  void* const pixels = shape.sized() ? placed : memory.forbidden();

  const int quality = source.integer(0, 101), mode = source.integer(0, 18);
  const int shiftStep = source.integer(0, 9), reserved = source.integer(0, 1);
  const Surroundings surroundings(source, 48);
  memory.forbidTheRest();
  const End end = surroundings.run([&] {
    const int perAxis = (8 + std::clamp(shiftStep, 1, 8) - 1) / std::clamp(shiftStep, 1, 8);
    require(vxUnblock(deep, pixels, shape.pixelStep, rowStep, width, height, quality, mode,
                      shiftStep, reserved) == perAxis * perAxis,
            "the answer is the number of round trips");
  });
  memory.check(end == End::done);
  return 0;
}
