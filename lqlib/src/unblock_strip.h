#pragma once

#include <array>
#include <cstdint>

#include "frame/image_buffer.h"
#include "lqlib/src/unblock_pixels.h"
#include "lqlib/src/unblock_plan.h"

namespace vx {

/// A number for each top and left.
using TripSums = std::array<std::array<double, 8>, 8>;

/// Makes all round trips for strips of rows, without streams: entropy coding loses nothing.
///
/// A row of MCUs of any trip begins at some row of the picture, and each row of the picture is the
/// beginning of MCUs of one `top` only. So the strip is walked once from top to bottom: at each row
/// the samples below are transformed vertically once for all eight `left`s, every `left` is
/// transformed horizontally, quantised and taken back, converted to RGB and added to sums of 16
/// bits. A row that has been passed by all tops is divided and written. What is held at any time is
/// a few rows; nothing depends on the number of trips.
///
/// Columns are counted from the picture's first; arrays have kMargin columns before it.
class UnblockStrip {
 public:
  UnblockStrip(const UnblockPlan& plan, const ImageBuffer<std::uint8_t, 3>& source,
               const UnblockPixels& pixels);

  /// For each trip adds the levels (primJpegLevels_16s) of all MCUs that begin at rows first to
  /// below last, -7 to height + 7. Allocates nothing.
  void countLevels(int first, int last, TripSums& levels);

  /// Processes and writes rows first to below last. Allocates nothing.
  void run(int first, int last);

 private:
  static constexpr int kMargin = 16;
  /// Phases of the columns of a halved component: even and odd lefts pair other columns.
  static constexpr int kParities = 2;

  /// Rows of a component inside one row of MCUs of one trip, as bytes.
  struct Decoded {
    ImageBuffer<std::uint8_t> rows;
    std::uint8_t* row(int y) const { return rows.row(y) + kMargin; }
  };
  /// The last rows of the MCUs above, for the vertical filter.
  struct Above {
    ImageBuffer<std::uint8_t> rows;  // luma, then the two others
    std::uint8_t* row(int c) const { return rows.row(c) + kMargin; }
  };

  void loadRow(int y);
  void reduceRow(int y);
  void transformRows(int start);
  int topOf(int start) const { return (2 * mcuHeight_ - start) & (mcuHeight_ - 1); }
  void mcuRow(int start, int top);
  void trip(int start, int top, int left);
  void decode(int c, int left);
  void addRow(int y, const std::uint8_t* luma, const std::uint8_t* const near[2],
              const std::uint8_t* const far[2], int left);
  void writeRow(int y);

  bool halved(int c) const { return c > 0 && plan_.coding.hFactor == 2; }
  int parityOf(int c, int left) const { return halved(c) ? left & 1 : 0; }
  std::uint16_t* sumRow(int y, int c) const { return sums_.row((y & (sumRows_ - 1)) * 3 + c); }
  /// Row y, with y + 1 where both axes are halved, of a halved component: each row is the even and
  /// the odd one of some MCUs, which round differently.
  std::int16_t* reducedRow(int y, int c, int bias, int parity) const {
    return reduced_.row((y & (sampleRows_ - 1)) * 8 + (c - 1) * 4 + bias * 2 + parity);
  }
  std::int16_t* sampleRow(int y, int c) const {
    return samples_.row((y & (sampleRows_ - 1)) * 3 + c);
  }
  Above& above(int top, int left) { return above_[top * 8 + left]; }

  const UnblockPlan& plan_;
  const ImageBuffer<std::uint8_t, 3>& source_;
  const UnblockPixels& pixels_;
  const int mcuHeight_;
  const int sampleRows_;  ///< of the ring, a power of two
  const int sumRows_;
  const int length_;  ///< columns of an array of samples, kMargin included
  int first_ = 0, last_ = 0, loaded_ = 0;
  ImageBuffer<std::int16_t> samples_;
  ImageBuffer<std::int16_t> reduced_;  ///< ring of the rows of halved components
  /// Of the vertical transform; in place of parities luma has the halves of an MCU.
  ImageBuffer<std::int16_t> columns_[3][kParities];
  Decoded decoded_[3];
  ImageBuffer<std::uint8_t> wide_;  ///< two rows at full width
  ImageBuffer<std::uint16_t> sums_;
  Above above_[64];
};

}  // namespace vx
