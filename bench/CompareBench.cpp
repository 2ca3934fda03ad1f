// Converts pictures by the program's own converter, as `bench/compare` asks for it.
//
//   compare-bench [--at-once] SOURCE DESTINATION [SOURCE DESTINATION ...]
//
// Prints the seconds of all conversions together, without the start of the process. One follows the
// other unless they are to run at once, two at a time as in a watched folder. A conversion that
// fails is told and ends the program with exit status 1.
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <vector>

#include "async/TaskGroup.hpp"
#include "async/TaskScope.hpp"
#include "converters/ImageConverter.hpp"
#include "engine/ConversionError.hpp"
#include "platform/linux/images/LinuxImageIO.hpp"
#include "platform/linux/system/LinuxDispatch.hpp"
#include "platform/linux/system/ProcessMemory.hpp"
#include "platform/linux/system/RunLoop.hpp"

namespace kestrivane {
namespace {

struct Conversion {
  FileURL source;
  FileURL destination;
};

Task<void> convert(const ImageConverter* converter, Conversion conversion) {
  try {
    co_await converter->convert(conversion.source, conversion.destination);
  } catch (const ConversionError& error) {
    std::fprintf(stderr, "%s: %s\n", conversion.destination.path().c_str(), error.what());
    std::exit(EXIT_FAILURE);
  }
}

Task<void> convertAll(const ImageConverter* converter, std::vector<Conversion> conversions,
                      bool atOnce, RunLoop* loop) {
  using Clock = std::chrono::steady_clock;
  const Clock::time_point begin = Clock::now();
  TaskGroup running(co_await currentContext());
  for (const Conversion& conversion : conversions) {
    if (atOnce) {
      running.add(convert(converter, conversion));
    } else {
      co_await convert(converter, conversion);
    }
  }
  co_await running.join();
  std::printf("%.4f\n", std::chrono::duration<double>(Clock::now() - begin).count());
  loop->stop();
}

}  // namespace
}  // namespace kestrivane

int main(int argc, char** argv) {
  using namespace kestrivane;
  returnLargeBlocksWhenFreed();
  const bool atOnce = argc > 1 && std::strcmp(argv[1], "--at-once") == 0;
  std::vector<Conversion> conversions;
  for (int i = atOnce ? 2 : 1; i + 1 < argc; i += 2)
    conversions.push_back({FileURL(argv[i]), FileURL(argv[i + 1])});

  RunLoop loop;
  const LinuxImageIO imageIO;
  const auto dispatch = LinuxDispatch::create(loop);
  const ImageConverter converter(imageIO, dispatch->globalQueue(QualityOfService::userInitiated));
  TaskScope scope(loop);
  scope.spawn(convertAll(&converter, conversions, atOnce, &loop));
  loop.run();
}
