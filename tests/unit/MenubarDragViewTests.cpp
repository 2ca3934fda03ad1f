#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "app/MenubarDragView.hpp"

namespace kestrivane::test {
namespace {

class MenubarDragViewTest : public testing::Test {
 protected:
  MenubarDragViewTest() {
    view.onDragStateChanged = [this](bool isDragging) {
      calls.push_back(isDragging ? "dragging" : "not dragging");
      EXPECT_EQ(view.highlight().has_value(), isDragging);
    };
    view.onFoldersDropped = [this](const std::vector<FileURL>& urls) {
      std::string call = "dropped";
      for (const FileURL& url : urls)
        call += " " + url.path();
      calls.push_back(call);
    };
  }

  using Calls = std::vector<std::string>;

  MenubarDragView view;
  Calls calls;
};

TEST_F(MenubarDragViewTest, IsInvisibleAtFirst) {
  EXPECT_EQ(view.highlight(), std::nullopt);
  EXPECT_EQ(calls, Calls{});
}

TEST_F(MenubarDragViewTest, ADragThatEntersIsShownByARoundedRectangleOfTheAccentColour) {
  view.draggingEntered();
  EXPECT_EQ(view.highlight(), (DropHighlight{.opacity = 0.3, .inset = 2.0, .cornerRadius = 4.0}));
  EXPECT_EQ(calls, Calls{"dragging"});
}

TEST_F(MenubarDragViewTest, ADragThatLeavesIsShownNoLongerAndNothingIsDropped) {
  view.draggingEntered();
  view.draggingExited();
  EXPECT_EQ(view.highlight(), std::nullopt);
  EXPECT_EQ(calls, (Calls{"dragging", "not dragging"}));
}

TEST_F(MenubarDragViewTest, ADropOfSeveralIsHandedOnAtOnceAndInItsOrder) {
  view.draggingEntered();
  EXPECT_TRUE(view.performDragOperation([] {
    return std::vector{FileURL("/c"), FileURL("/a"), FileURL("/b")};
  }));
  EXPECT_EQ(calls, (Calls{"dragging", "not dragging", "dropped /c /a /b"}));
}

TEST_F(MenubarDragViewTest, TheHighlightEndsBeforeTheDropIsRead) {
  view.draggingEntered();
  EXPECT_TRUE(view.performDragOperation([this] {
    calls.push_back("read");
    return std::vector{FileURL("/a")};
  }));
  EXPECT_EQ(calls, (Calls{"dragging", "not dragging", "read", "dropped /a"}));
}

TEST_F(MenubarDragViewTest, PlainFilesAreHandedOnToo) {
  EXPECT_TRUE(view.performDragOperation([] { return std::vector{FileURL("/photo.png")}; }));
  EXPECT_EQ(calls, (Calls{"not dragging", "dropped /photo.png"}));
}

TEST_F(MenubarDragViewTest, ADropThatCannotBeReadEndsTheHighlightAndIsRefused) {
  view.draggingEntered();
  EXPECT_FALSE(view.performDragOperation([] { return std::nullopt; }));
  EXPECT_EQ(calls, (Calls{"dragging", "not dragging"}));
}

TEST_F(MenubarDragViewTest, AnEmptyDropEndsTheHighlightAndIsRefused) {
  view.draggingEntered();
  EXPECT_FALSE(view.performDragOperation([] { return std::vector<FileURL>(); }));
  EXPECT_EQ(calls, (Calls{"dragging", "not dragging"}));
}

TEST_F(MenubarDragViewTest, ADropIsAcceptedEvenWhenNobodyListens) {
  MenubarDragView unheard;
  unheard.draggingEntered();
  EXPECT_TRUE(unheard.performDragOperation([] { return std::vector{FileURL("/a")}; }));
  EXPECT_FALSE(unheard.performDragOperation([] { return std::nullopt; }));
  EXPECT_EQ(unheard.highlight(), std::nullopt);
}

}  // namespace
}  // namespace kestrivane::test
