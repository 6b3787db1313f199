// vxYUVEdgeRGB, whatever its arguments: 1 and only pixels changed, or want of memory and nothing
// changed. libFuzzer's interface.

#include "tests/fuzz/target.h"
#include "vxicore26.h"

using namespace vx::test;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  static GuardedMemory memory(160 * 1024);
  ByteSource source(data, size);
  // The stages work on tiles of 256 by 32: one input in eight may be wider than one.
  const bool wide = source.oneIn(8);
  const int width = wide ? 1 + source.raw<std::uint16_t>() % 600 : source.integer(1, 48);
  const int height = wide ? 1 + static_cast<int>(source.byte() % 24) : source.integer(1, 40);
  const int deep = source.oneIn(2) ? source.integer(1, 2) : 0;
  const Shape shape = {width, height, deep != 0 ? 2 : 1};
  int step = 0;
  std::uint8_t* const placed = placePicture(memory, source, shape, step);
  void* const pixels = shape.sized() ? placed : memory.forbidden();

  const auto sigma = [&] { return source.oneIn(3) ? 0.0 : source.setting<double>(0, 7); };
  const auto shift = [&] { return source.oneIn(2) ? 0 : source.integer(-8, 8); };
  const double baseGain = source.setting<double>(0, 4), floor = source.setting<double>(0, 0.1);
  const double sigmaX = sigma(), sigmaY = sigma(), gain = source.setting<double>(0, 5);
  const double blurX = sigma(), blurY = sigma();
  const int shiftX = shift(), shiftY = shift();
  const double alignX = sigma(), alignY = sigma(), limit = source.setting<double>(0, 0.2);
  const int reserved = source.integer(0, 1);

  const Surroundings surroundings(source, 24);
  memory.forbidTheRest();
  const End end = surroundings.run([&] {
    require(vxYUVEdgeRGB(deep, pixels, step, width, height, baseGain, floor, sigmaX, sigmaY, gain,
                         blurX, blurY, shiftX, shiftY, alignX, alignY, limit, reserved) == 1,
            "the answer is 1");
  });
  memory.check(end == End::done);
  return 0;
}
