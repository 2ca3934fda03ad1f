// A hash set of node indexes that stores 4 bytes a slot and asks its owner for everything else:
// open addressing, linear probing, at most three quarters full.
//
// Thread-safety: none. Ownership: owns its slots; `Hash` is called with the indexes stored here.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

namespace kestrivane {

using NodeIndex = std::uint32_t;
inline constexpr NodeIndex noNode = UINT32_MAX;

/// `Hash` maps a stored index to the hash of its key: `std::size_t operator()(NodeIndex) const`.
template <typename Hash>
class NodeTable {
 public:
  explicit NodeTable(Hash hash) : hash_(std::move(hash)) {}

  /// The index under a key with the hash `hash` for which `matches` holds, or `noNode`.
  template <typename Matches>
  NodeIndex find(std::size_t hash, Matches matches) const {
    if (slots_.empty()) return noNode;
    for (std::size_t slot = hash & mask();; slot = (slot + 1) & mask()) {
      if (slots_[slot] == noNode || matches(slots_[slot])) return slots_[slot];
    }
  }

  /// Adds an index whose key is not in the table.
  void insert(NodeIndex node) {
    if ((count_ + 1) * 4 > slots_.size() * 3) grow();
    place(node);
    ++count_;
  }

  /// Removes an index that is in the table and whose key is still the one it was added under.
  void erase(NodeIndex node) {
    std::size_t hole = hash_(node) & mask();
    while (slots_[hole] != node)
      hole = (hole + 1) & mask();
    // Whatever probing would have found beyond the hole moves into it.
    for (std::size_t slot = (hole + 1) & mask(); slots_[slot] != noNode;
         slot = (slot + 1) & mask()) {
      const std::size_t home = hash_(slots_[slot]) & mask();
      if (((slot - home) & mask()) < ((slot - hole) & mask())) continue;
      slots_[hole] = slots_[slot];
      hole = slot;
    }
    slots_[hole] = noNode;
    --count_;
  }

  /// Puts `replacement`, which has the same key, in the place of `node`.
  void replace(NodeIndex node, NodeIndex replacement) {
    std::size_t slot = hash_(node) & mask();
    while (slots_[slot] != node)
      slot = (slot + 1) & mask();
    slots_[slot] = replacement;
  }

 private:
  std::size_t mask() const { return slots_.size() - 1; }

  void place(NodeIndex node) {
    std::size_t slot = hash_(node) & mask();
    while (slots_[slot] != noNode)
      slot = (slot + 1) & mask();
    slots_[slot] = node;
  }

  void grow() {
    std::vector<NodeIndex> old(slots_.empty() ? 64 : slots_.size() * 2, noNode);
    old.swap(slots_);
    for (const NodeIndex node : old) {
      if (node != noNode) place(node);
    }
  }

  Hash hash_;
  std::vector<NodeIndex> slots_;
  std::size_t count_ = 0;
};

}  // namespace kestrivane
