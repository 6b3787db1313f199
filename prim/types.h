#pragma once

#include <cstdint>

namespace vx::prim {

/// One complex sample, real part first.
struct Complex32f {
  float re;
  float im;
};

/// Work space and kernel of the Lucy-Richardson deconvolution; see prim/deconvolution.h.
struct primDeconvLRState;

/// Results of the primitives: 0 is success, a negative value a refusal that wrote nothing, a
/// positive value a warning beside a valid result.
enum Status : int {
  kStatusOk = 0,
  kStatusDivByZero = 6,      ///< a divisor was 0; the element holds an infinity or a NaN
  kStatusLnOfZero = 7,       ///< logarithm of a zero
  kStatusLnOfNegative = 8,   ///< logarithm of a negative element
  kStatusOtherVendor = 20,   ///< no CPUID, or a processor of another vendor
  kStatusUnknownCpu = 21,    ///< processor code outside the mapping
  kStatusNoCacheInfo = 36,   ///< cache data not available
  kStatusUnknownCache = 37,  ///< no known cache descriptor
  kStatusBadParameter = -5,  ///< a numeric parameter out of range
  kStatusBadSize = -6,       ///< width, height or length below 1
  kStatusNullPtr = -8,       ///< a required pointer is null
  kStatusNoMemory = -9,      ///< memory allocation failed
  kStatusBadDataType = -12,  ///< unknown data-type code
  kStatusBadStep = -14,      ///< a step below 1 or too small for the row
  kStatusBadInterpolation = -22,
  kStatusBadFactor = -23,    ///< resize factor at or below 0
  kStatusBadMask = -33,      ///< mask size not supported
  kStatusBadAnchor = -34,    ///< anchor outside the mask
  kStatusShortStep = -37,    ///< step too small for a fixed neighbourhood
  kStatusZeroDivisor = -51,  ///< the divisor of an integer filter is 0
  kStatusBadChannels = -53,  ///< channel count other than 1 or 3
  kStatusFewLutLevels = -106,
  kStatusFewHistogramLevels = -107,
  kStatusUnevenStep = -108,   ///< a step is not a multiple of the element size
  kStatusNoFloatMode = -9998  ///< the processor lacks the floating-point mode
};

/// `roundMode` of the float to integer conversions.
enum RoundMode : int {
  primRndZero = 0,      ///< truncate toward zero
  primRndNear = 1,      ///< nearest, ties to even
  primRndFinancial = 2  ///< nearest, ties away from zero; any other value means the same
};

/// Relation of the compare primitives between the first operand and the second.
enum CompareSelector : int {
  kCompareLess = 0,
  kCompareLessEqual = 1,
  kCompareEqual = 2,
  kCompareGreaterEqual = 3,
  kCompareGreater = 4
};

}  // namespace vx::prim
