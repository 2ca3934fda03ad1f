#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/HeifFile.hpp"

#include <algorithm>

namespace kestrivane::heic {
namespace {

/// The version, with which many boxes begin; the flags after it are passed over.
std::uint8_t takeVersion(HeifBytes& body) {
  const std::uint8_t version = body.u8();
  body.take(3);
  return version;
}

/// Numbers of items are short in the first version of a box.
std::size_t idBytes(bool isWide) {
  return isWide ? 4 : 2;
}

}  // namespace

HeifFile::HeifFile(std::span<const std::uint8_t> bytes) : bytes_(bytes) {
  HeifBytes boxes(bytes);
  while (!boxes.empty()) {
    const HeifBox box = takeBox(boxes);
    if (box.type != fourCC("meta")) continue;
    readMeta(box.body);
    return;
  }
  throw ImageError("the HEIC has no picture");
}

std::vector<std::uint8_t> HeifFile::dataOf(ItemID item) const {
  const Item& found = find(item);
  const auto origin = found.origin == Origin::file ? bytes_ : itemData_;
  std::vector<std::uint8_t> data;
  for (const Extent& extent : found.extents) {
    HeifBytes bytes(origin);
    bytes.take(extent.offset);
    // A length of nothing stands for the rest.
    const auto part = bytes.take(extent.length == 0 ? bytes.rest().size() : extent.length);
    if (part.size() > bytes_.size() - std::min(data.size(), bytes_.size()))
      throw ImageError("an item of the HEIC is larger than the file");
    data.insert(data.end(), part.begin(), part.end());
  }
  return data;
}

const HeifProperty* HeifFile::findProperty(ItemID item, std::uint32_t type) const {
  const auto& properties = find(item).properties;
  const auto found = std::ranges::find(properties, type, &HeifProperty::type);
  return found == properties.end() ? nullptr : &*found;
}

std::vector<ItemID> HeifFile::targetsOf(ItemID item, std::uint32_t reference) const {
  const auto found = std::ranges::find_if(references_, [&](const Reference& each) {
    return each.type == reference && each.from == item;
  });
  return found == references_.end() ? std::vector<ItemID>() : found->to;
}

std::vector<ItemID> HeifFile::sourcesOf(ItemID item, std::uint32_t reference) const {
  std::vector<ItemID> sources;
  for (const Reference& each : references_)
    if (each.type == reference && std::ranges::find(each.to, item) != each.to.end())
      sources.push_back(each.from);
  return sources;
}

const HeifFile::Item& HeifFile::find(ItemID item) const {
  const auto found = items_.find(item);
  if (found == items_.end()) throw ImageError("the HEIC misses an item");
  return found->second;
}

void HeifFile::readMeta(HeifBytes body) {
  takeVersion(body);
  while (!body.empty()) {
    HeifBox box = takeBox(body);
    switch (box.type) {
      case fourCC("pitm"):
        primary_ = static_cast<ItemID>(box.body.number(idBytes(takeVersion(box.body) > 0)));
        break;
      case fourCC("iinf"):
        readItems(box.body);
        break;
      case fourCC("iloc"):
        readLocations(box.body);
        break;
      case fourCC("iref"):
        readReferences(box.body);
        break;
      case fourCC("iprp"):
        readProperties(box.body);
        break;
      case fourCC("idat"):
        itemData_ = box.body.rest();
        break;
      default:
        break;
    }
  }
}

void HeifFile::readItems(HeifBytes body) {
  body.take(takeVersion(body) == 0 ? 2 : 4);  // their number
  while (!body.empty()) {
    HeifBox box = takeBox(body);
    if (box.type != fourCC("infe")) continue;
    const std::uint8_t version = takeVersion(box.body);
    if (version < 2) continue;  // of other kinds of file
    const auto item = static_cast<ItemID>(box.body.number(idBytes(version > 2)));
    if (box.body.u16() != 0) continue;  // encrypted
    items_[item].type = box.body.u32();
  }
}

void HeifFile::readLocations(HeifBytes body) {
  const std::uint8_t version = takeVersion(body);
  if (version > 2) throw ImageError("the HEIC's items are told in an unknown way");
  const std::uint16_t sizes = body.u16();
  const std::size_t offsetBytes = sizes >> 12;
  const std::size_t lengthBytes = sizes >> 8 & 15;
  const std::size_t baseBytes = sizes >> 4 & 15;
  const std::size_t indexBytes = version > 0 ? sizes & 15 : 0;
  if (std::max({offsetBytes, lengthBytes, baseBytes, indexBytes}) > 8)
    throw ImageError("the HEIC's offsets are too long");
  std::uint64_t count = body.number(idBytes(version > 1));
  for (; count > 0; --count) {
    Item& item = items_[static_cast<ItemID>(body.number(idBytes(version > 1)))];
    const unsigned origin = version > 0 ? body.u16() & 15 : 0;
    const bool isElsewhere = body.u16() != 0;  // in another file
    if (isElsewhere || origin > static_cast<unsigned>(Origin::itemData))
      throw ImageError("the HEIC's items are in an unknown place");
    item.origin = static_cast<Origin>(origin);
    const std::uint64_t base = body.number(baseBytes);
    std::uint16_t extents = body.u16();
    if (extents > 1 && offsetBytes + lengthBytes == 0)
      throw ImageError("an item of the HEIC has pieces of no size");
    for (; extents > 0; --extents) {
      body.take(indexBytes);
      const std::uint64_t offset = base + body.number(offsetBytes);
      item.extents.push_back({offset, body.number(lengthBytes)});
    }
  }
}

void HeifFile::readReferences(HeifBytes body) {
  const std::size_t size = idBytes(takeVersion(body) > 0);
  while (!body.empty()) {
    HeifBox box = takeBox(body);
    Reference reference{box.type, static_cast<ItemID>(box.body.number(size)), {}};
    for (std::uint16_t count = box.body.u16(); count > 0; --count)
      reference.to.push_back(static_cast<ItemID>(box.body.number(size)));
    references_.push_back(std::move(reference));
  }
}

void HeifFile::readProperties(HeifBytes body) {
  std::vector<HeifProperty> all;
  while (!body.empty()) {
    HeifBox box = takeBox(body);
    if (box.type == fourCC("ipco")) {
      while (!box.body.empty()) {
        const HeifBox property = takeBox(box.body);
        all.push_back({property.type, property.body.rest()});
      }
    } else if (box.type == fourCC("ipma")) {
      readAssociations(box.body, all);
    }
  }
}

void HeifFile::readAssociations(HeifBytes body, const std::vector<HeifProperty>& all) {
  const std::uint8_t version = body.u8();
  body.take(2);
  const bool isWide = (body.u8() & 1) != 0;
  for (std::uint32_t count = body.u32(); count > 0; --count) {
    Item& item = items_[static_cast<ItemID>(body.number(idBytes(version > 0)))];
    for (std::uint8_t properties = body.u8(); properties > 0; --properties) {
      const unsigned entry = isWide ? body.u16() : body.u8();
      const unsigned essential = isWide ? 0x8000 : 0x80;
      const unsigned index = entry & (essential - 1);
      if (index == 0) continue;
      if (index > all.size()) throw ImageError("the HEIC misses a property");
      HeifProperty property = all[index - 1];
      property.isEssential = (entry & essential) != 0;
      item.properties.push_back(property);
    }
  }
}

}  // namespace kestrivane::heic
