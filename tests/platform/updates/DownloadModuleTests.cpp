// What downloads, as the application loads it.
#include <atomic>
#include <cerrno>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/updates/DownloadModule.hpp"
#include "tests/platform/updates/LoopbackServer.hpp"
#include "tests/support/FakeBundle.hpp"

namespace kestrivane::test {
namespace {

class DownloadModule : public testing::Test {
 protected:
  void install() {
    bundle_.auxiliaryExecutables.insert_or_assign(downloadModule::fileName,
                                                  FileURL(KESTRIVANE_DOWNLOAD_MODULE));
  }

  void fetch(const std::string& path, const DownloadSink& sink) {
    const std::atomic<bool> cancelled = false;
    downloadModule::downloader(bundle_)(server.address(path), {.bytes = 1000, .seconds = 60}, sink,
                                        cancelled);
  }

  LoopbackServer server;

 private:
  FakeBundle bundle_;
};

void ignore(std::string_view) {}

TEST_F(DownloadModule, HandsOnTheContent) {
  install();
  server.serve("/feed", "content");
  std::string content;
  fetch("/feed", [&content](std::string_view piece) { content += piece; });
  EXPECT_EQ(content, "content");
}

TEST_F(DownloadModule, HandsOnErrorsOfTheTransferAndOfTheSink) {
  install();
  server.serve("/feed", "content");
  EXPECT_THROW(fetch("/missing", ignore), PlatformError);
  EXPECT_THROW(fetch("/feed", [](std::string_view) { throw std::range_error("full"); }),
               std::range_error);
}

TEST_F(DownloadModule, IsAnErrorWhenItIsMissing) {
  try {
    fetch("/feed", ignore);
    FAIL() << "there is no module";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.code(), ELIBACC);
  }
}

}  // namespace
}  // namespace kestrivane::test
