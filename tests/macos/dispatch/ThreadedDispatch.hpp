// The functions of libdispatch over the threads of this system, so that the executors of macOS run
// in tests: a thread for each job of a concurrent queue, and one for a serial queue that has work.
//
// Thread-safety: as libdispatch. Ownership: counts the references to queues and groups.
#pragma once

#include <string>
#include <vector>

namespace kestrivane::test {

/// A line for each queue that was made, with its label and its quality of service, and for each
/// concurrent one that was asked for: "global" and that.
std::vector<std::string> queues();

/// To be called when the executors are gone: waits for all threads, and returns how many queues and
/// groups were made and not released.
int endDispatch();

}  // namespace kestrivane::test
