// One picture of HEVC (ITU-T H.265) decoded by libde265, wholly or not at all.
//
// libde265 conceals damage: it stops where a slice ends too early and hands out what it has. Here
// everything that it warns of is an error, and so is a block that it has not decoded.
// Thread-safety: functions without state. Ownership: a configuration borrows its record.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/linux/images/HevcPicture.hpp"

namespace kestrivane::heic {

/// What is needed beside the slices (HEVCDecoderConfigurationRecord, ISO/IEC 14496-15, 8.3.3.1).
struct HevcConfiguration {
  /// Throws `ImageError`.
  static HevcConfiguration parse(std::span<const std::uint8_t> record);

  Chroma chroma = Chroma::halved;
  int bits = 8;
  std::size_t lengthBytes = 4;  ///< of the number in front of each unit
  std::vector<std::span<const std::uint8_t>> parameterSets;  ///< inside the record
};

/// How many threads a picture may take.
enum class HevcThreads : bool { one, asManyAsUseful };

/// The picture of `units`, each with its length in front. Throws `ImageError` when it is damaged
/// anywhere or is not of this format.
std::unique_ptr<HevcPicture> decodeHevc(const HevcConfiguration& configuration,
                                        std::span<const std::uint8_t> units,
                                        const HevcFormat& format, HevcThreads threads);

}  // namespace kestrivane::heic
