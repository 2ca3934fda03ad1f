// The functions of libdispatch over the threads of this system, so that the executors of macOS run
// in tests: a thread for each job of a concurrent queue, one for a serial queue that has work, and
// a main queue that the test runs.
//
// Thread-safety: as libdispatch. Ownership: counts the references to queues and groups.
#pragma once

namespace kestrivane::test {

/// Runs the jobs of the main queue as they come due, until `stopMainQueue`.
void runMainQueue();
void stopMainQueue();

/// To be called when the executors are gone: waits for all threads, calls what is left in the main
/// queue, which frees its contexts, and returns how
/// many queues and groups were made and not released.
int endDispatch();

}  // namespace kestrivane::test
