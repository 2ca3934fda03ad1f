#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/events/Inotify.hpp"

#include <cerrno>
#include <cstring>
#include <system_error>

#include "platform/PlatformError.hpp"

namespace kestrivane {

namespace {

// A file counts as modified when a writer closes it: a report for every single write would fill the
// queue during one long copy. IN_MOVE_SELF and IN_IGNORED tell the fate of the directory itself.
constexpr std::uint32_t watchMask = IN_CREATE | IN_DELETE | IN_MOVED_FROM | IN_MOVED_TO |
                                    IN_ATTRIB | IN_CLOSE_WRITE | IN_MOVE_SELF | IN_EXCL_UNLINK |
                                    IN_ONLYDIR | IN_DONT_FOLLOW;

}  // namespace

std::unique_ptr<Inotify> Inotify::create() {
  FileDescriptor descriptor(::inotify_init1(IN_NONBLOCK | IN_CLOEXEC));
  if (!descriptor) throw PlatformError(errno, "inotify: " + std::generic_category().message(errno));
  return std::unique_ptr<Inotify>(new Inotify(std::move(descriptor)));
}

int Inotify::addWatch(const char* path) const {
  const int watch = ::inotify_add_watch(descriptor_.get(), path, watchMask);
  return watch >= 0 ? watch : -errno;
}

void Inotify::removeWatch(int watch) const {
  ::inotify_rm_watch(descriptor_.get(), watch);
}

const std::vector<RawEvent>& Inotify::read() {
  events_.clear();
  const ssize_t length = ::read(descriptor_.get(), buffer_.get(), bufferSize);
  for (std::size_t offset = 0; length > 0 && offset < static_cast<std::size_t>(length);) {
    inotify_event event;
    std::memcpy(&event, buffer_.get() + offset, sizeof event);
    // The name is padded with NUL bytes to `event.len`.
    const char* const name = reinterpret_cast<const char*>(buffer_.get() + offset + sizeof event);
    events_.push_back({event.wd, event.mask, event.cookie, {name, ::strnlen(name, event.len)}});
    offset += sizeof event + event.len;
  }
  return events_;
}

}  // namespace kestrivane
