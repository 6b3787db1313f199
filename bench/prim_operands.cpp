#include "bench/prim_operands.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <new>
#include <random>

#include "jpeg/tables.h"
#include "prim/deconvolution.h"
#include "prim/pyramid.h"

namespace vx::bench {
namespace {

constexpr std::ptrdiff_t kLine = 64, kPage = 4096;
// A load that lies 4096 bytes, or a multiple, from a store shortly before waits for it. Each image
// starts three lines before the place in its page where the one before starts, so that what is
// stored last meets loads only a page later.
constexpr std::ptrdiff_t kStagger = kPage - 3 * kLine;

std::ptrdiff_t roundUp(std::ptrdiff_t value, std::ptrdiff_t to) {
  return (value + to - 1) / to * to;
}

template <class T, class Draw>
void repeatPattern(unsigned char* begin, std::ptrdiff_t bytes, Draw draw) {
  std::mt19937 random(1);
  std::vector<T> pattern(32749);  // a prime: no row begins like the one before
  for (T& value : pattern) value = static_cast<T>(draw(static_cast<std::uint32_t>(random())));
  const auto block = static_cast<std::ptrdiff_t>(pattern.size() * sizeof(T));
  for (std::ptrdiff_t at = 0; at < bytes; at += block)
    std::memcpy(begin + at, pattern.data(), static_cast<std::size_t>(std::min(block, bytes - at)));
}

}  // namespace

const prim::GridAxis Operands::kAxis = {true, 0.0f, 1.0f, 0.0f, 18.0f, 0.5f, 18};
const float Operands::kTwist[3][4] = {
    {0.5f, 0.25f, 0.125f, 0.1f}, {0.125f, 0.5f, 0.25f, 0.1f}, {0.25f, 0.125f, 0.5f, 0.1f}};

Operands::Operands(const test::Prim& entry, const std::vector<ImageRole>& images,
                   const Level& level)
    : entry_(entry) {
  std::vector<ImageRole> roles = images;
  if (entry.has("P3IR"))
    for (const std::string_view name : {"plane0", "plane1", "plane2"})
      roles.push_back({name, sizeof(float), true, true, true});
  if (entry.takes("(rows")) roles.push_back({"rows", 2, false, true, false});
  if (entry.takes("(search")) {
    for (const std::string_view name : {"candidate", "target", "srcU", "srcV"})
      roles.push_back({name, sizeof(float), true, true, false});
    for (const std::string_view name : {"best", "dstU", "dstV"})
      roles.push_back({name, sizeof(float), true, true, true});
  }
  chooseSize(roles, level);
  for (const ImageRole& role : roles) planes_.push_back(shape(role));
  for (std::size_t i = 0; i < planes_.size(); ++i) {
    Plane& p = planes_[i];
    place(p, static_cast<int>(i));
    fill(p);
    const bool both =
        p.role.isWritten && (p.role.name == "srcDst" || p.role.name.starts_with("pl"));
    traffic_ += (both ? 2.0 : 1.0) * p.width * p.height * p.pixelBytes;
    footprint_ += static_cast<double>(p.bytes);
    if (both) p.original.assign(p.begin, p.begin + p.bytes);
    inPlace_ = inPlace_ || both;
  }
  if (entry.has("P3IR"))
    for (std::size_t i = 0; i < 3; ++i)
      planePointers_[i] = reinterpret_cast<float*>(planes_[i].origin);
  if (entry.takes("(search")) search_ = searchRow();
  for (int y = 0; y < 8 && entry.takes("(rows"); ++y)
    rowPointers_[y] =
        reinterpret_cast<const std::int16_t*>(plane("rows").origin + y * plane("rows").step);
}

prim::SearchRow Operands::searchRow() {
  const auto at = [this](std::string_view name) { return reinterpret_cast<float*>(image(name)); };
  const auto step = [this](std::string_view name) { return static_cast<int>(plane(name).step); };
  return {at("candidate"), step("candidate"), at("target"), step("target"), list<float>("weights"),
          number("count"), at("best"),        step("best"), at("srcU"),     step("srcU"),
          at("srcV"),      step("srcV"),      at("dstU"),   step("dstU"),   at("dstV"),
          step("dstV")};
}

const prim::JpegQuantiser& Operands::quantiser() {
  static const prim::JpegQuantiser table = jpegQuantiser(jpegQuantTable(false, 75));
  return table;
}

Operands::~Operands() {
  if (state_ != nullptr) prim::primDeconvLRFree_32f_C1R(state_);
}

Operands::Plane Operands::shape(const ImageRole& role) const {
  const bool isDst = role.name == "dst", isSrc = role.name.starts_with("src");
  const int stride = isDst || role.name == "srcDst" ? entry_.destination.stride
                     : isSrc                        ? entry_.source.stride
                                                    : 1;
  int width = width_, height = height_;
  if (isDst && entry_.has("PyrDown")) {
    width = (width + 1) / 2;
    height = (height + 1) / 2;
  } else if (isDst && entry_.has("PyrUp")) {
    width *= 2;
    height *= 2;
  } else if (isDst && entry_.has("Resize")) {
    width = std::max(1, static_cast<int>(width * kFactor));
    height = std::max(1, static_cast<int>(height * kFactor));
  } else if (isDst && entry_.has("Border")) {
    width += 2 * kBorder;
    height += 2 * kBorder;
  } else if (role.name == "packed") {
    width *= 4;
  } else if (role.name == "columns" || role.name == "coefficients" ||
             (isDst && (entry_.has("JpegForward") || entry_.has("JpegQuantise")))) {
    width *= 8;
  } else if (role.name == "rows" || (isDst && entry_.has("16s8u"))) {
    height = 8;
  } else if (role.name == "rgb") {
    width *= 3;
  } else if (isDst && entry_.has("Upsample")) {
    width *= 2;
  } else if (role.name == "near" || role.name == "far") {
    width += *detail::findNumber("depth");
  }
  const bool looksAround = entry_.name.starts_with("primFilter") || entry_.has("3x3");
  const bool isNeighbour = role.name == "candidate" || role.name == "srcU" || role.name == "srcV";
  const bool isRow = entry_.has("Upsample") && !isDst;  // read one beyond both ends
  const int frame = (role.name == "src" && looksAround) || isNeighbour || isRow ? kFrame : 0;
  const int pixelBytes = stride * role.elementBytes;
  const std::ptrdiff_t step =
      roundUp(std::ptrdiff_t{width + 2 * frame} * pixelBytes, kLine) + (height > 1 ? kLine : 0);
  return {role,
          width,
          height,
          frame,
          pixelBytes,
          step,
          step * (height + 2 * (isRow ? 0 : frame)),
          {nullptr, std::free},
          nullptr,
          nullptr,
          {}};
}

std::ptrdiff_t Operands::bytesAt(const std::vector<ImageRole>& roles, int width, int height) {
  width_ = width;
  height_ = height;
  std::ptrdiff_t bytes = 0;
  for (const ImageRole& role : roles) bytes += shape(role).bytes;
  // the state of a deconvolution: two work images and two of the kernel's sums
  if (entry_.has("Deconv"))
    bytes += std::ptrdiff_t{16} * (width + kKernelSize) * (height + kKernelSize);
  return bytes;
}

void Operands::chooseSize(const std::vector<ImageRole>& roles, const Level& level) {
  if (entry_.has("Transpose")) {
    const double side = std::sqrt(static_cast<double>(level.bytes) / sizeof(float));
    width_ = height_ = static_cast<int>(side) / 16 * 16;
    return;
  }
  // The bytes of all operands grow by the same amount with each row, or element of a vector.
  if (entry_.name.starts_with("primv") || entry_.has("Jpeg")) {
    const std::ptrdiff_t one = bytesAt(roles, 64, 1), each = bytesAt(roles, 128, 1) - one;
    width_ = 64 * static_cast<int>(1 + std::max<std::ptrdiff_t>(0, level.bytes - one) / each);
    return;
  }
  int widest = 1;
  for (const ImageRole& role : roles)
    widest = std::max(widest, shape(role).pixelBytes * (entry_.has("PyrUp") ? 2 : 1));
  const int width = std::max(64, level.rowBytes / widest / 64 * 64);
  // pairs of rows, since a pyramid has half of them
  const std::ptrdiff_t few = bytesAt(roles, width, 2), each = bytesAt(roles, width, 4) - few;
  height_ = 2 + 2 * static_cast<int>(std::max<std::ptrdiff_t>(0, level.bytes - few) / each);
}

void Operands::place(Plane& p, int index) {
  const std::ptrdiff_t offset = index * kStagger % kPage;
  p.memory.reset(static_cast<unsigned char*>(
      std::aligned_alloc(kPage, static_cast<std::size_t>(roundUp(p.bytes + offset, kPage)))));
  if (p.memory == nullptr) throw std::bad_alloc();
  p.begin = p.memory.get() + offset;
  const bool hasRowsAround = p.bytes > p.step * p.height;
  p.origin = p.begin + p.frame * (p.pixelBytes + (hasRowsAround ? p.step : 0));
}

// Floats in 0.25 to 1, or in the range that a conversion goes to: no denormals, no divisor near 0,
// no infinities after a few calls in place. 16-bit values stay off -32768, which ends a search.
void Operands::fill(Plane& p) const {
  if (p.role.name == "column") {
    const int depth = *detail::findNumber("depth");
    int* const columns = reinterpret_cast<int*>(p.begin);
    for (int x = 0; x < p.width; ++x)
      columns[x] = depth * static_cast<int>(std::ptrdiff_t{8} * x / p.width);
  } else if (p.role.isFloat) {
    const float range = entry_.has("32f8u_") ? 255.0f : entry_.has("32f16") ? 32767.0f : 1.0f;
    repeatPattern<float>(p.begin, p.bytes, [range](std::uint32_t r) {
      return range * (0.25f + 0.75f * 0x1p-24f * static_cast<float>(r >> 8));
    });
  } else if (p.role.elementBytes == 2) {
    repeatPattern<std::uint16_t>(p.begin, p.bytes, [&](std::uint32_t r) {
      if (entry_.has("Jpeg") && p.role.isSigned) return static_cast<int>(r % 256) - 128;
      return p.role.isSigned ? static_cast<int>(r % 60000) - 30000 : static_cast<int>(r >> 16);
    });
  } else if (p.role.name == "mask") {
    repeatPattern<std::uint8_t>(p.begin, p.bytes, [](std::uint32_t r) { return r % 2 * 255; });
  } else {
    repeatPattern<std::uint8_t>(p.begin, p.bytes, [](std::uint32_t r) { return r % 256; });
  }
}

void Operands::restore() {
  for (Plane& p : planes_) {
    if (p.original.empty()) continue;
    std::memcpy(p.begin, p.original.data(), p.original.size());
    for (std::ptrdiff_t at = 0; at < p.bytes; at += kLine)
      static_cast<void>(*static_cast<volatile unsigned char*>(p.begin + at));
  }
}

const Operands::Plane& Operands::plane(std::string_view name) const {
  for (const Plane& p : planes_)
    if (p.role.name == name) return p;
  return planes_.front();  // "step", which all planes share
}

int Operands::number(std::string_view name) const {
  if (name == "width" || name == "srcWidth" || name == "roiWidth" || name == "length" ||
      name == "cells")
    return width_;
  if (name == "blocks") return width_ / 8;
  if (name == "height" || name == "srcHeight" || name == "roiHeight") return height_;
  if (name == "dstWidth") return plane("dst").width;
  if (name == "dstHeight") return plane("dst").height;
  if (name == "mask") return entry_.has("Vert") ? 13 : entry_.has("Horiz") ? 31 : 33;
  if (name == "step") return static_cast<int>(planes_.front().step);
  if (detail::isStep(name)) return static_cast<int>(plane(name.substr(0, name.size() - 4)).step);
  return detail::findNumber(name).value_or(0);
}

void* Operands::scratch() {
  int bytes = 0;
  (entry_.has("Down") ? prim::primPyrDownGetBufSize : prim::primPyrUpGetBufSize)(width_, 13, 1,
                                                                                 &bytes);
  scratch_.resize(static_cast<std::size_t>(bytes));
  return scratch_.data();
}

prim::primDeconvLRState* Operands::state() {
  std::vector<float> kernel(kKernelSize * kKernelSize, 0.04f);
  prim::primDeconvLRInitAlloc_32f_C1R(&state_, kernel.data(), kKernelSize, width_ + kKernelSize - 1,
                                      height_ + kKernelSize - 1, 1e-4f);
  return state_;
}

}  // namespace vx::bench
