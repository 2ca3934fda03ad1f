#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MatroskaExtent.hpp"

#include <bit>

namespace kestrivane {
namespace {

constexpr std::uint64_t headerId = 0x1A45DFA3;
constexpr std::uint64_t segmentId = 0x18538067;

/// Numbers of one to eight bytes; the zeros before the first set bit tell how many follow.
class VariableLengthReader {
 public:
  explicit VariableLengthReader(std::span<const std::uint8_t> bytes) : bytes_(bytes) {}

  std::size_t position() const { return position_; }
  void skip(std::uint64_t count) {
    position_ = count > bytes_.size() - position_ ? bytes_.size()
                                                  : position_ + static_cast<std::size_t>(count);
  }

  /// With the bit that marks its length, as identifiers are written.
  std::optional<std::uint64_t> identifier() {
    const auto length = lengthHere();
    return length ? std::optional(take(*length)) : std::nullopt;
  }

  /// Without that bit. Nothing also for the number that stands for an unknown size.
  std::optional<std::uint64_t> size() {
    const auto length = lengthHere();
    if (!length) return std::nullopt;
    const std::uint64_t mask = (std::uint64_t{1} << (7 * *length)) - 1;
    const std::uint64_t value = take(*length) & mask;
    return value == mask ? std::nullopt : std::optional(value);
  }

 private:
  std::optional<std::size_t> lengthHere() const {
    if (position_ >= bytes_.size() || bytes_[position_] == 0) return std::nullopt;
    const auto length = static_cast<std::size_t>(std::countl_zero(bytes_[position_])) + 1;
    return length <= bytes_.size() - position_ ? std::optional(length) : std::nullopt;
  }

  std::uint64_t take(std::size_t length) {
    std::uint64_t value = 0;
    for (std::size_t i = 0; i < length; ++i)
      value = value << 8 | bytes_[position_++];
    return value;
  }

  std::span<const std::uint8_t> bytes_;
  std::size_t position_ = 0;
};

}  // namespace

std::optional<std::uint64_t> matroskaExtent(std::span<const std::uint8_t> beginning) {
  VariableLengthReader reader(beginning);
  bool isFirst = true;
  while (const auto identifier = reader.identifier()) {
    if (isFirst && *identifier != headerId) return std::nullopt;
    const auto size = reader.size();
    if (!size) return std::nullopt;
    if (*identifier == segmentId) return reader.position() + *size;
    reader.skip(*size);
    isFirst = false;
  }
  return std::nullopt;
}

}  // namespace kestrivane
