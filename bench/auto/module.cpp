// What the scripts beside this need of the inside of the automatic settings, for Python's ctypes;
// the functions of the C headers are in the same module.
#include "hosts/auto/auto_noise.h"
#include "hosts/auto/block_statistics.h"
#include "hosts/auto/denoise_networks.h"

extern "C" VX_AUTO_API int vxBenchInputs(const VxAutoPicture* picture,
                                         const VxAutoEvidence* evidence, double* inputs) {
  using namespace vx::automatic;
  const BlockStatistics statistics = blockStatistics(*picture);
  if (statistics.plane8.empty() || statistics.plane16.empty()) return 0;
  const NetworkValues values = networkValues(noiseFeatures(statistics, *evidence));
  for (std::size_t i = 0; i < values.size(); ++i) inputs[i] = values[i];
  return kInputs;
}
