#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/NameArena.hpp"

#include <cassert>
#include <cstring>

namespace kestrivane {

NameArena::Handle NameArena::store(std::string_view name) {
  const std::size_t cells = cellsFor(name.size());
  assert(cells >= 1 && cells <= maximumCells);
  Handle handle = freed_[cells];
  if (handle != none) {
    std::memcpy(&freed_[cells], at(handle), sizeof(Handle));
  } else {
    if (usedInLastBlock_ + cells > cellsInBlock) {
      blocks_.push_back(std::make_unique<Block>());
      usedInLastBlock_ = 0;
    }
    handle = static_cast<Handle>((blocks_.size() - 1) * cellsInBlock + usedInLastBlock_);
    usedInLastBlock_ += cells;
  }
  std::memcpy(at(handle), name.data(), name.size());
  return handle;
}

void NameArena::release(Handle handle, std::size_t length) {
  Handle& first = freed_[cellsFor(length)];
  std::memcpy(at(handle), &first, sizeof(Handle));
  first = handle;
}

}  // namespace kestrivane
