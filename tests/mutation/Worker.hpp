// Converts damaged pictures, one after the other, and looks at what becomes of them.
//
// Thread-safety: a worker is a process of its own. Ownership: `Progress` lies in memory that parent
// and worker share and outlives both.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

namespace kestrivane::mutation {

/// What is to be done for one format.
struct Plan {
  std::vector<std::string> samples;  // the files' paths
  std::uint64_t seed;
  std::uint64_t first;
  std::uint64_t end;  // the number after the last case
};

struct Progress {
  std::uint64_t current;  // the case under way
  std::uint64_t converted;
  std::uint64_t refused;
  std::uint64_t mostMemory;    // bytes
  double mostSeconds;          // of one case
  std::array<char, 64> fault;  // what is wrong with the current case, as text
};

inline constexpr std::array extensions{"jpg", "jpeg", "png",  "heic", "tiff",
                                       "gif", "bmp",  "webp", "ico"};

/// Samples take turns, and after each round of them the format that they are to become.
const std::string& sampleOf(const Plan& plan, std::uint64_t number);
std::string extensionOf(const Plan& plan, std::uint64_t number);

/// Runs the cases in a child process and waits for it. Returns the status that `waitpid` tells: 0
/// when all is well; else `progress` tells the case and, if the process could, the fault.
int runWorker(const Plan& plan, Progress& progress);

}  // namespace kestrivane::mutation
