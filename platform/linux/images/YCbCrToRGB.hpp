// Brightness and colour differences turned into red, green and blue (ITU-T H.273, 8.3).
//
// The loops exist twice from one source, as those of `PngFilter`; both give the same bytes.
// Thread-safety: functions without state. Ownership: rows are borrowed.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/linux/images/HevcPicture.hpp"

namespace kestrivane::heic {

/// What a channel of the result is made of: so much of brightness and of the two differences as
/// they are stored, and a constant, which holds the half that is needed for rounding.
struct YCbCrMatrix {
  /// For channels from 0 to 255, or to 65535 where samples have more than eight bits. Matrices that
  /// are unspecified or unknown are taken for that of ITU-R BT.601.
  static YCbCrMatrix make(const HevcSignal& signal, const HevcFormat& format);

  std::array<std::array<float, 4>, 3> channels{};
  int largest = 0;  ///< of a channel
};

/// Where the samples of one row begin; null for those that the picture has not. `alpha` has the
/// scale of the result already.
template <typename Sample>
struct YCbCrRow {
  const Sample* brightness = nullptr;
  const Sample* blue = nullptr;
  const Sample* red = nullptr;
  const Sample* alpha = nullptr;
  bool isHalvedAcross = false;  ///< one difference for two pixels
};

/// One compilation of the loops.
struct YCbCrLoops {
  /// Writes pixels of one channel, or of three where there are differences, and of alpha if there
  /// is any.
  void (*convert8)(const YCbCrMatrix& matrix, const YCbCrRow<std::uint8_t>& row, std::size_t pixels,
                   std::uint8_t* target);
  void (*convert16)(const YCbCrMatrix& matrix, const YCbCrRow<std::uint16_t>& row,
                    std::size_t pixels, std::uint16_t* target);
};

extern const YCbCrLoops portableYCbCrLoops;

/// The fastest that this processor can run.
const YCbCrLoops& fastestYCbCrLoops();

}  // namespace kestrivane::heic
