// The trees of watched directories of all streams, kept small: 32 bytes a node, its name, and a
// place in two hash tables; about 60 bytes a directory in all.
//
// A node is one directory as one stream sees it. The kernel has one watch for a directory; a
// directory that is seen twice has two nodes with the same watch. A node is on a tree, with a
// stream's root at its top, or it is detached with all below it, while its new place is not known.
// Thread-safety: none. Ownership: owns nodes and names; knows nothing of files or of the kernel.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/events/NameArena.hpp"
#include "platform/linux/events/NodeTable.hpp"

namespace kestrivane {

using StreamId = std::uint32_t;

class WatchTree {
 public:
  WatchTree() = default;
  WatchTree(const WatchTree&) = delete;
  WatchTree& operator=(const WatchTree&) = delete;
  ~WatchTree() = default;

  NodeIndex addRoot(StreamId stream, int watch);
  /// `parent` has no child of that name. Names are 1 to 255 bytes.
  NodeIndex addChild(NodeIndex parent, std::string_view name, int watch);

  NodeIndex child(NodeIndex parent, std::string_view name) const;
  NodeIndex parent(NodeIndex node) const { return nodes_[node].parent; }
  std::string_view name(NodeIndex node) const;
  int watch(NodeIndex node) const { return nodes_[node].watch; }
  bool isRoot(NodeIndex node) const { return nodes_[node].kind == Kind::root; }
  bool isDetached(NodeIndex node) const { return nodes_[node].kind == Kind::detached; }

  /// Whether `node` is in use and has this watch.
  bool contains(NodeIndex node, int watch) const;
  /// Whether `ancestor` is `node` or above it.
  bool isAncestor(NodeIndex ancestor, NodeIndex node) const;

  /// The top of what `node` is in: a root or a detached node.
  NodeIndex top(NodeIndex node) const;
  StreamId stream(NodeIndex node) const { return nodes_[top(node)].name; }
  /// The path from the top to `node`: empty for the top, else `/a/b`.
  std::string pathBelowTop(NodeIndex node) const;

  /// The nodes of a watch: the first one, and the one after `node`; `noNode` at the end.
  NodeIndex firstOfWatch(int watch) const;
  NodeIndex nextOfWatch(NodeIndex node) const { return nodes_[node].nextOfWatch; }

  /// Moves a node and all below it; `newParent` is not below it and has no child of that name.
  void move(NodeIndex node, NodeIndex newParent, std::string_view newName);
  /// Takes a child and all below it off its tree.
  void detach(NodeIndex node);
  /// Removes a node and all below it; appends the watches that have no node left.
  void remove(NodeIndex node, std::vector<int>& orphanedWatches);

  /// The walk in which the node was last seen.
  std::uint8_t epoch(NodeIndex node) const { return nodes_[node].epoch; }
  void setEpoch(NodeIndex node, std::uint8_t epoch) { nodes_[node].epoch = epoch; }

  /// `node` and everything below it, parents before children.
  std::vector<NodeIndex> subtree(NodeIndex node) const;
  std::size_t size() const { return nodes_.size() - unused_.size(); }

 private:
  enum class Kind : std::uint8_t { unused, root, child, detached };

  struct Node {
    NodeIndex parent;
    NodeIndex firstChild;
    NodeIndex nextSibling;
    NodeIndex previousSibling;
    NodeIndex nextOfWatch;
    std::int32_t watch;
    std::uint32_t name;  // a handle of `names_`; the stream's identifier in a top
    std::uint8_t nameLength;
    std::uint8_t epoch;
    Kind kind;
  };
  static_assert(sizeof(Node) == 32);

  struct PlaceHash {
    const WatchTree* tree;
    std::size_t operator()(NodeIndex node) const {
      return placeHash(tree->nodes_[node].parent, tree->name(node));
    }
  };
  struct WatchHash {
    const WatchTree* tree;
    std::size_t operator()(NodeIndex node) const { return watchHash(tree->nodes_[node].watch); }
  };
  static std::size_t placeHash(NodeIndex parent, std::string_view name);
  static std::size_t watchHash(int watch);

  NodeIndex allocate(int watch, Kind kind);
  void link(NodeIndex node, NodeIndex parent, std::string_view name);
  void unlink(NodeIndex node);
  void removeOne(NodeIndex node, std::vector<int>& orphanedWatches);

  std::deque<Node> nodes_;  // grows without copying and without spare room
  std::vector<NodeIndex> unused_;
  NameArena names_;
  NodeTable<PlaceHash> byPlace_{PlaceHash{this}};
  NodeTable<WatchHash> byWatch_{WatchHash{this}};  // holds the first node of each watch
};

}  // namespace kestrivane
