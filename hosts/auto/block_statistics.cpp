#include "hosts/auto/block_statistics.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>

#include "hosts/auto/picture_rows.h"

namespace vx::automatic {
namespace {

constexpr int kSmall = 8, kLarge = 16;
constexpr std::size_t kFewest = 32;

// What the columns of a strip of eight rows sum up to. The luma counts from a level of each block
// of 16 columns, so that a flat block loses no digits to its brightness.
struct Columns {
  explicit Columns(std::size_t width)
      : sum(width),
        squares(width),
        byRow(width),
        fine(width),
        colour(width),
        across(width),
        down(width),
        both(width),
        clipped(width) {}

  std::vector<float> sum, squares, byRow;  // of the luma; byRow: times the row, -3.5 to 3.5
  std::vector<float> fine, colour;         // squares of what filters leave of luma and colour
  std::vector<float> across, down, both;   // products of the slopes along the row and the column
  std::vector<float> clipped;

  void clear() {
    for (auto* column : {&sum, &squares, &byRow, &fine, &colour, &across, &down, &both, &clipped})
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

float coherence(float across, float down, float both) {
  const float sum = across + down, difference = across - down;
  return sum > 0 ? std::sqrt(difference * difference + 4.0F * both * both) / sum : 0;
}

// The sixteen columns of two strips, one below the other.
Moments stacked(const Moments& upper, const Moments& lower) {
  return {upper.sum + lower.sum, upper.squares + lower.squares, upper.byColumn + lower.byColumn,
          upper.byRow + lower.byRow + 4 * (lower.sum - upper.sum)};
}

// Squares of a row filtered by [1 -2 1] over [1 -2 1]. `second` is space for the row and a sample
// on either side.
void addFine(const std::vector<float>& above, const std::vector<float>& here,
             const std::vector<float>& below, std::vector<float>& second,
             std::vector<float>& squares) {
  const std::size_t width = here.size();
  for (std::size_t x = 0; x < width; ++x) second[x + 1] = above[x] - 2.0F * here[x] + below[x];
  second[0] = second[2];
  second[width + 1] = second[width - 1];
  for (std::size_t x = 0; x < width; ++x) {
    const float f = second[x] - 2.0F * second[x + 1] + second[x + 2];
    squares[x] += f * f;
  }
}

void addSlopes(const std::vector<float>& above, const std::vector<float>& here,
               const std::vector<float>& below, Columns& columns) {
  for (std::size_t x = 1; x + 1 < here.size(); ++x) {
    const float across = here[x + 1] - here[x - 1], down = below[x] - above[x];
    columns.across[x] += across * across;
    columns.down[x] += down * down;
    columns.both[x] += across * down;
  }
}

// `weight` times the squares of what the smoothing by [1 2 1] over [1 2 1] takes away.
void addSmoothed(const std::vector<float>& above, const std::vector<float>& here,
                 const std::vector<float>& below, float weight, std::vector<float>& smooth,
                 std::vector<float>& squares) {
  const std::size_t width = here.size();
  for (std::size_t x = 0; x < width; ++x) smooth[x + 1] = above[x] + 2.0F * here[x] + below[x];
  smooth[0] = smooth[2];
  smooth[width + 1] = smooth[width - 1];
  for (std::size_t x = 0; x < width; ++x) {
    const float lost = here[x] - 0.0625F * (smooth[x] + 2.0F * smooth[x + 1] + smooth[x + 2]);
    squares[x] += weight * lost * lost;
  }
}

class Pass {
 public:
  explicit Pass(const VxAutoPicture& picture)
      : rows_(picture),
        width_(static_cast<std::size_t>(rows_.width())),
        upper_(width_),
        lower_(width_),
        level_(width_),
        space_(width_ + 2),
        window_{PictureRow(width_), PictureRow(width_), PictureRow(width_)} {}

  BlockStatistics run() {
    if (rows_.width() < kLarge || rows_.height() < kLarge) return {};
    rows_.read(-1, window_[0]);
    rows_.read(0, window_[1]);
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
  // A block with whether too much of it is clipped.
  struct Small {
    float plane, fine, colour, coherence;
    bool clipped;
  };
  struct Large {
    float plane;
    bool clipped;
  };

  void takeLevels() {
    for (std::size_t x = 0; x < width_; ++x) level_[x] = window_[1].luma[x / kLarge * kLarge];
  }

  // The window holds the rows above and at y; the one below is read here.
  void addRow(int y, float row, Columns& columns) {
    // Mean square of R, G and B for a unit of B - Y and of R - Y that goes, Y staying.
    constexpr float kBlue = 0.345F, kRed = 0.419F;
    rows_.read(y + 1, window_[2]);
    const PictureRow &above = window_[0], &here = window_[1], &below = window_[2];
    for (std::size_t x = 0; x < width_; ++x) {
      const float v = here.luma[x] - level_[x];
      columns.clipped[x] += here.clipped[x];
      columns.sum[x] += v;
      columns.squares[x] += v * v;
      columns.byRow[x] += row * v;
    }
    addFine(above.luma, here.luma, below.luma, space_, columns.fine);
    addSlopes(above.luma, here.luma, below.luma, columns);
    addSmoothed(above.blue, here.blue, below.blue, kBlue, space_, columns.colour);
    addSmoothed(above.red, here.red, below.red, kRed, space_, columns.colour);
    std::swap(window_[0], window_[1]);
    std::swap(window_[1], window_[2]);
  }

  void takeSmallBlocks(const Columns& columns) {
    constexpr float kPixels = kSmall * kSmall;
    for (std::size_t x = 0; x + kSmall <= width_; x += kSmall) {
      float fine = 0, colour = 0, clipped = 0, across = 0, down = 0, both = 0;
      for (std::size_t i = x; i < x + kSmall; ++i) {
        fine += columns.fine[i];
        colour += columns.colour[i];
        clipped += columns.clipped[i];
        across += columns.across[i];
        down += columns.down[i];
        both += columns.both[i];
      }
      small_.push_back({rmsAroundPlane(moments(columns, x, kSmall), kSmall),
                        std::sqrt(fine / (36.0F * kPixels)), std::sqrt(colour / kPixels),
                        coherence(across, down, both), clipped >= 0.25F * kPixels});
    }
  }

  void takeLargeBlocks() {
    constexpr float kPixels = kLarge * kLarge;
    for (std::size_t x = 0; x + kLarge <= width_; x += kLarge) {
      float clipped = 0;
      for (std::size_t i = x; i < x + kLarge; ++i) clipped += upper_.clipped[i] + lower_.clipped[i];
      const Moments m = stacked(moments(upper_, x, kLarge), moments(lower_, x, kLarge));
      large_.push_back({rmsAroundPlane(m, kLarge), clipped >= 0.25F * kPixels});
    }
  }

  BlockStatistics collect() const {
    const auto open = static_cast<std::size_t>(std::count_if(
        small_.begin(), small_.end(), [](const Small& block) { return !block.clipped; }));
    const bool all = open < kFewest;
    const bool anyLarge = std::any_of(large_.begin(), large_.end(),
                                      [](const Large& block) { return !block.clipped; });
    BlockStatistics result;
    const auto dead = std::count_if(small_.begin(), small_.end(),
                                    [](const Small& block) { return block.plane < kDeadBelow; });
    result.dead = static_cast<double>(dead) / static_cast<double>(small_.size());
    for (const Small& block : small_)
      if (all || !block.clipped) {
        result.plane8.push_back(block.plane);
        result.fine8.push_back(block.fine);
        result.fineColour8.push_back(block.colour);
        result.coherence8.push_back(block.coherence);
      }
    for (const Large& block : large_)
      if (all || !anyLarge || !block.clipped) result.plane16.push_back(block.plane);
    return result;
  }

  PictureRows rows_;
  std::size_t width_;
  Columns upper_, lower_;
  std::vector<float> level_, space_;
  std::array<PictureRow, 3> window_;
  std::vector<Small> small_;
  std::vector<Large> large_;
};

}  // namespace

BlockStatistics blockStatistics(const VxAutoPicture& picture) { return Pass(picture).run(); }

}  // namespace vx::automatic
