// A set of up to 256 colours, each with the place at which it was added.
//
// Thread-safety: none. Ownership: owns its colours.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <vector>

namespace kestrivane {

struct PaletteColour {
  std::uint8_t red, green, blue;
};

class PaletteColours {
 public:
  static constexpr std::size_t maximumSize = 256;

  /// `limit` colours at most, and `maximumSize` at most.
  explicit PaletteColours(std::size_t limit) : limit_(limit) {}

  /// The place of the colour, which is added if it is new; nothing when it would be one too many.
  std::optional<std::uint8_t> insert(PaletteColour colour) {
    const auto key =
        static_cast<std::uint32_t>(used | colour.red << 16 | colour.green << 8 | colour.blue);
    // Fibonacci hashing; the table is never more than a quarter full.
    std::size_t slot = (key * 2654435769u) >> (32 - slotBits);
    for (; slots_[slot].key != 0; slot = (slot + 1) % slots_.size())
      if (slots_[slot].key == key) return slots_[slot].place;
    if (colours_.size() == limit_) return std::nullopt;
    slots_[slot] = {key, static_cast<std::uint8_t>(colours_.size())};
    colours_.push_back(colour);
    return slots_[slot].place;
  }

  /// In the order of their places.
  const std::vector<PaletteColour>& all() const { return colours_; }

 private:
  static constexpr int slotBits = 10;
  static constexpr int used = 1 << 24;  // so that no key is 0

  struct Slot {
    std::uint32_t key = 0;
    std::uint8_t place = 0;
  };

  std::size_t limit_;
  std::array<Slot, std::size_t{1} << slotBits> slots_{};
  std::vector<PaletteColour> colours_;
};

}  // namespace kestrivane
