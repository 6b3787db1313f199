#include "hosts/cli/pictures/jpeg_header.h"

#include <jpeglib.h>

#include <algorithm>
#include <csetjmp>
#include <cstdio>
#include <iterator>
#include <memory>

namespace vx::cli {
namespace {

struct ErrorManager {
  jpeg_error_mgr base;  // first, so that the library's pointer to it is one to this
  std::jmp_buf leave;
};

[[noreturn]] void onError(j_common_ptr decoder) {
  std::longjmp(reinterpret_cast<ErrorManager*>(decoder->err)->leave, 1);
}

void onMessage(j_common_ptr, int) {}

// Whether the table of the first component is there and whole.
bool take(const jpeg_decompress_struct& decoder, JpegHeader& header) {
  if (decoder.num_components < 1) return false;
  // libjpeg checks this number only when it decodes.
  const int number = decoder.comp_info[0].quant_tbl_no;
  if (number < 0 || number >= NUM_QUANT_TBLS) return false;
  const JQUANT_TBL* table = decoder.quant_tbl_ptrs[number];
  if (table == nullptr) return false;
  auto& steps = header.lumaSteps;
  std::copy(std::begin(table->quantval), std::end(table->quantval), steps.begin());
  header.progressive = decoder.progressive_mode != 0;
  const jpeg_component_info& luma = decoder.comp_info[0];
  header.subsampled = decoder.num_components >= 3;
  for (int c = 1; c < std::min(decoder.num_components, 3); ++c) {
    const jpeg_component_info& chroma = decoder.comp_info[c];
    header.subsampled = header.subsampled && luma.h_samp_factor >= 2 * chroma.h_samp_factor &&
                        luma.v_samp_factor >= 2 * chroma.v_samp_factor;
  }
  return std::find(steps.begin(), steps.end(), 0) == steps.end();
}

// No object with a destructor lives here: errors leave by longjmp.
bool read(std::FILE* file, JpegHeader& header) {
  jpeg_decompress_struct decoder{};
  ErrorManager errors{};
  volatile bool whole = false;  // survives the jump
  decoder.err = jpeg_std_error(&errors.base);
  errors.base.error_exit = onError;
  errors.base.emit_message = onMessage;
  if (setjmp(errors.leave) == 0) {
    jpeg_create_decompress(&decoder);
    jpeg_stdio_src(&decoder, file);
    jpeg_read_header(&decoder, TRUE);
    whole = take(decoder, header);
  }
  jpeg_destroy_decompress(&decoder);
  return whole;
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

std::optional<JpegHeader> jpegHeader(const std::filesystem::path& path) {
  static_assert(std::tuple_size_v<decltype(JpegHeader::lumaSteps)> == DCTSIZE2);
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  JpegHeader header{};
  if (!file || !read(file.get(), header)) return std::nullopt;
  return header;
}

}  // namespace vx::cli
