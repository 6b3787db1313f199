#include "hosts/auto/block_statistics.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

#include "hosts/auto/luma_rows.h"

namespace vx::automatic {
namespace {

constexpr int kSmall = 8, kLarge = 16;
constexpr std::size_t kFewest = 32;

// What the columns of a strip of eight rows sum up to. The luma counts from a level of each block
// of 16 columns, so that a flat block loses no digits to its brightness.
struct Columns {
  explicit Columns(std::size_t width)
      : sum(width), squares(width), byRow(width), fine(width), clipped(width) {}

  std::vector<float> sum, squares, byRow;  // of the luma; byRow: times the row, -3.5 to 3.5
  std::vector<float> fine;                 // squares of the filtered luma
  std::vector<float> clipped;

  void clear() {
    for (auto* column : {&sum, &squares, &byRow, &fine, &clipped})
      std::fill(column->begin(), column->end(), 0.0F);
  }
};

// Sums over a block around its centre.
struct Moments {
  double sum = 0, squares = 0, byColumn = 0, byRow = 0;
};

Moments moments(const Columns& columns, std::size_t first, int side) {
  Moments m;
  for (int i = 0; i < side; ++i) {
    const std::size_t x = first + static_cast<std::size_t>(i);
    m.sum += static_cast<double>(columns.sum[x]);
    m.squares += static_cast<double>(columns.squares[x]);
    m.byColumn += (i - 0.5 * (side - 1)) * static_cast<double>(columns.sum[x]);
    m.byRow += static_cast<double>(columns.byRow[x]);
  }
  return m;
}

float rmsAroundPlane(const Moments& m, int side) {
  const double n = side * side;
  const double slope = n * (n - 1) / 12;  // sum of the squared distances from the centre
  const double rest =
      m.squares - m.sum * m.sum / n - (m.byColumn * m.byColumn + m.byRow * m.byRow) / slope;
  return static_cast<float>(std::sqrt(std::max(rest, 0.0) / (n - 3)));
}

// The sixteen columns of two strips, one below the other.
Moments stacked(const Moments& upper, const Moments& lower) {
  return {upper.sum + lower.sum, upper.squares + lower.squares, upper.byColumn + lower.byColumn,
          upper.byRow + lower.byRow + 4 * (lower.sum - upper.sum)};
}

class Pass {
 public:
  explicit Pass(const VxAutoPicture& picture)
      : rows_(picture),
        width_(static_cast<std::size_t>(rows_.width())),
        upper_(width_),
        lower_(width_),
        level_(width_),
        second_(width_ + 2) {
    for (Line& line : lines_) {
      line.luma.resize(width_);
      line.clipped.resize(width_);
    }
  }

  BlockStatistics run() {
    if (rows_.width() < kLarge || rows_.height() < kLarge) return {};
    read(1, lines_[0]);  // mirrored at the top
    read(0, lines_[1]);
    for (int y = 0; y + kSmall <= rows_.height(); y += kSmall) {
      const bool even = y % kLarge == 0;
      if (even) takeLevels();
      Columns& columns = even ? upper_ : lower_;
      columns.clear();
      for (int i = 0; i < kSmall; ++i) addRow(y + i, static_cast<float>(i) - 3.5F, columns);
      takeSmallBlocks(columns);
      if (!even) takeLargeBlocks();
    }
    return collect();
  }

 private:
  // A block with how much of it is clipped.
  struct Small {
    float plane, fine;
    bool clipped;
  };
  struct Large {
    float plane;
    bool clipped;
  };

  struct Line {
    std::vector<float> luma, clipped;
  };

  void read(int y, Line& line) { rows_.read(y, line.luma.data(), line.clipped.data()); }

  void takeLevels() {
    for (std::size_t x = 0; x < width_; ++x) level_[x] = lines_[1].luma[x / kLarge * kLarge];
  }

  // lines_ holds the rows above and at y; the one below is read here.
  void addRow(int y, float row, Columns& columns) {
    read(y + 1 < rows_.height() ? y + 1 : rows_.height() - 2, lines_[2]);
    const std::vector<float>&above = lines_[0].luma, &here = lines_[1].luma,
          &below = lines_[2].luma, &clipped = lines_[1].clipped;
    for (std::size_t x = 0; x < width_; ++x) {
      const float v = here[x] - level_[x];
      columns.clipped[x] += clipped[x];
      columns.sum[x] += v;
      columns.squares[x] += v * v;
      columns.byRow[x] += row * v;
      second_[x + 1] = above[x] - 2.0F * here[x] + below[x];
    }
    second_[0] = second_[2];
    second_[width_ + 1] = second_[width_ - 1];
    for (std::size_t x = 0; x < width_; ++x) {
      const float f = second_[x] - 2.0F * second_[x + 1] + second_[x + 2];
      columns.fine[x] += f * f;
    }
    std::swap(lines_[0], lines_[1]);
    std::swap(lines_[1], lines_[2]);
  }

  void takeSmallBlocks(const Columns& columns) {
    for (std::size_t x = 0; x + kSmall <= width_; x += kSmall) {
      float fine = 0, clipped = 0;
      for (std::size_t i = x; i < x + kSmall; ++i) {
        fine += columns.fine[i];
        clipped += columns.clipped[i];
      }
      const float rms = std::sqrt(fine / (36.0F * kSmall * kSmall));
      small_.push_back({rmsAroundPlane(moments(columns, x, kSmall), kSmall), rms,
                        clipped >= 0.25F * kSmall * kSmall});
    }
  }

  void takeLargeBlocks() {
    for (std::size_t x = 0; x + kLarge <= width_; x += kLarge) {
      float clipped = 0;
      for (std::size_t i = x; i < x + kLarge; ++i) clipped += upper_.clipped[i] + lower_.clipped[i];
      const Moments m = stacked(moments(upper_, x, kLarge), moments(lower_, x, kLarge));
      large_.push_back({rmsAroundPlane(m, kLarge), clipped >= 0.25F * kLarge * kLarge});
    }
  }

  BlockStatistics collect() const {
    const auto open = static_cast<std::size_t>(std::count_if(
        small_.begin(), small_.end(), [](const Small& block) { return !block.clipped; }));
    const bool all = open < kFewest;
    const bool anyLarge = std::any_of(large_.begin(), large_.end(),
                                      [](const Large& block) { return !block.clipped; });
    BlockStatistics result;
    for (const Small& block : small_)
      if (all || !block.clipped) {
        result.plane8.push_back(block.plane);
        result.fine8.push_back(block.fine);
      }
    for (const Large& block : large_)
      if (all || !anyLarge || !block.clipped) result.plane16.push_back(block.plane);
    return result;
  }

  LumaRows rows_;
  std::size_t width_;
  Columns upper_, lower_;
  std::vector<float> level_, second_;
  Line lines_[3];
  std::vector<Small> small_;
  std::vector<Large> large_;
};

}  // namespace

BlockStatistics blockStatistics(const VxAutoPicture& picture) { return Pass(picture).run(); }

}  // namespace vx::automatic
