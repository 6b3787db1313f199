#pragma once

#include <cstdint>

namespace vx {

// Baseline sequential JPEG (ITU-T T.81) in memory. The codec keeps no state outside the record it
// is given: calls with records, images and streams of their own may run at once.
//
// Two parts live here. The tables, the samples and the scan encoder run in every call of vxUnblock.
// The writer of whole streams, the reader with its markers and its scan decoder, and the round trip
// of both are reached by no exported function: they are the definition of a round trip. The strips
// of lqlib/ make no streams, and the tests hold them to jpegRoundTrip pixel by pixel; libjpeg-turbo
// in turn reads the streams of this codec, and this codec reads its.

/// Answers of the codec: 0 is success. Some belong to files, thumbnails and comments, which this
/// codec does not handle, and never arise.
enum JpegStatus : int {
  kJpegRoiSuccess = 2,
  kJpegInterruptSuccess = 1,
  kJpegOk = 0,
  kJpegException = -1,
  kJpegInvalidEncoder = -2,
  kJpegUnsupportedSubsampling = -3,
  kJpegUnsupportedBytesPerPixel = -4,
  kJpegNoMemory = -5,
  kJpegBadHuffmanTable = -6,
  kJpegBadQuantTable = -7,
  kJpegInvalidProperties = -8,
  kJpegCloseFile = -9,
  kJpegFileName = -10,
  kJpegEndOfData = -11,  ///< the stream ends too early
  kJpegNotSupported = -12,
  kJpegNotJpeg = -13,
  kJpegBadComponent = -14,
  kJpegBadFrame = -15,
  kJpegBadDnl = -16,
  kJpegNoHuffmanTable = -17,
  kJpegNoQuantTable = -18,
  kJpegNoFrame = -19,
  kJpegMultipleFrames = -20,
  kJpegDataError = -21,
  kJpegNoImage = -22,
  kJpegFileError = -23,
  kJpegInternalError = -24,
  kJpegBadRestart = -25,
  kJpegThumbnailTooSmall = -26,
  kJpegThumbnailColor = -27,
  kJpegBufferTooSmall = -28,  ///< the block does not hold the stream
  kJpegUnsupportedFrame = -29,
  kJpegCommentBuffer = -30,
  kJpegReserved = -99
};

enum JpegColor : int { kJpegGrey = 0, kJpegRgb = 1, kJpegYcc = 3 };

enum JpegSubsampling : int {
  kJpeg444 = 0,       ///< none
  kJpeg420 = 1,       ///< chroma halved on both axes
  kJpeg422 = 2,       ///< chroma halved horizontally
  kJpegOtherSampling  ///< what mode 1 reports for other factors
};

enum JpegMode : int { kJpegReadParameters = 1, kJpegReadImage = 3, kJpegWriteImage = 9 };

struct JpegWork;

/// What the codec is told and tells. Filled by jpegInit, then by the caller; released by jpegFree.
struct JpegProperties {
  int useProperties;        ///< reserved
  std::uint8_t* imageData;  ///< interleaved image; read by jpegWrite, written by jpegRead
  int imageWidth;           ///< pixels
  int imageHeight;          ///< pixels; the first row is the top
  int imagePadBytes;        ///< bytes after a row's last pixel; may be negative
  int imageChannels;        ///< 3
  int imageColor;           ///< kJpegRgb
  int imageSubsampling;     ///< 0
  void* streamFile;         ///< null
  std::uint8_t* streamData;
  int streamSize;  ///< bytes at streamData: room for the stream, or what there is to read
  int streamWidth;
  int streamHeight;
  int streamChannels;
  int streamColor;
  int streamSubsampling;
  int thumbWidth;
  int thumbHeight;
  int colorConversion;  ///< 0: samples of the stream are taken for RGB whatever streamColor says
  int upsampling;       ///< 0: a stream with subsampling is refused
  int quality;          ///< 1 to 100; 0 and below: the tables of the standard, above 100 as 100
  JpegWork* work;       ///< private to the codec
};

/// Clears the record, sets its defaults (quality 75, colour conversion and upsampling on) and
/// allocates the work areas.
///
/// @return 0, kJpegInvalidProperties for null, kJpegNoMemory
int jpegInit(JpegProperties* properties) noexcept;

/// Encodes the image into streamData, with the quantisation tables of Annex K scaled by the quality
/// and its Huffman tables.
///
/// Subsampled components are means of 2 or 4 samples with rounding that alternates from row to row;
/// beyond the right and the bottom edge the last column and row are repeated. Bytes behind the
/// stream are left alone; after a failure those of the stream are undefined.
/// @return 0; kJpegInvalidProperties; kJpegNotSupported for another mode, a file, or an axis above
///   65535; kJpegUnsupportedBytesPerPixel; kJpegUnsupportedSubsampling; kJpegNoMemory;
///   kJpegBufferTooSmall
int jpegWrite(JpegProperties* properties, int mode) noexcept;

/// Mode kJpegReadParameters parses the stream up to its first scan and fills the stream fields.
/// Mode kJpegReadImage decodes the image, which must have the size of the stream; streamColor says
/// what the samples are, as mode 1 left it or as the caller knows better.
///
/// Reads every baseline stream of one or three components, with one scan or several, restart
/// intervals and any sampling factors that divide each other. Halved components are doubled by the
/// triangle filter with edges repeated; others are repeated. On a failure the image is untouched.
/// @return 0 or one of the codes
int jpegRead(JpegProperties* properties, int mode) noexcept;

/// Releases the work areas; harmless when there are none.
int jpegFree(JpegProperties* properties) noexcept;

/// The text of a code.
const char* jpegErrorText(int code) noexcept;

/// Encodes and decodes an image of three interleaved bytes a pixel, in place.
///
/// @param block        for the stream; its size decides whether the trip can be made
/// @param useYcc       nonzero: YCbCr in the stream, else RGB
/// @param subsampling  0: none, 1: components two and three halved horizontally, other: both ways
/// @return 1, or 0 on any failure, which leaves the image as it was
int jpegRoundTrip(std::uint8_t* image, int rowStep, int width, int height, std::uint8_t* block,
                  int blockSize, int useYcc, int subsampling, int quality) noexcept;

}  // namespace vx
