// The memory that the copy of a long film takes, in a child process.
#include <algorithm>
#include <fstream>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/media/MediaExport.hpp"
#include "tests/platform/media/MediaTesting.hpp"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define KESTRIVANE_SHADOW_MEMORY 1
#endif

namespace kestrivane::mediaTesting {
namespace {

/// The field of /proc/self/status, in KiB.
long statusOf(const std::string& field) {
  std::ifstream status("/proc/self/status");
  for (std::string name; status >> name;)
    if (long kibibytes = 0; name == field + ":" && status >> kibibytes) return kibibytes;
  throw std::runtime_error("no " + field);
}

/// By how much the memory of a process grows at most that copies the film, in MiB.
long memoryToCopy(const FileURL& film, const FileURL& target) {
  const pid_t child = ::fork();
  if (child == 0) {
    const long before = statusOf("VmRSS");
    exportMedia(*MediaInput::open(film), target, MediaFileType::quickTimeMovie);
    // A status has one byte.
    ::_exit(static_cast<int>(std::min((statusOf("VmHWM") - before) / 1024, 255L)));
  }
  int status = 0;
  ::waitpid(child, &status, 0);
  if (!WIFEXITED(status)) throw std::runtime_error("the child has died");
  return WEXITSTATUS(status);
}

TEST(LongCopy, takesLittleMoreMemoryThanAShortOne) {
#ifdef KESTRIVANE_SHADOW_MEMORY
  GTEST_SKIP() << "the sanitizers keep memory that was freed";
#endif
  const test::TemporaryFolder folder;
  const auto film = [&folder](const std::string& name, int seconds) {
    const FileURL url = folder.url(name);
    make("-f lavfi -i color=s=16x16:r=10 -f lavfi -i anullsrc=r=48000:cl=mono -t " +
         std::to_string(seconds) + " -c:v libx264 -preset ultrafast -c:a pcm_s16le " + url.path());
    return url;
  };
  constexpr int minutes = 20;
  constexpr std::size_t bytesOfSound = std::size_t{96'000} * 60 * minutes;
  const FileURL longFilm = film("long.mov", minutes * 60);
  ASSERT_GT(test::contentOf(longFilm).size(), bytesOfSound);
  const long forShort = memoryToCopy(film("short.mov", 1), folder.url("short copy.mov"));
  const long forLong = memoryToCopy(longFilm, folder.url("long copy.mov"));
  EXPECT_GT(test::contentOf(folder.url("long copy.mov")).size(), bytesOfSound);
  EXPECT_LT(forLong - forShort, 32) << "MiB, of a film of 115 MB";
}

}  // namespace
}  // namespace kestrivane::mediaTesting
