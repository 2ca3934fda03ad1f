#include "tests/support/InMemoryFileSystem.hpp"

#include <algorithm>

#include "platform/PlatformError.hpp"

namespace kestrivane::test {
namespace {

bool isAtOrBelow(const std::string& path, const std::string& folder) {
  return path == folder || path.starts_with(folder + "/");
}

PlatformError failure(int code, const std::string& reason) {
  return PlatformError(code, reason);
}

}  // namespace

/// Delivers on its queue; nothing after `stop`.
class InMemoryFileSystem::Stream final : public FileEventStream {
 public:
  Stream(InMemoryFileSystem& fileSystem, std::vector<std::string> roots,
         std::shared_ptr<Executor> queue, Callback callback)
      : fileSystem_(fileSystem),
        roots_(std::move(roots)),
        queue_(std::move(queue)),
        callback_(std::make_shared<Callback>(std::move(callback))) {}
  ~Stream() override { stop(); }

  bool start() override {
    fileSystem_.streams_.insert(this);
    return true;
  }

  void stop() override {
    fileSystem_.streams_.erase(this);
    callback_.reset();
  }

  void deliver(std::vector<std::string> paths, std::vector<std::uint32_t> flags) {
    queue_->post(
        [callback = std::weak_ptr(callback_), paths = std::move(paths), flags = std::move(flags)] {
          if (const auto alive = callback.lock()) (*alive)(paths, flags);
        });
  }

  bool watches(const std::string& path) const {
    return std::ranges::any_of(
        roots_, [&path](const std::string& root) { return isAtOrBelow(path, root); });
  }

 private:
  InMemoryFileSystem& fileSystem_;
  std::vector<std::string> roots_;
  std::shared_ptr<Executor> queue_;
  std::shared_ptr<Callback> callback_;
};

void InMemoryFileSystem::createDirectory(const std::string& path) {
  items_[path] = std::nullopt;
  report({{path, fileEventItemCreated | fileEventItemIsDir}});
}

void InMemoryFileSystem::writeFile(const std::string& path, std::string content) {
  const bool isNew = !items_.contains(path);
  items_[path] = std::move(content);
  lastWrites_[path] = ++writeCount_;
  report({{path, (isNew ? fileEventItemCreated : fileEventItemModified) | fileEventItemIsFile}});
}

void InMemoryFileSystem::remove(const std::string& path) {
  const bool isDirectory = !items_.at(path);
  std::erase_if(items_, [&path](const auto& item) { return isAtOrBelow(item.first, path); });
  report({{path, fileEventItemRemoved | (isDirectory ? fileEventItemIsDir : fileEventItemIsFile)}});
}

void InMemoryFileSystem::rename(const std::string& from, const std::string& to) {
  const std::uint32_t kind = items_.at(from) ? fileEventItemIsFile : fileEventItemIsDir;
  moveTree(from, to);
  report({{from, fileEventItemRenamed | kind}, {to, fileEventItemRenamed | kind}});
}

void InMemoryFileSystem::moveTree(const std::string& from, const std::string& to) {
  std::map<std::string, std::optional<std::string>> moved;
  for (const auto& [path, content] : items_) {
    if (isAtOrBelow(path, from)) moved[to + path.substr(from.size())] = content;
  }
  std::erase_if(items_, [&from](const auto& item) { return isAtOrBelow(item.first, from); });
  for (auto& [path, content] : moved) {
    items_[path] = std::move(content);
    lastWrites_[path] = ++writeCount_;
  }
}

void InMemoryFileSystem::emit(const std::vector<std::string>& paths,
                              const std::vector<std::uint32_t>& flags) {
  for (Stream* const stream : streams_)
    stream->deliver(paths, flags);
}

void InMemoryFileSystem::report(const std::vector<Event>& events) {
  eventId_ += events.size();
  for (Stream* const stream : streams_) {
    std::vector<std::string> paths;
    std::vector<std::uint32_t> flags;
    for (const Event& event : events) {
      if (!stream->watches(event.path)) continue;
      paths.push_back(event.path);
      flags.push_back(event.flags);
    }
    if (!paths.empty()) stream->deliver(std::move(paths), std::move(flags));
  }
}

std::optional<std::string> InMemoryFileSystem::content(const std::string& path) const {
  const auto item = items_.find(path);
  return item == items_.end() ? std::nullopt : item->second;
}

std::vector<std::string> InMemoryFileSystem::paths(const std::string& folder) const {
  std::vector<std::string> found;
  for (const auto& [path, content] : items_) {
    if (path.starts_with(folder + "/")) found.push_back(path);
  }
  return found;
}

ItemKind InMemoryFileSystem::kindOfItem(const FileURL& url) const {
  existenceQueries.push_back(url.path());
  const auto item = items_.find(url.path());
  if (item == items_.end()) return ItemKind::none;
  return item->second ? ItemKind::file : ItemKind::directory;
}

FileURL InMemoryFileSystem::resolvingSymbolicLinks(const FileURL& url) const {
  const auto link = links_.find(url.path());
  return link == links_.end() ? url : FileURL(link->second);
}

void InMemoryFileSystem::moveItem(const FileURL& source, const FileURL& destination) {
  if (movesFail) throw failure(EACCES, "Moving is not permitted");
  if (!items_.contains(source.path())) throw failure(ENOENT, "Nothing to move");
  if (items_.contains(destination.path())) throw failure(EEXIST, "Something is there already");
  rename(source.path(), destination.path());
}

FileVersion InMemoryFileSystem::versionOfItem(const FileURL& url) const {
  const auto lastWrite = lastWrites_.find(url.path());
  if (lastWrite == lastWrites_.end() || !items_.contains(url.path())) return {};
  return {.inode = 1, .modifiedNanoseconds = lastWrite->second};
}

void InMemoryFileSystem::replaceItem(const FileURL& original, const FileURL& replacement,
                                     const FileVersion& expected) {
  if (replacementsFail) throw failure(ENOSPC, "The disk is full");
  const std::optional<std::string> newContent = content(replacement.path());
  if (!newContent) throw failure(ENOENT, "Nothing to put in place");
  if (!items_.contains(original.path())) throw failure(ENOENT, "Nothing to replace");
  if (versionOfItem(original) != expected) throw failure(ESTALE, "It was changed meanwhile");
  writeFile(original.path(), *newContent);
  items_.erase(replacement.path());
}

FileURL InMemoryFileSystem::temporaryDirectory() {
  if (temporaryDirectoryFails) throw failure(EROFS, "There is no temporary folder");
  return FileURL("/tmp");
}

std::unique_ptr<FileEventStream> InMemoryFileSystem::createStream(
    FileEventStreamConfiguration configuration, std::shared_ptr<Executor> queue,
    FileEventStream::Callback callback) {
  configurations.push_back(configuration);
  if (streamsFail) return nullptr;
  return std::make_unique<Stream>(*this, std::move(configuration.paths), std::move(queue),
                                  std::move(callback));
}

}  // namespace kestrivane::test
