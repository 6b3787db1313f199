#include "bench/unblock_turbo.h"

#include <omp.h>
#include <turbojpeg.h>

#include <cstdio>
#include <cstdlib>

#include "prim/memory.h"

namespace vx::bench {

std::vector<std::uint8_t> turboLoad(const char* path, int& width, int& height) {
  std::vector<std::uint8_t> file, pixels;
  if (std::FILE* f = std::fopen(path, "rb")) {
    for (int c; (c = std::fgetc(f)) != EOF;) file.push_back(static_cast<std::uint8_t>(c));
    std::fclose(f);
  }
  const tjhandle handle = tjInitDecompress();
  int sampling = 0, colours = 0;
  if (tjDecompressHeader3(handle, file.data(), file.size(), &width, &height, &sampling, &colours) ==
      0) {
    pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 3);
    tjDecompress2(handle, file.data(), file.size(), pixels.data(), width, 0, height, TJPF_RGB, 0);
  }
  tjDestroy(handle);
  return pixels;
}

void turboUnblock(std::vector<std::uint8_t>& pixels, int width, int height, int quality,
                  int threads) {
  const int w = width + 8, h = height + 8;
  const auto bytes = static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 3;
  std::vector<std::vector<std::uint16_t>> sums(static_cast<std::size_t>(threads));
#pragma omp parallel num_threads(threads)
  {
    auto& sum = sums[static_cast<std::size_t>(omp_get_thread_num())];
    sum.assign(pixels.size(), 0);
    const tjhandle encoder = tjInitCompress(), decoder = tjInitDecompress();
    std::vector<std::uint8_t> padded(bytes), block(tjBufSize(w, h, TJSAMP_422));
#pragma omp for schedule(dynamic, 1)
    for (int shift = 0; shift < 64; ++shift) {
      const int left = shift % 8, top = shift / 8;
      prim::primCopyReplicateBorder_8u_C3R(pixels.data(), 3 * width, width, height, padded.data(),
                                           3 * w, w, h, top, left);
      unsigned char* stream = block.data();
      unsigned long size = block.size();
      if (tjCompress2(encoder, padded.data(), w, 0, h, TJPF_RGB, &stream, &size, TJSAMP_422,
                      quality, TJFLAG_NOREALLOC | TJFLAG_ACCURATEDCT) != 0 ||
          tjDecompress2(decoder, stream, size, padded.data(), w, 0, h, TJPF_RGB,
                        TJFLAG_ACCURATEDCT) != 0)
        std::abort();
      for (std::ptrdiff_t y = 0; y < height; ++y) {
        const std::uint8_t* in = padded.data() + ((y + top) * w + left) * 3;
        std::uint16_t* out = sum.data() + y * width * 3;
        for (std::ptrdiff_t i = 0; i < width * 3; ++i)
          out[i] = static_cast<std::uint16_t>(out[i] + in[i]);
      }
    }
    tjDestroy(encoder);
    tjDestroy(decoder);
  }
  for (std::size_t i = 0; i < pixels.size(); ++i) {
    unsigned total = 0;
    for (const auto& sum : sums) total += sum.empty() ? 0u : sum[i];
    pixels[i] = static_cast<std::uint8_t>(total >> 6);
  }
}

}  // namespace vx::bench
