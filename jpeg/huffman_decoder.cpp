#include "jpeg/huffman_decoder.h"

namespace vx {

bool JpegHuffmanDecoder::build(const std::array<std::uint8_t, 16>& counts,
                               const std::uint8_t* list) noexcept {
  defined = false;
  quick.fill(0);
  symbols.fill(0);
  int code = 0, index = 0;
  for (int length = 1; length <= 16; ++length, code <<= 1) {
    const auto at = static_cast<std::size_t>(length);
    offset[at] = index - code;
    for (int n = 0; n < counts[at - 1]; ++n, ++code, ++index) {
      const std::uint8_t symbol = symbols[index] = list[index];
      if (code >= 1 << length) return false;
      if (length > kQuickBits) continue;
      const int free = kQuickBits - length;
      for (int i = 0; i < 1 << free; ++i)
        quick[(code << free) + i] = static_cast<std::uint16_t>(length << 8 | symbol);
    }
    endCode[at] = code << (16 - length);
  }
  defined = true;
  return true;
}

}  // namespace vx
