#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/WatchTree.hpp"

#include <algorithm>
#include <cassert>
#include <functional>

namespace kestrivane {

NodeIndex WatchTree::addRoot(StreamId stream, int watch) {
  const NodeIndex node = allocate(watch, Kind::root);
  nodes_[node].name = stream;
  return node;
}

NodeIndex WatchTree::addChild(NodeIndex parent, std::string_view name, int watch) {
  const NodeIndex node = allocate(watch, Kind::child);
  link(node, parent, name);
  return node;
}

NodeIndex WatchTree::child(NodeIndex parent, std::string_view name) const {
  return byPlace_.find(placeHash(parent, name), [&](NodeIndex node) {
    return nodes_[node].parent == parent && this->name(node) == name;
  });
}

std::string_view WatchTree::name(NodeIndex node) const {
  const Node& self = nodes_[node];
  if (self.kind != Kind::child) return {};
  return names_.view(self.name, self.nameLength);
}

bool WatchTree::contains(NodeIndex node, int watch) const {
  return node < nodes_.size() && nodes_[node].kind != Kind::unused && nodes_[node].watch == watch;
}

bool WatchTree::isAncestor(NodeIndex ancestor, NodeIndex node) const {
  while (node != noNode && node != ancestor)
    node = nodes_[node].parent;
  return node == ancestor;
}

NodeIndex WatchTree::top(NodeIndex node) const {
  while (nodes_[node].parent != noNode)
    node = nodes_[node].parent;
  return node;
}

std::string WatchTree::pathBelowTop(NodeIndex node) const {
  std::size_t length = 0;
  for (NodeIndex at = node; nodes_[at].kind == Kind::child; at = nodes_[at].parent)
    length += 1U + nodes_[at].nameLength;
  std::string path(length, '/');
  for (NodeIndex at = node; nodes_[at].kind == Kind::child; at = nodes_[at].parent) {
    length -= nodes_[at].nameLength;
    name(at).copy(path.data() + length, nodes_[at].nameLength);
    --length;
  }
  return path;
}

NodeIndex WatchTree::firstOfWatch(int watch) const {
  return byWatch_.find(watchHash(watch),
                       [&](NodeIndex node) { return nodes_[node].watch == watch; });
}

void WatchTree::move(NodeIndex node, NodeIndex newParent, std::string_view newName) {
  assert(!isAncestor(node, newParent));
  detach(node);
  nodes_[node].kind = Kind::child;
  link(node, newParent, newName);
}

void WatchTree::detach(NodeIndex node) {
  Node& self = nodes_[node];
  if (self.kind != Kind::child) return;
  const StreamId streamBefore = stream(node);
  unlink(node);
  self.kind = Kind::detached;
  self.name = streamBefore;
}

void WatchTree::remove(NodeIndex node, std::vector<int>& orphanedWatches) {
  const std::vector<NodeIndex> doomed = subtree(node);
  std::for_each(doomed.rbegin(), doomed.rend(),
                [&](NodeIndex each) { removeOne(each, orphanedWatches); });
}

std::vector<NodeIndex> WatchTree::subtree(NodeIndex node) const {
  std::vector<NodeIndex> found{node};
  for (std::size_t i = 0; i < found.size(); ++i) {
    for (NodeIndex each = nodes_[found[i]].firstChild; each != noNode;
         each = nodes_[each].nextSibling)
      found.push_back(each);
  }
  return found;
}

std::size_t WatchTree::placeHash(NodeIndex parent, std::string_view name) {
  return std::hash<std::string_view>{}(name) ^ (parent * 0x9E3779B97F4A7C15U >> 32);
}

std::size_t WatchTree::watchHash(int watch) {
  // Watches are numbered one after the other. Unmixed, they would fill long runs of slots, and a
  // number that falls into such a run would be searched for to its end.
  return static_cast<std::size_t>(watch) * 0x9E3779B97F4A7C15U >> 32;
}

NodeIndex WatchTree::allocate(int watch, Kind kind) {
  NodeIndex node = 0;
  if (unused_.empty()) {
    node = static_cast<NodeIndex>(nodes_.size());
    nodes_.emplace_back();
  } else {
    node = unused_.back();
    unused_.pop_back();
  }
  nodes_[node] = {.parent = noNode,
                  .firstChild = noNode,
                  .nextSibling = noNode,
                  .previousSibling = noNode,
                  .nextOfWatch = noNode,
                  .watch = watch,
                  .name = 0,
                  .nameLength = 0,
                  .epoch = 0,
                  .kind = kind};
  const NodeIndex first = firstOfWatch(watch);
  if (first == node || first == noNode) {
    byWatch_.insert(node);
  } else {
    nodes_[node].nextOfWatch = nodes_[first].nextOfWatch;
    nodes_[first].nextOfWatch = node;
  }
  return node;
}

void WatchTree::link(NodeIndex node, NodeIndex parent, std::string_view name) {
  Node& self = nodes_[node];
  self.parent = parent;
  self.name = names_.store(name);
  self.nameLength = static_cast<std::uint8_t>(name.size());
  self.nextSibling = nodes_[parent].firstChild;
  self.previousSibling = noNode;
  if (self.nextSibling != noNode) nodes_[self.nextSibling].previousSibling = node;
  nodes_[parent].firstChild = node;
  byPlace_.insert(node);
}

void WatchTree::unlink(NodeIndex node) {
  Node& self = nodes_[node];
  byPlace_.erase(node);
  NodeIndex& before = self.previousSibling != noNode ? nodes_[self.previousSibling].nextSibling
                                                     : nodes_[self.parent].firstChild;
  before = self.nextSibling;
  if (self.nextSibling != noNode) nodes_[self.nextSibling].previousSibling = self.previousSibling;
  names_.release(self.name, self.nameLength);
  self.parent = self.nextSibling = self.previousSibling = noNode;
  self.nameLength = 0;
}

void WatchTree::removeOne(NodeIndex node, std::vector<int>& orphanedWatches) {
  Node& self = nodes_[node];
  if (self.kind == Kind::child) unlink(node);
  const NodeIndex first = firstOfWatch(self.watch);
  if (first != node) {
    NodeIndex before = first;
    while (nodes_[before].nextOfWatch != node)
      before = nodes_[before].nextOfWatch;
    nodes_[before].nextOfWatch = self.nextOfWatch;
  } else if (self.nextOfWatch != noNode) {
    byWatch_.replace(node, self.nextOfWatch);
  } else {
    byWatch_.erase(node);
    orphanedWatches.push_back(self.watch);
  }
  self.kind = Kind::unused;
  unused_.push_back(node);
}

}  // namespace kestrivane
