// The desktop in memory: an application, a status bar, a popover and an updater that write down
// what they are told, in one journal, so that its order can be checked.
//
// Thread-safety: none; used on the test's thread. Ownership: owns its parts; items that it made
// must not outlive it.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "platform/Application.hpp"
#include "platform/Popover.hpp"
#include "platform/StatusBar.hpp"
#include "platform/Updater.hpp"

namespace kestrivane::test {

using Journal = std::vector<std::string>;

class FakeApplication final : public Application {
 public:
  explicit FakeApplication(Journal& journal) : journal_(journal) {}

  std::optional<ActivationPolicy> policy;

  void setActivationPolicy(ActivationPolicy newPolicy) override {
    policy = newPolicy;
    journal_.push_back("activation policy");
  }
  void terminate() override { journal_.push_back("terminate"); }

 private:
  Journal& journal_;
};

class FakeStatusBarButton final : public StatusBarButton {
 public:
  explicit FakeStatusBarButton(Journal& journal) : journal_(journal) {}

  std::vector<std::string> missingAssets;
  std::optional<StatusImage> image;
  double alpha = 1;
  std::function<void()> action;
  std::unique_ptr<DropTarget> dropTarget;

  void setImage(const StatusImage& newImage) override {
    journal_.push_back("image " + newImage.name);
    for (const std::string& name : missingAssets)
      if (newImage.source == StatusImage::Source::asset && newImage.name == name) return;
    image = newImage;
  }
  void setAlphaValue(double newAlpha) override { alpha = newAlpha; }
  void setAction(std::function<void()> newAction) override {
    action = std::move(newAction);
    journal_.push_back("action");
  }
  void setDropTarget(std::unique_ptr<DropTarget> target) override {
    dropTarget = std::move(target);
    journal_.push_back("drop target");
  }

 private:
  Journal& journal_;
};

class FakeStatusBar final : public StatusBar {
 public:
  explicit FakeStatusBar(Journal& journal) : button(journal), journal_(journal) {}

  FakeStatusBarButton button;
  bool itemsHaveButtons = true;

  std::unique_ptr<StatusItem> makeStatusItem() override {
    journal_.push_back("status item");
    return std::make_unique<Item>(*this);
  }

 private:
  class Item final : public StatusItem {
   public:
    explicit Item(FakeStatusBar& bar) : bar_(bar) {}
    Item(const Item&) = delete;
    Item& operator=(const Item&) = delete;
    ~Item() override {
      bar_.button.action = nullptr;
      bar_.button.dropTarget = nullptr;
    }
    StatusBarButton* button() override { return bar_.itemsHaveButtons ? &bar_.button : nullptr; }

   private:
    FakeStatusBar& bar_;
  };

  Journal& journal_;
};

class FakePopover final : public Popover {
 public:
  explicit FakePopover(Journal& journal) : journal_(journal) {}

  std::optional<PopoverSize> contentSize;
  std::optional<PopoverBehavior> behavior;
  StatusBarButton* anchor = nullptr;  ///< while it is shown
  bool isKey = false;

  void setContentSize(PopoverSize size) override {
    contentSize = size;
    journal_.push_back("content size");
  }
  void setBehavior(PopoverBehavior newBehavior) override {
    behavior = newBehavior;
    journal_.push_back("behaviour");
  }
  bool isShown() const override { return anchor != nullptr; }
  void showRelativeTo(StatusBarButton& button) override {
    anchor = &button;
    journal_.push_back("show");
  }
  void makeKey() override {
    isKey = isShown();
    journal_.push_back("key");
  }
  void performClose() override {
    anchor = nullptr;
    isKey = false;
    journal_.push_back("close");
  }

 private:
  Journal& journal_;
};

class FakeUpdater final : public Updater {
 public:
  explicit FakeUpdater(Journal& journal) : journal_(journal) {}

  void start() override { journal_.push_back("updater"); }
  void checkForUpdates() override { journal_.push_back("check for updates"); }

 private:
  Journal& journal_;
};

}  // namespace kestrivane::test
