#include <memory>

#include <gtest/gtest.h>

#include "monitor/WatchedFolders.hpp"

namespace kestrivane::test {
namespace {

class WatchedFoldersTest : public testing::Test {
 protected:
  std::unique_ptr<WatchedFolder> watch(const std::string& path, const std::string& resolved = {}) {
    auto folder = std::make_unique<WatchedFolder>(folders, FileURL(path));
    folder->enter(FileURL(resolved.empty() ? path : resolved));
    return folder;
  }
  static bool answers(const std::unique_ptr<WatchedFolder>& folder, const std::string& from,
                      const std::string& to) {
    return folder->answersFor(FileURL(from), FileURL(to));
  }

  const std::shared_ptr<WatchedFolders> folders = std::make_shared<WatchedFolders>();
};

TEST_F(WatchedFoldersTest, AFolderAnswersForItsOwnFiles) {
  const auto one = watch("/w");
  const auto other = watch("/w2");
  EXPECT_TRUE(answers(one, "/w/a.png", "/w/a.jpg"));
  EXPECT_TRUE(answers(other, "/w2/a.png", "/w2/a.jpg"));
}

TEST_F(WatchedFoldersTest, TheFolderThatHasBeenWatchedForLongestAnswers) {
  const auto outer = watch("/w");
  const auto inner = watch("/w/inner");
  EXPECT_TRUE(answers(outer, "/w/inner/a.png", "/w/inner/a.jpg"));
  EXPECT_FALSE(answers(inner, "/w/inner/a.png", "/w/inner/a.jpg"));
}

TEST_F(WatchedFoldersTest, AnInnerFolderThatWasThereFirstKeepsItsFiles) {
  const auto inner = watch("/w/inner");
  const auto outer = watch("/w");
  EXPECT_TRUE(answers(inner, "/w/inner/a.png", "/w/inner/a.jpg"));
  EXPECT_FALSE(answers(outer, "/w/inner/a.png", "/w/inner/a.jpg"));
  EXPECT_TRUE(answers(outer, "/w/a.png", "/w/a.jpg"));
  EXPECT_TRUE(answers(outer, "/w/inner2/a.png", "/w/inner2/a.jpg"));
}

TEST_F(WatchedFoldersTest, OnlyAFolderThatSeesBothNamesAnswers) {
  const auto inner = watch("/w/inner");
  const auto outer = watch("/w");
  EXPECT_TRUE(answers(outer, "/w/a.png", "/w/inner/a.jpg"));
  EXPECT_TRUE(answers(outer, "/w/inner/a.png", "/w/a.jpg"));
}

TEST_F(WatchedFoldersTest, OneFolderUnderSeveralNamesAnswersOnce) {
  const auto plain = watch("/w");
  const auto slash = watch("/w/", "/w");
  const auto dots = watch("/x/../w", "/w");
  const auto link = watch("/link", "/w");
  EXPECT_TRUE(answers(plain, "/w/a.png", "/w/a.jpg"));
  EXPECT_FALSE(answers(slash, "/w/a.png", "/w/a.jpg"));
  EXPECT_FALSE(answers(dots, "/x/../w/a.png", "/x/../w/a.jpg"));
  EXPECT_FALSE(answers(link, "/link/a.png", "/link/a.jpg"));
}

TEST_F(WatchedFoldersTest, TheRootHoldsEverything) {
  const auto root = watch("/");
  const auto folder = watch("/w");
  EXPECT_TRUE(answers(root, "/w/a.png", "/w/a.jpg"));
  EXPECT_FALSE(answers(folder, "/w/a.png", "/w/a.jpg"));
}

TEST_F(WatchedFoldersTest, AFolderDoesNotHoldItself) {
  const auto folder = watch("/w.png");
  const auto parent = watch("/");
  EXPECT_TRUE(answers(parent, "/w.png", "/w.jpg"));
}

TEST_F(WatchedFoldersTest, TheNextOneAnswersOnceTheFirstIsNotWatchedAnyMore) {
  auto outer = watch("/w");
  const auto inner = watch("/w/inner");
  outer->leave();
  EXPECT_TRUE(answers(inner, "/w/inner/a.png", "/w/inner/a.jpg"));

  auto again = watch("/w");
  EXPECT_TRUE(answers(inner, "/w/inner/a.png", "/w/inner/a.jpg"));
  EXPECT_FALSE(answers(again, "/w/inner/a.png", "/w/inner/a.jpg"));
}

TEST_F(WatchedFoldersTest, WhatAnEngineRewritesIsNoOtherFoldersBusiness) {
  const auto inner = watch("/w/inner");
  auto outer = watch("/w");
  const FileURL file("/w/inner/a.jpg");
  outer->beginProcessing(file);
  EXPECT_FALSE(answers(inner, "/w/inner/a.jpg", "/w/inner/a.png"));  // the engine renames it back
  EXPECT_FALSE(answers(inner, "/w/inner/b.png", "/w/inner/a.jpg"));
  EXPECT_TRUE(answers(inner, "/w/inner/b.png", "/w/inner/b.jpg"));
  outer->leave();
  EXPECT_FALSE(answers(inner, "/w/inner/a.jpg", "/w/inner/a.png"));
  outer->endProcessing(file);
  EXPECT_TRUE(answers(inner, "/w/inner/a.jpg", "/w/inner/a.png"));

  outer->beginProcessing(file);
  outer.reset();
  EXPECT_TRUE(answers(inner, "/w/inner/a.jpg", "/w/inner/a.png"));
}

}  // namespace
}  // namespace kestrivane::test
