#include "monitor/WatchedFolders.hpp"

#include <algorithm>

namespace kestrivane {
namespace {

std::string withoutSlashesAtTheEnd(std::string path) {
  path.resize(path.find_last_not_of('/') + 1);
  return path;
}

}  // namespace

WatchedFolder::WatchedFolder(std::shared_ptr<WatchedFolders> others, const FileURL& folder)
    : others_(std::move(others)),
      folder_(withoutSlashesAtTheEnd(folder.path())),
      resolved_(folder_) {}

WatchedFolder::~WatchedFolder() {
  leave();
  const std::lock_guard lock(others_->mutex_);
  std::erase_if(others_->processing_, [this](const auto& file) { return file.second == this; });
}

void WatchedFolder::enter(const FileURL& resolved) {
  const std::lock_guard lock(others_->mutex_);
  resolved_ = withoutSlashesAtTheEnd(resolved.path());
  others_->bySeniority_.push_back(this);
}

void WatchedFolder::leave() {
  const std::lock_guard lock(others_->mutex_);
  std::erase(others_->bySeniority_, this);
}

void WatchedFolder::beginProcessing(const FileURL& url) {
  const std::lock_guard lock(others_->mutex_);
  others_->processing_.emplace(resolve(url), this);
}

void WatchedFolder::endProcessing(const FileURL& url) {
  const std::lock_guard lock(others_->mutex_);
  others_->processing_.erase({resolve(url), this});
}

bool WatchedFolder::answersFor(const FileURL& oldURL, const FileURL& newURL) const {
  const std::lock_guard lock(others_->mutex_);
  const std::string oldPath = resolve(oldURL);
  const std::string newPath = resolve(newURL);
  const bool isRewritten = std::ranges::any_of(others_->processing_, [&](const auto& file) {
    return file.second != this && (file.first == oldPath || file.first == newPath);
  });
  if (isRewritten) return false;
  for (const WatchedFolder* const senior : others_->bySeniority_) {
    if (senior == this) return true;
    if (senior->holds(oldPath) && senior->holds(newPath)) return false;
  }
  return true;
}

/// `url` as the folder's monitor reports it: what follows the folder's own path has no links.
std::string WatchedFolder::resolve(const FileURL& url) const {
  return resolved_ + url.path().substr(std::min(folder_.size(), url.path().size()));
}

bool WatchedFolder::holds(const std::string& resolvedPath) const {
  return resolvedPath.size() > resolved_.size() && resolvedPath.starts_with(resolved_) &&
         resolvedPath[resolved_.size()] == '/';
}

}  // namespace kestrivane
