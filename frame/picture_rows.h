#pragma once

#include "frame/plane_view.h"

namespace vx {

/// Where the rows of a picture come from, a few at a time, so that a stage can take them up while
/// they are in the cache. Threads of a team take different rows at a time.
class RowSource {
 public:
  virtual ~RowSource() = default;

  /// Fills `to` with the rows from y on.
  virtual void take(int y, const RgbRows& to) = 0;
};

/// Where the rows of a picture go to while they are in the cache. A stage gives none before it has
/// taken all, so that source and sink may share memory. Threads give different rows at a time.
class RowSink {
 public:
  virtual ~RowSink() = default;

  /// Receives the rows from y on; may overwrite the memory that they are in.
  virtual void give(int y, const RgbRows& from) = 0;
};

/// The rows of an image in memory; rows that lie in it already stay where they are.
class ImageRows : public RowSource, public RowSink {
 public:
  /// The image must stay where it is.
  explicit ImageRows(const IMG3<float>& image) : rows_(image) {}

  void take(int y, const RgbRows& to) override;
  void give(int y, const RgbRows& from) override;

 private:
  RgbRows rows_;
};

}  // namespace vx
