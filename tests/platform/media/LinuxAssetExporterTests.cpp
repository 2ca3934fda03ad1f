// On which queue an export runs.
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "async/TaskScope.hpp"
#include "tests/platform/media/MediaTesting.hpp"

namespace kestrivane::mediaTesting {
namespace {

Task<void> exportTo(const AssetExporter* exporter, FileURL source, FileURL destination,
                    bool* ended) {
  const auto session = co_await exporter->createSession(source, ExportPreset::highestQuality);
  co_await session->exportAsset(destination, MediaFileType::mpeg4);
  *ended = true;
}

class LinuxAssetExporterTest : public testing::Test {
 protected:
  test::TemporaryFolder folder;
  test::VirtualLoop encodingQueue;
  test::VirtualLoop loop;
  LinuxAssetExporter exporter{loop, encodingQueue, openMedia};
};

TEST_F(LinuxAssetExporterTest, AFilmThatIsCopiedDoesNotWaitForThoseThatAreEncoded) {
  TaskScope scope(loop);
  bool ended = false;
  scope.spawn(exportTo(&exporter, sample("silent.mp4"), folder.url("copied.mp4"), &ended));
  loop.runUntilIdle();
  EXPECT_TRUE(ended);
}

TEST_F(LinuxAssetExporterTest, AFilmThatIsEncodedTakesItsTurn) {
  TaskScope scope(loop);
  bool ended = false;
  scope.spawn(exportTo(&exporter, sample("prores.mov"), folder.url("encoded.mp4"), &ended));
  loop.runUntilIdle();
  EXPECT_FALSE(ended);
  EXPECT_TRUE(folder.names().empty()) << "nothing is begun before";
  encodingQueue.runUntilIdle();
  loop.runUntilIdle();
  EXPECT_TRUE(ended);
  EXPECT_EQ(folder.names().size(), 1U);
}

}  // namespace
}  // namespace kestrivane::mediaTesting
