#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/HeifFileWriter.hpp"

#include <algorithm>
#include <limits>
#include <utility>

namespace kestrivane::heic {
namespace {

using Bytes = std::vector<std::uint8_t>;

void append(Bytes& target, std::span<const std::uint8_t> bytes) {
  target.insert(target.end(), bytes.begin(), bytes.end());
}

/// The `count` lowest bytes of a number, the highest first.
void appendNumber(Bytes& target, std::size_t count, std::uint64_t number) {
  while (count-- > 0)
    target.push_back(static_cast<std::uint8_t>(number >> 8 * count));
}

Bytes box(std::uint32_t type, std::span<const std::uint8_t> body) {
  constexpr std::size_t headerBytes = 8;
  Bytes made;
  made.reserve(headerBytes + body.size());
  appendNumber(made, 4, headerBytes + body.size());
  appendNumber(made, 4, type);
  append(made, body);
  return made;
}

/// The body of a box that has a version, to be continued.
Bytes versioned(std::uint8_t version, std::uint32_t flags = 0) {
  Bytes body{version};
  appendNumber(body, 3, flags);
  return body;
}

}  // namespace

ItemID HeifFileWriter::addItem(std::uint32_t type, Bytes data, bool isHidden) {
  if (items_.size() == std::numeric_limits<std::uint16_t>::max())
    throw ImageError("the picture is too large for a HEIC");
  items_.push_back({type, std::move(data), isHidden, {}});
  return static_cast<ItemID>(items_.size());
}

void HeifFileWriter::addProperty(ItemID item, const HeifProperty& property) {
  constexpr std::size_t maximum = 127;
  constexpr std::uint8_t essential = 0x80;
  const Bytes made = box(property.type, property.body);
  auto found = std::ranges::find(properties_, made);
  if (found == properties_.end()) {
    if (properties_.size() == maximum) throw ImageError("too much is said about a HEIC's items");
    found = properties_.insert(found, made);
  }
  const auto number = static_cast<std::uint8_t>(found - properties_.begin() + 1);
  items_[item - 1].associations.push_back(property.isEssential ? number | essential : number);
}

void HeifFileWriter::addReference(std::uint32_t type, ItemID from, std::vector<ItemID> to) {
  references_.push_back({type, from, std::move(to)});
}

void HeifFileWriter::write(std::span<const std::uint8_t> fileType, ItemID primary,
                           ImageOutput& output) const {
  const Bytes first = box(fourCC("ftyp"), fileType);
  const std::size_t metaBytes = metaBox(primary, 0).size();
  constexpr std::size_t headerBytes = 8;
  std::uint64_t dataBytes = 0;
  for (const Item& item : items_)
    dataBytes += item.data.size();
  if (first.size() + metaBytes + headerBytes + dataBytes >
      std::numeric_limits<std::uint32_t>::max())
    throw ImageError("the picture is too large for a HEIC");

  output.write(first);
  output.write(metaBox(primary, first.size() + metaBytes + headerBytes));
  Bytes header;
  appendNumber(header, 4, headerBytes + dataBytes);
  appendNumber(header, 4, fourCC("mdat"));
  output.write(header);
  for (const Item& item : items_)
    output.write(item.data);
}

Bytes HeifFileWriter::metaBox(ItemID primary, std::uint64_t firstDatum) const {
  Bytes handler = versioned(0);
  appendNumber(handler, 4, 0);
  appendNumber(handler, 4, fourCC("pict"));
  handler.resize(handler.size() + 13);  // reserved numbers and an empty name

  Bytes primaryItem = versioned(0);
  appendNumber(primaryItem, 2, primary);

  Bytes body = versioned(0);
  append(body, box(fourCC("hdlr"), handler));
  append(body, box(fourCC("pitm"), primaryItem));
  append(body, locationBox(firstDatum));
  append(body, itemInfoBox());
  append(body, propertiesBox());
  if (!references_.empty()) append(body, referenceBox());
  return box(fourCC("meta"), body);
}

Bytes HeifFileWriter::locationBox(std::uint64_t firstDatum) const {
  Bytes body = versioned(0);
  appendNumber(body, 2, 0x4400);  // offsets and lengths have four bytes, there are no bases
  appendNumber(body, 2, items_.size());
  std::uint64_t offset = firstDatum;
  for (std::size_t i = 0; i < items_.size(); ++i) {
    appendNumber(body, 2, i + 1);
    appendNumber(body, 2, 0);  // in this file
    appendNumber(body, 2, 1);  // in one piece
    appendNumber(body, 4, offset);
    appendNumber(body, 4, items_[i].data.size());
    offset += items_[i].data.size();
  }
  return box(fourCC("iloc"), body);
}

Bytes HeifFileWriter::itemInfoBox() const {
  Bytes body = versioned(0);
  appendNumber(body, 2, items_.size());
  for (std::size_t i = 0; i < items_.size(); ++i) {
    Bytes entry = versioned(2, items_[i].isHidden ? 1 : 0);
    appendNumber(entry, 2, i + 1);
    appendNumber(entry, 2, 0);  // not encrypted
    appendNumber(entry, 4, items_[i].type);
    entry.push_back(0);  // no name
    append(body, box(fourCC("infe"), entry));
  }
  return box(fourCC("iinf"), body);
}

Bytes HeifFileWriter::referenceBox() const {
  Bytes body = versioned(0);
  for (const Reference& reference : references_) {
    Bytes entry;
    appendNumber(entry, 2, reference.from);
    appendNumber(entry, 2, reference.to.size());
    for (const ItemID item : reference.to)
      appendNumber(entry, 2, item);
    append(body, box(reference.type, entry));
  }
  return box(fourCC("iref"), body);
}

Bytes HeifFileWriter::propertiesBox() const {
  Bytes all;
  for (const Bytes& property : properties_)
    append(all, property);
  Bytes associations = versioned(0);
  appendNumber(associations, 4, items_.size());
  for (std::size_t i = 0; i < items_.size(); ++i) {
    appendNumber(associations, 2, i + 1);
    appendNumber(associations, 1, items_[i].associations.size());
    append(associations, items_[i].associations);
  }
  Bytes body = box(fourCC("ipco"), all);
  append(body, box(fourCC("ipma"), associations));
  return box(fourCC("iprp"), body);
}

}  // namespace kestrivane::heic
