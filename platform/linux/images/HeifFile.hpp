// The items of a HEIC (ISO/IEC 23008-12; their places are told as in ISO/IEC 14496-12, 8.11): which
// of them is the picture, what they are made of and what is said about them.
//
// Thread-safety: may be read from any thread. Ownership: borrows the file's bytes, which outlive
// it.
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "platform/linux/images/HeifBytes.hpp"

namespace kestrivane::heic {

using ItemID = std::uint32_t;

/// What is said about an item, in the order in which it is to be applied.
struct HeifProperty {
  std::uint32_t type = 0;
  std::span<const std::uint8_t> body;
  /// Whether who does not know the property must leave the item alone.
  bool isEssential = false;
};

class HeifFile {
 public:
  /// Throws `ImageError` when the boxes are damaged or there is no picture.
  explicit HeifFile(std::span<const std::uint8_t> bytes);

  ItemID primary() const { return primary_; }
  /// Four characters, as in `fourCC`. Throws `ImageError` when there is no such item; so do all
  /// other functions.
  std::uint32_t typeOf(ItemID item) const { return find(item).type; }
  std::vector<std::uint8_t> dataOf(ItemID item) const;
  const std::vector<HeifProperty>& propertiesOf(ItemID item) const { return find(item).properties; }
  /// The first property of that type, or null.
  const HeifProperty* findProperty(ItemID item, std::uint32_t type) const;
  /// The items that `item` points to by references of that type, in their order.
  std::vector<ItemID> targetsOf(ItemID item, std::uint32_t reference) const;
  /// The items that point to `item`.
  std::vector<ItemID> sourcesOf(ItemID item, std::uint32_t reference) const;

 private:
  enum class Origin : std::uint8_t { file = 0, itemData = 1 };
  struct Extent {
    std::uint64_t offset;
    std::uint64_t length;
  };
  struct Item {
    std::uint32_t type = 0;
    Origin origin = Origin::file;
    std::vector<Extent> extents;
    std::vector<HeifProperty> properties;
  };
  struct Reference {
    std::uint32_t type;
    ItemID from;
    std::vector<ItemID> to;
  };

  const Item& find(ItemID item) const;
  void readMeta(HeifBytes body);
  void readItems(HeifBytes body);
  void readLocations(HeifBytes body);
  void readReferences(HeifBytes body);
  void readProperties(HeifBytes body);
  void readAssociations(HeifBytes body, const std::vector<HeifProperty>& all);

  std::span<const std::uint8_t> bytes_;
  std::span<const std::uint8_t> itemData_;
  std::map<ItemID, Item> items_;
  std::vector<Reference> references_;
  ItemID primary_ = 0;
};

}  // namespace kestrivane::heic
