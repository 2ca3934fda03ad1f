#ifndef __APPLE__
#error "This adapter is for macOS."
#endif

#include "platform/macos/MacProcess.hpp"

#include <fcntl.h>

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

int MacProcess::run(const FileURL& executableURL, const std::vector<std::string>& arguments) {
  @autoreleasepool {
    NSTask* const task = [[NSTask alloc] init];
    task.executableURL = nsURL(executableURL);
    task.arguments = nsStrings(arguments);
    // The task holds the pipe: its unread end is open for as long as the program runs.
    task.standardError = unreadPipe();
    NSError* error = nil;
    if (![task launchAndReturnError:&error]) throw platformError(error);
    [task waitUntilExit];
    const bool isKilled = task.terminationReason == NSTaskTerminationReasonUncaughtSignal;
    return isKilled ? 128 + task.terminationStatus : task.terminationStatus;
  }
}

}  // namespace kestrivane
