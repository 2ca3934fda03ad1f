#include <algorithm>
#include <map>
#include <random>
#include <set>

#include <gtest/gtest.h>

#include "platform/linux/events/WatchTree.hpp"

namespace kestrivane {
namespace {

TEST(WatchTreeTest, FindsChildrenByNameAndNodesByWatch) {
  WatchTree tree;
  const NodeIndex root = tree.addRoot(5, 1);
  const NodeIndex a = tree.addChild(root, "a", 2);
  const NodeIndex b = tree.addChild(a, "b", 3);
  EXPECT_EQ(a, tree.child(root, "a"));
  EXPECT_EQ(noNode, tree.child(root, "b"));
  EXPECT_EQ(b, tree.firstOfWatch(3));
  EXPECT_EQ(noNode, tree.firstOfWatch(4));
  EXPECT_EQ("/a/b", tree.pathBelowTop(b));
  EXPECT_EQ("", tree.pathBelowTop(root));
  EXPECT_EQ(5U, tree.stream(b));
}

TEST(WatchTreeTest, OneWatchMayHaveSeveralNodes) {
  WatchTree tree;
  std::set<NodeIndex> added{tree.addRoot(1, 9), tree.addRoot(2, 9),
                            tree.addChild(tree.addRoot(3, 1), "x", 9)};
  std::set<NodeIndex> found;
  for (NodeIndex node = tree.firstOfWatch(9); node != noNode; node = tree.nextOfWatch(node))
    found.insert(node);
  EXPECT_EQ(added, found);

  std::vector<int> orphaned;
  for (const NodeIndex node : added) {
    EXPECT_TRUE(orphaned.empty());
    tree.remove(node, orphaned);
  }
  EXPECT_EQ(std::vector<int>{9}, orphaned);
  EXPECT_EQ(noNode, tree.firstOfWatch(9));
}

TEST(WatchTreeTest, MovingADirectoryTakesEverythingBelowAlong) {
  WatchTree tree;
  const NodeIndex root = tree.addRoot(1, 1);
  const NodeIndex a = tree.addChild(root, "a", 2);
  const NodeIndex b = tree.addChild(root, "b", 3);
  const NodeIndex deep = tree.addChild(a, "deep", 4);
  tree.move(a, b, "renamed");
  EXPECT_EQ("/b/renamed/deep", tree.pathBelowTop(deep));
  EXPECT_EQ(noNode, tree.child(root, "a"));
  EXPECT_EQ(a, tree.child(b, "renamed"));
}

TEST(WatchTreeTest, ADetachedDirectoryKeepsItsStreamAndCanBePutBack) {
  WatchTree tree;
  const NodeIndex root = tree.addRoot(4, 1);
  const NodeIndex a = tree.addChild(root, "a", 2);
  const NodeIndex deep = tree.addChild(a, "deep", 3);
  tree.detach(a);
  EXPECT_TRUE(tree.isDetached(tree.top(deep)));
  EXPECT_EQ(4U, tree.stream(deep));
  EXPECT_EQ(noNode, tree.child(root, "a"));
  tree.move(a, root, "b");
  EXPECT_FALSE(tree.isDetached(tree.top(deep)));
  EXPECT_EQ("/b/deep", tree.pathBelowTop(deep));
}

TEST(WatchTreeTest, NamesAreBytesUpTo255OfThem) {
  WatchTree tree;
  const NodeIndex root = tree.addRoot(1, 1);
  const std::vector<std::string> names{std::string(255, 'n'), "line\nfeed", "\xff\xfe",
                                       "apostrophe's -> x", " "};
  int watch = 2;
  for (const std::string& name : names)
    tree.addChild(root, name, watch++);
  for (const std::string& name : names)
    EXPECT_EQ("/" + name, tree.pathBelowTop(tree.child(root, name)));
}

TEST(WatchTreeTest, AStaleNodeIsRecognised) {
  WatchTree tree;
  const NodeIndex root = tree.addRoot(1, 1);
  const NodeIndex a = tree.addChild(root, "a", 2);
  std::vector<int> orphaned;
  tree.remove(a, orphaned);
  EXPECT_FALSE(tree.contains(a, 2));
  const NodeIndex b = tree.addChild(root, "b", 3);
  EXPECT_EQ(a, b) << "room is used again";
  EXPECT_FALSE(tree.contains(a, 2));
  EXPECT_TRUE(tree.contains(b, 3));
}

// The same random changes on the tree and on a map from paths to watches.
TEST(WatchTreeTest, AgreesWithASimpleModelOverManyRandomChanges) {
  WatchTree tree;
  const NodeIndex root = tree.addRoot(1, 0);
  std::map<std::string, int> model{{"", 0}};
  int lastWatch = 0;
  std::mt19937 random(20240229);
  const auto below = [](const std::string& path, const std::string& top) {
    return path == top || path.starts_with(top + "/");
  };

  for (int step = 0; step < 20000; ++step) {
    auto any = model.begin();
    std::advance(any, random() % model.size());
    auto other = model.begin();
    std::advance(other, random() % model.size());
    const std::string from = any->first;
    const NodeIndex node = tree.firstOfWatch(any->second);
    const NodeIndex otherNode = tree.firstOfWatch(other->second);
    const std::string name = std::string(random() % 40 + 1, 'a') + std::to_string(random() % 8);
    const std::string to = other->first + "/" + name;
    const bool isTaken = model.contains(to);
    ASSERT_EQ(isTaken, tree.child(otherNode, name) != noNode);

    const auto kind = random() % 10;
    if (kind < 6) {
      if (isTaken || model.size() > 500) continue;
      model[to] = ++lastWatch;
      tree.addChild(otherNode, name, lastWatch);
    } else if (kind < 9) {
      if (isTaken || node == root || below(other->first, from)) continue;
      std::map<std::string, int> moved;
      for (const auto& [path, watch] : model)
        moved[below(path, from) ? to + path.substr(from.size()) : path] = watch;
      model = std::move(moved);
      tree.move(node, otherNode, name);
    } else if (node != root) {
      std::vector<int> expected;
      for (const auto& [path, watch] : model) {
        if (below(path, from)) expected.push_back(watch);
      }
      std::erase_if(model, [&](const auto& each) { return below(each.first, from); });
      std::vector<int> orphaned;
      tree.remove(node, orphaned);
      std::ranges::sort(expected);
      std::ranges::sort(orphaned);
      ASSERT_EQ(expected, orphaned);
    }
  }

  ASSERT_GT(model.size(), 10U);
  EXPECT_EQ(model.size(), tree.size());
  EXPECT_EQ(model.size(), tree.subtree(root).size());
  for (const auto& [path, watch] : model)
    EXPECT_EQ(path, tree.pathBelowTop(tree.firstOfWatch(watch)));
}

}  // namespace
}  // namespace kestrivane
