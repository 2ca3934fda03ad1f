// Storage for very many short names: 4 bytes a handle, at most 7 bytes lost a name, no allocation
// of their own. Freed room is reused by names of about the same length.
//
// Thread-safety: none. Ownership: the arena owns the bytes; a view of a name ends with `release`.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

namespace kestrivane {

class NameArena {
 public:
  using Handle = std::uint32_t;

  /// Keeps a copy of `name`, which is 1 to 255 bytes long.
  Handle store(std::string_view name);

  /// Gives back the room of a name of `length` bytes.
  void release(Handle handle, std::size_t length);

  /// The bytes of a stored name of `length` bytes.
  std::string_view view(Handle handle, std::size_t length) const { return {at(handle), length}; }

 private:
  static constexpr std::size_t cellSize = 8;
  static constexpr std::size_t cellsInBlock = 8192;
  static constexpr std::size_t maximumCells = 32;  // 255 bytes
  static constexpr Handle none = UINT32_MAX;

  using Block = std::array<char, cellSize * cellsInBlock>;

  static std::size_t cellsFor(std::size_t length) { return (length + cellSize - 1) / cellSize; }
  char* at(Handle handle) const {
    return blocks_[handle / cellsInBlock]->data() + handle % cellsInBlock * cellSize;
  }

  std::vector<std::unique_ptr<Block>> blocks_;
  std::size_t usedInLastBlock_ = cellsInBlock;
  // The first freed room of each size in cells; each freed room begins with the handle of the next.
  std::array<Handle, maximumCells + 1> freed_ = [] {
    std::array<Handle, maximumCells + 1> empty{};
    empty.fill(none);
    return empty;
  }();
};

}  // namespace kestrivane
