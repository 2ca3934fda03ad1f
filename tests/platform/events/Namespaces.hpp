// Tests that need rights or limits of their own: each runs in a process that is root in a user
// namespace.
//
// Thread-safety: none. Ownership: the process ends before the call returns.
#pragma once

#include <csignal>
#include <functional>

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <unistd.h>

namespace kestrivane::test {

/// Runs the body of `Test` in a user namespace and in new ones of these kinds (`CLONE_NEW…`).
/// Skips the test where that is not permitted, or when `prepare` returns false in the new process.
template <typename Test>
void runInNamespaces(
    int kinds, const std::function<bool()>& prepare = [] { return true; }) {
  constexpr int notPermitted = 77;
  // Not by unshare(2): that refuses a process with threads, and sanitizers have some.
  const auto child = static_cast<pid_t>(
      ::syscall(SYS_clone, CLONE_NEWUSER | kinds | SIGCHLD, nullptr, nullptr, nullptr, nullptr));
  if (child < 0) GTEST_SKIP() << "user namespaces are not permitted";
  if (child == 0) {
    if (!prepare()) ::_exit(notPermitted);
    Test().TestBody();
    ::_exit(testing::Test::HasFailure() ? 1 : 0);
  }
  int status = 0;
  ASSERT_EQ(child, ::waitpid(child, &status, 0));
  ASSERT_TRUE(WIFEXITED(status));
  if (WEXITSTATUS(status) == notPermitted) GTEST_SKIP() << "not permitted here";
  EXPECT_EQ(0, WEXITSTATUS(status));
}

}  // namespace kestrivane::test
