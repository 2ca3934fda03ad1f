#include "app/AppDelegate.hpp"

#include <utility>

#include "app/MenubarDragView.hpp"

namespace kestrivane {
namespace {

constexpr PopoverSize popoverSize{.width = 360, .height = 540};

const StatusImage idleImage{.source = StatusImage::Source::asset,
                            .name = "menubar-icon",
                            .accessibilityDescription = "",
                            .rendering = StatusImage::Rendering::tinted,
                            .side = 18};
const StatusImage busyImage{.source = StatusImage::Source::symbol,
                            .name = "arrow.triangle.2.circlepath",
                            .accessibilityDescription = "Processing",
                            .rendering = StatusImage::Rendering::original,
                            .side = {}};
const StatusImage dropImage{.source = StatusImage::Source::symbol,
                            .name = "plus.circle.fill",
                            .accessibilityDescription = "Drop Folders",
                            .rendering = StatusImage::Rendering::tinted,
                            .side = {}};

}  // namespace

AppDelegate::AppDelegate(const Services& services, std::shared_ptr<AppViewModel> viewModel)
    : services_(services), viewModel_(std::move(viewModel)) {
  services_.updater.start();
}

void AppDelegate::applicationDidFinishLaunching() {
  services_.application.setActivationPolicy(ActivationPolicy::accessory);
  services_.notificationCenter.requestAuthorization(authorizationAlert | authorizationSound,
                                                    [](bool, const std::exception_ptr&) {});
  services_.popover.setContentSize(popoverSize);
  services_.popover.setBehavior(PopoverBehavior::transient);

  statusItem_ = services_.statusBar.makeStatusItem();
  updateStatusIcon(false);
  if (StatusBarButton* itsButton = button()) {
    itsButton->setAction([this] { togglePopover(); });
    addDragView(*itsButton);
  }
  processing_ = viewModel_->isProcessing().subscribe(
      [this](bool isProcessing) { updateStatusIcon(isProcessing); });
}

void AppDelegate::addDragView(StatusBarButton& button) {
  auto dragView = std::make_unique<MenubarDragView>();
  dragView->onDragStateChanged = [this, &button](bool isDragging) {
    if (isDragging) {
      button.setImage(dropImage);
    } else {
      updateStatusIcon(viewModel_->isProcessing().value());
    }
  };
  dragView->onFoldersDropped = [this](const std::vector<FileURL>& urls) {
    viewModel_->addFolders(urls);
  };
  button.setDropTarget(std::move(dragView));
}

void AppDelegate::togglePopover() {
  if (button() == nullptr) return;
  if (services_.popover.isShown()) {
    services_.popover.performClose();
  } else {
    openPopover();
  }
}

void AppDelegate::openPopover() {
  StatusBarButton* itsButton = button();
  if (itsButton == nullptr || services_.popover.isShown()) return;
  services_.popover.showRelativeTo(*itsButton);
  services_.popover.makeKey();
}

void AppDelegate::updateStatusIcon(bool isProcessing) {
  StatusBarButton* itsButton = button();
  if (itsButton == nullptr) return;
  itsButton->setImage(isProcessing ? busyImage : idleImage);
  itsButton->setAlphaValue(isProcessing ? 0.5 : 1);
}

StatusBarButton* AppDelegate::button() const {
  return statusItem_ ? statusItem_->button() : nullptr;
}

}  // namespace kestrivane
