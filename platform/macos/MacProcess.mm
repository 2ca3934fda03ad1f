#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacProcess.hpp"

#include <cerrno>
#include <mutex>
#include <system_error>
#include <vector>

#include <fcntl.h>

#include "platform/PlatformError.hpp"
#include "platform/macos/FoundationBridge.hpp"

namespace kestrivane {
namespace {

NSArray<NSString*>* nsStrings(const std::vector<std::string>& strings) {
  NSMutableArray<NSString*>* const result = [NSMutableArray arrayWithCapacity:strings.size()];
  for (const std::string& string : strings)
    [result addObject:nsString(string)];
  return result;
}

/// A pipe that never holds up who writes to it: the flag belongs to the pipe's end, which the child
/// inherits, so that what does not fit falls away.
NSPipe* unreadPipe() {
  NSPipe* const pipe = [NSPipe pipe];
  fcntl(pipe.fileHandleForWriting.fileDescriptor, F_SETFL, O_NONBLOCK);
  return pipe;
}

}  // namespace

/// The tasks that were launched and have not been seen to end.
class MacProcess::Running {
 public:
  /// Throws `PlatformError`.
  void launch(NSTask* task) {
    const std::lock_guard lock(mutex_);
    if (isEnding_) throw PlatformError(ECANCELED, std::generic_category().message(ECANCELED));
    NSError* error = nil;
    if (![task launchAndReturnError:&error]) throw platformError(error);
    tasks_.push_back(task);
  }

  void forget(NSTask* task) {
    const std::lock_guard lock(mutex_);
    std::erase(tasks_, task);
  }

  void endAll() {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
    for (NSTask* const& task : tasks_)
      [task terminate];
  }

 private:
  std::mutex mutex_;
  std::vector<NSTask*> tasks_;
  bool isEnding_ = false;
};

MacProcess::MacProcess() : running_(std::make_unique<Running>()) {}

MacProcess::~MacProcess() = default;

void MacProcess::endAll() {
  running_->endAll();
}

int MacProcess::run(const FileURL& executableURL, const std::vector<std::string>& arguments) {
  @autoreleasepool {
    NSTask* const task = [[NSTask alloc] init];
    task.executableURL = nsURL(executableURL);
    task.arguments = nsStrings(arguments);
    // The task holds the pipe: its unread end is open for as long as the program runs.
    task.standardError = unreadPipe();
    running_->launch(task);
    [task waitUntilExit];
    running_->forget(task);
    const bool isKilled = task.terminationReason == NSTaskTerminationReasonUncaughtSignal;
    return isKilled ? 128 + task.terminationStatus : task.terminationStatus;
  }
}

}  // namespace kestrivane
