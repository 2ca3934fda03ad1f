#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacFileEventStream.hpp"

#include <chrono>
#include <cstdlib>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "platform/macos/CFReference.hpp"
#include "platform/macos/CFText.hpp"

namespace kestrivane {
namespace {

/// Null when a path is not UTF-8.
CFReference<CFArrayRef> makeCFArray(const std::vector<std::string>& texts) {
  std::vector<CFReference<CFStringRef>> strings;
  std::vector<const void*> values;
  for (const std::string& text : texts) {
    strings.push_back(makeCFString(text));
    if (!strings.back()) return nullptr;
    values.push_back(strings.back().get());
  }
  return CFReference<CFArrayRef>(CFArrayCreate(kCFAllocatorDefault, values.data(),
                                               static_cast<CFIndex>(values.size()),
                                               &kCFTypeArrayCallBacks));
}

/// Ends the program when `object` is not an array of strings: with the flags that a stream is made
/// with here it always is one.
std::vector<std::string> textsOf(CFTypeRef object) {
  if (CFGetTypeID(object) != CFArrayGetTypeID()) std::abort();
  const auto array = static_cast<CFArrayRef>(object);
  std::vector<std::string> texts;
  for (CFIndex i = 0; i < CFArrayGetCount(array); ++i) {
    const CFTypeRef value = CFArrayGetValueAtIndex(array, i);
    if (CFGetTypeID(value) != CFStringGetTypeID()) std::abort();
    texts.push_back(textOf(static_cast<CFStringRef>(value)));
  }
  return texts;
}

}  // namespace

/// Calls the callback until the stream is stopped.
class MacFileEventStream::Delivery {
 public:
  explicit Delivery(Callback callback) : callback_(std::move(callback)) {}

  void deliver(const std::vector<std::string>& paths, std::span<const std::uint32_t> flags) {
    const std::lock_guard lock(running_);
    if (!isStopped_) callback_(paths, flags);
  }

  /// No callback runs any more when it returns, but for the one that it is called from.
  void stop() {
    const std::lock_guard lock(running_);
    isStopped_ = true;
  }

  /// What FSEvents calls. The flag words of the system are those of `FileEventFlag`.
  static void receive(ConstFSEventStreamRef /*stream*/, void* info, std::size_t count, void* paths,
                      const FSEventStreamEventFlags* flags, const FSEventStreamEventId* /*ids*/) {
    if (info == nullptr) return;
    const std::vector<std::uint32_t> words(flags, flags + count);
    static_cast<Delivery*>(info)->deliver(textsOf(paths), words);
  }

 private:
  Callback callback_;
  // Held during the callback. Recursive, because the callback may stop its own stream.
  std::recursive_mutex running_;
  bool isStopped_ = false;
};

std::unique_ptr<FileEventStream> MacFileEventStream::create(
    const FileEventStreamConfiguration& configuration, const std::shared_ptr<Executor>& queue,
    Callback callback) {
  auto dispatchQueue = std::dynamic_pointer_cast<DispatchQueue>(queue);
  const CFReference<CFArrayRef> paths = makeCFArray(configuration.paths);
  if (!dispatchQueue || !paths) return nullptr;

  auto delivery = std::make_shared<Delivery>(std::move(callback));
  FSEventStreamContext context{.version = 0,
                               .info = delivery.get(),
                               .retain = nullptr,
                               .release = nullptr,
                               .copyDescription = nullptr};
  // The word is handed on as it stands, 0x1B for a watched folder. Its bit 0x08 is called "watch
  // root" here; in the system's header that name belongs to 0x04, and 0x08 is "ignore self": what
  // this program itself changes is not reported.
  StreamReference stream(FSEventStreamCreate(
      kCFAllocatorDefault, &Delivery::receive, &context, paths.get(), configuration.sinceWhen,
      std::chrono::duration<CFTimeInterval>(configuration.latency).count(), configuration.flags));
  if (!stream) return nullptr;
  return std::unique_ptr<FileEventStream>(
      new MacFileEventStream(std::move(dispatchQueue), std::move(delivery), std::move(stream)));
}

MacFileEventStream::MacFileEventStream(std::shared_ptr<DispatchQueue> queue,
                                       std::shared_ptr<Delivery> delivery, StreamReference stream)
    : queue_(std::move(queue)), delivery_(std::move(delivery)), stream_(std::move(stream)) {}

bool MacFileEventStream::start() {
  FSEventStreamSetDispatchQueue(stream_.get(), queue_->handle());
  isScheduled_ = true;
  return FSEventStreamStart(stream_.get()) != 0;
}

void MacFileEventStream::stop() {
  // The system forbids stopping a stream that was never put on a queue; such a one is only
  // released.
  if (!isScheduled_ || !stream_) return;
  FSEventStreamStop(stream_.get());
  FSEventStreamInvalidate(stream_.get());
  stream_.reset();
  delivery_->stop();
  queue_->post([delivery = delivery_] {});
}

}  // namespace kestrivane
