#include "hosts/cli/pictures/jpeg_quality.h"

#include <jpeglib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <csetjmp>
#include <cstdio>
#include <iterator>
#include <memory>

namespace vx::cli {
namespace {

using Table = std::array<int, DCTSIZE2>;

// ITU T.81, table K.1, row by row.
constexpr Table kLuma = {16, 11, 10, 16, 24,  40,  51,  61,  12, 12, 14, 19, 26,  58,  60,  55,
                         14, 13, 16, 24, 40,  57,  69,  56,  14, 17, 22, 29, 51,  87,  80,  62,
                         18, 22, 37, 56, 68,  109, 103, 77,  24, 35, 55, 64, 81,  104, 113, 92,
                         49, 64, 78, 87, 103, 121, 120, 101, 72, 92, 95, 98, 112, 100, 103, 99};

int scaledStep(int step, int quality) {
  const int percent = quality < 50 ? 5000 / quality : 200 - 2 * quality;
  return std::clamp((step * percent + 50) / 100, 1, 255);
}

// Logarithmic: half a step is as far off as twice the step.
double distance(const Table& table, int quality) {
  double sum = 0;
  for (std::size_t i = 0; i < table.size(); ++i) {
    const double off = std::log(static_cast<double>(table[i]) / scaledStep(kLuma[i], quality));
    sum += off * off;
  }
  return sum;
}

int nearestQuality(const Table& table) {
  int nearest = 1;
  double least = distance(table, 1);
  for (int quality = 2; quality <= 100; ++quality) {
    const double here = distance(table, quality);
    if (here < least) {
      least = here;
      nearest = quality;
    }
  }
  return nearest;
}

struct ErrorManager {
  jpeg_error_mgr base;  // first, so that the library's pointer to it is one to this
  std::jmp_buf leave;
};

[[noreturn]] void onError(j_common_ptr decoder) {
  std::longjmp(reinterpret_cast<ErrorManager*>(decoder->err)->leave, 1);
}

void onMessage(j_common_ptr, int) {}

// Whether the table of the first component is there and whole.
bool takeTable(const jpeg_decompress_struct& decoder, Table& luma) {
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
bool readTable(std::FILE* file, Table& luma) {
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

std::optional<int> jpegQuality(const std::filesystem::path& path) {
  const std::unique_ptr<std::FILE, CloseFile> file(std::fopen(path.c_str(), "rbe"));
  Table luma{};
  if (!file || !readTable(file.get(), luma)) return std::nullopt;
  return nearestQuality(luma);
}

// Over photographs coded by libjpeg-turbo at quality 5 to 95 the best quality of the trips was the
// file's own or up to 5 more, with little between them up to 85; from 90 on PSNR fell with any.
std::optional<int> fittingTripQuality(const std::filesystem::path& path,
                                      std::vector<std::string>& notes) {
  constexpr int kFinest = 86;
  const std::optional<int> quality = jpegQuality(path);
  if (!quality) {
    notes.emplace_back("nothing known about its JPEG coding; blocks left alone");
    return std::nullopt;
  }
  const std::string coded = "JPEG coded at quality " + std::to_string(*quality);
  if (*quality > kFinest) {
    notes.push_back(coded + ", fine enough; blocks left alone");
    return std::nullopt;
  }
  notes.push_back(coded + "; blocks removed at that quality");
  return quality;
}

}  // namespace vx::cli
