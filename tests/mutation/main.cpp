// Converts damaged versions of the sample pictures of one format. See `tests/mutate --help`.
#include <algorithm>
#include <charconv>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <stdexcept>
#include <string>
#include <string_view>

#include <sys/mman.h>
#include <sys/wait.h>

#include "tests/mutation/Mutator.hpp"
#include "tests/mutation/Worker.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::mutation {
namespace {

/// The samples of the format, sorted, so that the numbers of cases stay.
std::vector<std::string> samplesOf(const std::string& format) {
  std::vector<std::string> samples;
  for (const auto& entry : std::filesystem::directory_iterator(KESTRIVANE_SAMPLES))
    if (entry.path().extension() == "." + format) samples.push_back(entry.path().string());
  std::ranges::sort(samples);
  if (samples.empty()) throw std::runtime_error("there are no samples of " + format);
  return samples;
}

std::string faultOf(int status, const Progress& progress) {
  if (progress.fault[0] != '\0') return progress.fault.data();
  if (!WIFSIGNALED(status)) return "the process has ended by itself";
  if (WTERMSIG(status) == SIGALRM) return "it took too long";
  return std::string("crash: ") + ::strsignal(WTERMSIG(status));
}

/// Keeps the file and says how to repeat the case.
void report(const Plan& plan, const std::string& format, int status, const Progress& progress) {
  const std::uint64_t number = progress.current;
  const std::string kept = "mutation-" + format + "-" + std::to_string(plan.seed) + "-" +
                           std::to_string(number) + "." + format;
  std::ofstream(kept, std::ios::binary)
      << mutated(test::contentOf(FileURL(sampleOf(plan, number))), plan.seed, number);
  std::printf("%s: case %llu, %s to %s: %s\n  the file: %s\n  again: --seed %llu --case %llu %s\n",
              format.c_str(), static_cast<unsigned long long>(number),
              sampleOf(plan, number).c_str(), extensionOf(plan, number).c_str(),
              faultOf(status, progress).c_str(), std::filesystem::absolute(kept).c_str(),
              static_cast<unsigned long long>(plan.seed), static_cast<unsigned long long>(number),
              format.c_str());
}

bool run(Plan plan, const std::string& format) {
  void* const shared =
      ::mmap(nullptr, sizeof(Progress), PROT_READ | PROT_WRITE, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
  if (shared == MAP_FAILED) throw std::runtime_error("no shared memory");
  auto& progress = *new (shared) Progress{};
  std::uint64_t faults = 0;
  while (plan.first < plan.end) {
    const int status = runWorker(plan, progress);
    if (status == 0) break;
    ++faults;
    report(plan, format, status, progress);
    progress.fault = {};
    plan.first = progress.current + 1;
  }
  std::printf("%s: %llu converted, %llu refused, %llu faults; at most %.1f s and %llu MiB\n",
              format.c_str(), static_cast<unsigned long long>(progress.converted),
              static_cast<unsigned long long>(progress.refused),
              static_cast<unsigned long long>(faults), progress.mostSeconds,
              static_cast<unsigned long long>(progress.mostMemory >> 20));
  ::munmap(shared, sizeof(Progress));
  return faults == 0;
}

std::uint64_t numberOf(std::string_view text) {
  std::uint64_t number = 0;
  const auto result = std::from_chars(text.data(), text.data() + text.size(), number);
  if (result.ec != std::errc() || result.ptr != text.data() + text.size())
    throw std::runtime_error("no number: " + std::string(text));
  return number;
}

int runProgram(int count, char** arguments) {
  Plan plan{.samples = {}, .seed = 1, .first = 0, .end = 2000};
  bool good = true;
  for (int i = 1; i < count; ++i) {
    const std::string argument = arguments[i];
    if (argument.starts_with("--") && i + 1 == count)
      throw std::runtime_error(argument + " wants a number");
    if (argument == "--cases") {
      plan.end = numberOf(arguments[++i]);
    } else if (argument == "--seed") {
      plan.seed = numberOf(arguments[++i]);
    } else if (argument == "--case") {
      plan.first = numberOf(arguments[++i]);
      plan.end = plan.first + 1;
    } else {
      plan.samples = samplesOf(argument);
      good = run(plan, argument) && good;
    }
  }
  return good && !plan.samples.empty() ? 0 : 1;
}

}  // namespace
}  // namespace kestrivane::mutation

int main(int count, char** arguments) try {
  return kestrivane::mutation::runProgram(count, arguments);
} catch (const std::exception& error) {
  std::fprintf(stderr, "%s\n", error.what());
  return 2;
}
