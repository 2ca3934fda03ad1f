#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacSecurityScopedBookmarks.hpp"

#include <map>
#include <mutex>
#include <utility>

#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {

class MacSecurityScopedBookmarks::ScopedURLs {
 public:
  void insert(const FileURL& folder, NSURL* url) {
    const std::lock_guard lock(mutex_);
    urls_[folder] = url;
  }

  /// The URL with the scope; one of the path alone for a folder that the user has just picked,
  /// which is open to the process anyway.
  NSURL* find(const FileURL& folder) const {
    const std::lock_guard lock(mutex_);
    const auto found = urls_.find(folder);
    return found != urls_.end() ? found->second : nsURL(folder);
  }

  void remove(const FileURL& folder) {
    const std::lock_guard lock(mutex_);
    urls_.erase(folder);
  }

 private:
  mutable std::mutex mutex_;
  std::map<FileURL, NSURL*> urls_;
};

class MacSecurityScopedBookmarks::LatestBookmarks {
 public:
  void insert(const FileURL& folder, Data bookmark) {
    const std::lock_guard lock(mutex_);
    bookmarks_.insert_or_assign(folder, std::move(bookmark));
  }

  std::optional<Data> find(const FileURL& folder) const {
    const std::lock_guard lock(mutex_);
    const auto found = bookmarks_.find(folder);
    if (found == bookmarks_.end()) return std::nullopt;
    return found->second;
  }

 private:
  mutable std::mutex mutex_;
  std::map<FileURL, Data> bookmarks_;
};

MacSecurityScopedBookmarks::MacSecurityScopedBookmarks()
    : scopedURLs_(std::make_unique<ScopedURLs>()), latest_(std::make_unique<LatestBookmarks>()) {}

MacSecurityScopedBookmarks::~MacSecurityScopedBookmarks() = default;

Data MacSecurityScopedBookmarks::bookmarkData(const FileURL& folder) const {
  @autoreleasepool {
    NSError* error = nil;
    NSData* const bookmark =
        [scopedURLs_->find(folder) bookmarkDataWithOptions:NSURLBookmarkCreationWithSecurityScope
                            includingResourceValuesForKeys:nil
                                             relativeToURL:nil
                                                     error:&error];
    if (bookmark == nil) {
      if (auto known = latest_->find(folder)) return *std::move(known);
      throw platformError(error);
    }
    latest_->insert(folder, data(bookmark));
    return data(bookmark);
  }
}

ResolvedBookmark MacSecurityScopedBookmarks::resolve(std::span<const std::byte> bookmark) const {
  @autoreleasepool {
    BOOL isStale = NO;
    NSError* error = nil;
    NSURL* const url = [NSURL URLByResolvingBookmarkData:nsData(bookmark)
                                                 options:NSURLBookmarkResolutionWithSecurityScope
                                           relativeToURL:nil
                                     bookmarkDataIsStale:&isStale
                                                   error:&error];
    if (url == nil) throw platformError(error);
    const FileURL folder = fileURL(url);
    scopedURLs_->insert(folder, url);
    latest_->insert(folder, {bookmark.begin(), bookmark.end()});
    return {.url = folder, .isStale = static_cast<bool>(isStale)};
  }
}

std::optional<FileURL> MacSecurityScopedBookmarks::placeOf(
    std::span<const std::byte> bookmark) const {
  @autoreleasepool {
    NSDictionary* const values = [NSURL resourceValuesForKeys:@[ NSURLPathKey ]
                                             fromBookmarkData:nsData(bookmark)];
    NSString* const path = values[NSURLPathKey];
    if (path == nil) return std::nullopt;
    return FileURL(text(path));
  }
}

bool MacSecurityScopedBookmarks::startAccessing(const FileURL& folder) {
  @autoreleasepool {
    return [scopedURLs_->find(folder) startAccessingSecurityScopedResource];
  }
}

void MacSecurityScopedBookmarks::stopAccessing(const FileURL& folder) {
  @autoreleasepool {
    [scopedURLs_->find(folder) stopAccessingSecurityScopedResource];
    scopedURLs_->remove(folder);
  }
}

}  // namespace kestrivane
