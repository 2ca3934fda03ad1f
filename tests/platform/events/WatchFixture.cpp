#include "tests/platform/events/WatchFixture.hpp"

#include <thread>

namespace kestrivane::test {

std::size_t kernelWatchCount() {
  std::size_t count = 0;
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fdinfo")) {
    std::ifstream information(entry.path());
    for (std::string line; std::getline(information, line);)
      count += line.starts_with("inotify wd:");
  }
  return count;
}

bool eventually(const std::function<bool()>& condition) {
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(60);
  while (!condition()) {
    if (std::chrono::steady_clock::now() > end) return false;
    std::this_thread::yield();
  }
  return true;
}

std::size_t directoryCount(const std::string& path) {
  std::size_t count = 1;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(path))
    count += entry.is_directory() && !entry.is_symlink();
  return count;
}

}  // namespace kestrivane::test
