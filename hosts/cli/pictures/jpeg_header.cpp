#include "hosts/cli/pictures/jpeg_table.h"

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
bool takeTable(const jpeg_decompress_struct& decoder, JpegTable& luma) {
  if (decoder.num_components < 1) return false;
  // libjpeg checks this number only when it decodes.
  const int number = decoder.comp_info[0].quant_tbl_no;
  if (number < 0 || number >= NUM_QUANT_TBLS) return false;
  const JQUANT_TBL* table = decoder.quant_tbl_ptrs[number];
  if (table == nullptr) return false;
  std::copy(std::begin(table->quantval), std::end(table->quantval), luma.begin());
  return std::find(luma.begin(), luma.end(), 0) == luma.end();
}

// No object with a destructor lives here: errors leave by longjmp.
bool readTable(std::FILE* file, JpegTable& luma) {
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
    whole = takeTable(decoder, luma);
  }
  jpeg_destroy_decompress(&decoder);
  return whole;
}

struct CloseFile {
  void operator()(std::FILE* file) const { std::fclose(file); }
};

}  // namespace

std::optional<JpegTable> jpegTable(const std::filesystem::path& path) {
  static_assert(JpegTable{}.size() == DCTSIZE2);
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  JpegTable luma{};
  if (!file || !readTable(file.get(), luma)) return std::nullopt;
  return luma;
}

}  // namespace vx::cli
