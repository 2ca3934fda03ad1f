// Puts together a HEIC (ISO/IEC 23008-12): items, what is said about them and how they belong
// together; the counterpart of `HeifFile`.
//
// Thread-safety: none. Ownership: copies what it is given, until it is written.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/linux/images/HeifFile.hpp"
#include "platform/linux/images/ImageOutput.hpp"

namespace kestrivane::heic {

class HeifFileWriter {
 public:
  /// `isHidden` for an item that is only a part of another. Throws `ImageError` when there are more
  /// items than the format has numbers for.
  ItemID addItem(std::uint32_t type, std::vector<std::uint8_t> data, bool isHidden);

  /// What is said of several items in the same words is written once.
  void addProperty(ItemID item, const HeifProperty& property);

  /// `from` points to each of `to`, in this order.
  void addReference(std::uint32_t type, ItemID from, std::vector<ItemID> to);

  /// Writes the file, whose picture is `primary`. `fileType` is the body of its first box: the
  /// brands. The first error of `output` is for its owner to look at.
  void write(std::span<const std::uint8_t> fileType, ItemID primary, ImageOutput& output) const;

 private:
  using Bytes = std::vector<std::uint8_t>;
  struct Item {
    std::uint32_t type;
    Bytes data;
    bool isHidden;
    std::vector<std::uint8_t> associations;  // numbers of properties, from 1, as they are stored
  };
  struct Reference {
    std::uint32_t type;
    ItemID from;
    std::vector<ItemID> to;
  };

  Bytes metaBox(ItemID primary, std::uint64_t firstDatum) const;
  Bytes locationBox(std::uint64_t firstDatum) const;
  Bytes itemInfoBox() const;
  Bytes referenceBox() const;
  Bytes propertiesBox() const;

  std::vector<Item> items_;  // the first has the number 1
  std::vector<Bytes> properties_;
  std::vector<Reference> references_;
};

}  // namespace kestrivane::heic
