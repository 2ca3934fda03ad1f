#include "tests/macos/fakes/FakeFSEvents.hpp"

#include <span>
#include <sstream>

#include "tests/macos/fakes/FakeCoreFoundation.hpp"

namespace kestrivane::test {
namespace {

const void* lastStream = nullptr;

void record(const char* call) {
  fakeSystem().calls.emplace_back(call);
}

}  // namespace

void callBack(FSEventStreamCallback callback, void* info, const std::vector<std::string>& paths,
              const std::vector<std::uint32_t>& flags) {
  std::vector<CFTypeRef> strings;
  for (const std::string& path : paths)
    strings.push_back(fakeSystem().create<CFStringObject>(path));
  auto* const array = fakeSystem().create<CFArrayObject>(strings);
  for (const CFTypeRef string : strings)
    fakeSystem().release(string);
  const std::vector<FSEventStreamEventId> ids(paths.size());
  callback(nullptr, info, paths.size(), array, flags.data(), ids.data());
  fakeSystem().release(array);
}

FSEventStreamObject& lastEventStream() {
  return dynamic_cast<FSEventStreamObject&>(fakeSystem().object(lastStream));
}

}  // namespace kestrivane::test

using namespace kestrivane::test;

FSEventStreamEventId FSEventsGetCurrentEventId() {
  record("FSEventsGetCurrentEventId");
  return fakeSystem().files.currentEventId();
}

FSEventStreamRef FSEventStreamCreate(CFAllocatorRef allocator, FSEventStreamCallback callback,
                                     FSEventStreamContext* context, CFArrayRef pathsToWatch,
                                     FSEventStreamEventId sinceWhen, CFTimeInterval latency,
                                     FSEventStreamCreateFlags flags) {
  std::ostringstream call;
  call << "FSEventStreamCreate";
  std::vector<std::string> paths;
  for (const CFTypeRef path : pathsToWatch->values) {
    paths.push_back(static_cast<CFStringRef>(path)->text);
    call << " " << paths.back();
  }
  call << " since " << sinceWhen << " latency " << latency << " flags 0x" << std::hex << flags;
  if (allocator != kCFAllocatorDefault) call << " with an allocator";
  if (context->version != 0) call << " version " << context->version;
  if (context->retain || context->release || context->copyDescription) call << " with callbacks";
  fakeSystem().calls.push_back(call.str());
  if (fakeSystem().fails("FSEventStreamCreate")) return nullptr;

  auto* const stream = fakeSystem().create<FSEventStreamObject>();
  stream->callback = callback;
  stream->context = *context;
  stream->paths = std::move(paths);
  lastStream = stream;
  return stream;
}

void FSEventStreamSetDispatchQueue(FSEventStreamRef stream, dispatch_queue_t queue) {
  record("FSEventStreamSetDispatchQueue");
  const bool isAlive = fakeSystem().object(queue).kind() == std::string("queue");
  if (!isAlive) return;
  stream->events = fakeSystem().files.createStream(
      {.paths = stream->paths},
      std::shared_ptr<kestrivane::Executor>(std::shared_ptr<void>(), &fakeSystem().loop),
      [callback = stream->callback, info = stream->context.info](
          std::span<const std::string> paths, std::span<const std::uint32_t> flags) {
        callBack(callback, info, {paths.begin(), paths.end()}, {flags.begin(), flags.end()});
      });
}

Boolean FSEventStreamStart(FSEventStreamRef stream) {
  record("FSEventStreamStart");
  if (fakeSystem().fails("FSEventStreamStart")) return 0;
  return stream->events->start() ? 1 : 0;
}

void FSEventStreamStop(FSEventStreamRef stream) {
  record("FSEventStreamStop");
  stream->events->stop();
}

void FSEventStreamInvalidate(FSEventStreamRef) {
  record("FSEventStreamInvalidate");
}

void FSEventStreamRelease(FSEventStreamRef stream) {
  record("FSEventStreamRelease");
  fakeSystem().release(stream);
}
