// Converts one film by the program's own converter, as `bench/compare-videos` asks for it.
//
//   export-bench SOURCE DESTINATION
//
// A conversion that fails is told and ends the program with exit status 1.
#include <cstdio>
#include <cstdlib>

#include "async/TaskScope.hpp"
#include "converters/VideoConverter.hpp"
#include "engine/ConversionError.hpp"
#include "platform/linux/media/LinuxAssetExporter.hpp"
#include "platform/linux/system/LinuxDispatch.hpp"
#include "platform/linux/system/ProcessMemory.hpp"
#include "platform/linux/system/RunLoop.hpp"

namespace kestrivane {
namespace {

Task<void> convert(const VideoConverter* converter, FileURL source, FileURL destination,
                   RunLoop* loop) {
  try {
    co_await converter->convert(source, destination);
  } catch (const ConversionError& error) {
    std::fprintf(stderr, "%s\n", error.errorDescription().c_str());
    std::exit(EXIT_FAILURE);
  }
  loop->stop();
}

}  // namespace
}  // namespace kestrivane

int main(int argc, char** argv) {
  using namespace kestrivane;
  if (argc != 3) return EXIT_FAILURE;
  returnLargeBlocksWhenFreed();
  RunLoop loop;
  const auto dispatch = LinuxDispatch::create(loop);
  const LinuxAssetExporter exporter(dispatch->longWorkQueue(), dispatch->longWorkQueue(),
                                    openMedia);
  const VideoConverter converter(exporter);
  TaskScope scope(loop);
  scope.spawn(convert(&converter, FileURL(argv[1]), FileURL(argv[2]), &loop));
  loop.run();
}
