// Mounts that nobody else sees. For child processes: it cannot be undone.
#pragma once

#include <fstream>
#include <string>

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

namespace kestrivane::test {

/// Gives this process mounts of its own; who is not root becomes it in a user namespace for that.
/// False where the system does not permit it.
inline bool enterMountNamespace() {
  if (unshare(CLONE_NEWNS) != 0) {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
    std::ofstream("/proc/self/gid_map") << "0 " + group + " 1";
  }
  return mount(nullptr, "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

/// Lays an empty file system in memory over `folder`.
inline bool mountMemory(const std::string& folder, const char* options) {
  return mount("tmpfs", folder.c_str(), "tmpfs", 0, options) == 0;
}

}  // namespace kestrivane::test
