#include "tests/mutation/Worker.hpp"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <fstream>
#include <stdexcept>
#include <string_view>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/linux/images/LinuxImageIO.hpp"
#include "tests/mutation/Mutator.hpp"
#include "tests/support/ConvertPicture.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::mutation {
namespace {

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
// Sanitizers slow everything down and take memory for themselves.
constexpr unsigned secondsLimit = 60;
constexpr std::uint64_t memoryLimit = std::uint64_t{64} << 30;
#else
constexpr unsigned secondsLimit = 10;
// The largest picture that may be read takes 2 GiB; the rest is for codecs.
constexpr std::uint64_t memoryLimit = std::uint64_t{2304} << 20;
#endif

/// The most memory that was resident since the last call, in bytes.
std::uint64_t takePeakMemory() {
  std::ifstream status("/proc/self/status");
  std::uint64_t kibibytes = 0;
  for (std::string name; status >> name;)
    if (name == "VmHWM:") status >> kibibytes;
  std::ofstream("/proc/self/clear_refs") << 5;  // starts the peak anew
  return kibibytes * 1024;
}

void require(bool condition, const char* what) {
  if (!condition) throw std::runtime_error(what);
}

void runCase(const Plan& plan, Progress& progress, const test::TemporaryFolder& folder) {
  const std::uint64_t number = progress.current;
  const std::string content =
      mutated(test::contentOf(FileURL(sampleOf(plan, number))), plan.seed, number);
  const FileURL source = folder.write("source", content);
  const FileURL target = folder.url("target." + extensionOf(plan, number));

  const auto start = std::chrono::steady_clock::now();
  ::alarm(secondsLimit);
  const bool converted = test::convertPicture(LinuxImageIO(), source, target);
  ::alarm(0);
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;

  require(test::contentOf(source) == content, "the source has been changed");
  require(folder.names().size() == (converted ? 2 : 1), "something else has been left behind");
  require(!converted || LinuxImageIO().createSource(target), "the result is no picture");
  std::filesystem::remove(target.path());
  ++(converted ? progress.converted : progress.refused);
  progress.mostSeconds = std::max(progress.mostSeconds, taken.count());
  const std::uint64_t memory = takePeakMemory();
  progress.mostMemory = std::max(progress.mostMemory, memory);
  require(memory <= memoryLimit, "more memory than the cap");
}

int runCases(const Plan& plan, Progress& progress, const test::TemporaryFolder& folder) {
  try {
    for (std::uint64_t number = plan.first; number < plan.end; ++number) {
      progress.current = number;
      runCase(plan, progress, folder);
    }
    return 0;
  } catch (const std::exception& error) {
    std::strncpy(progress.fault.data(), error.what(), progress.fault.size() - 1);
    return 1;
  }
}

}  // namespace

const std::string& sampleOf(const Plan& plan, std::uint64_t number) {
  return plan.samples[number % plan.samples.size()];
}

std::string extensionOf(const Plan& plan, std::uint64_t number) {
  return extensions[number / plan.samples.size() % extensions.size()];
}

int runWorker(const Plan& plan, Progress& progress) {
  const test::TemporaryFolder folder;
  const pid_t child = ::fork();
  if (child < 0) throw std::runtime_error("no process");
  if (child == 0) ::_exit(runCases(plan, progress, folder));
  int status = 0;
  ::waitpid(child, &status, 0);
  return status;
}

}  // namespace kestrivane::mutation
