#include "views/ViewModelObject.hpp"

#include <utility>
#include <vector>

#include "platform/qt/DroppedFiles.hpp"
#include "state/L10n.hpp"

namespace kestrivane {

ViewModelObject::ViewModelObject(std::shared_ptr<AppViewModel> viewModel, Actions actions)
    : viewModel_(std::move(viewModel)), actions_(std::move(actions)) {
  foldersSubscription_ = viewModel_->monitoredFolders().subscribe(
      [this](const auto& folders) { folders_.setFolders(folders); });
  processingSubscription_ =
      viewModel_->isProcessing().subscribe([this](bool) { emit isProcessingChanged(); });
  notificationsSubscription_ = viewModel_->showSuccessNotifications().subscribe(
      [this](bool) { emit showSuccessNotificationsChanged(); });
}

bool ViewModelObject::isRussian() const {
  return L10n::isRussian();
}

void ViewModelObject::addFolders(const QList<QUrl>& urls) {
  std::vector<FileURL> files;
  for (const QUrl& url : urls) {
    if (auto file = fileAtAddress(url.toEncoded())) files.push_back(*std::move(file));
  }
  if (!files.empty()) viewModel_->addFolders(files);
}

void ViewModelObject::removeFolder(int row) {
  if (row < 0 || row >= folders_.rowCount()) return;
  viewModel_->removeFolder(static_cast<std::size_t>(row));
}

}  // namespace kestrivane
