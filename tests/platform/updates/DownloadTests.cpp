#include <stdexcept>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/updates/Download.hpp"
#include "tests/platform/updates/LoopbackServer.hpp"

namespace kestrivane::test {
namespace {

class Download : public testing::Test {
 protected:
  std::string fetch(const std::string& address) {
    std::string content;
    download(
        address, {.bytes = 1000, .seconds = 60},
        [&content](std::string_view piece) { content += piece; }, cancelled);
    return content;
  }

  /// The description of the failure.
  std::string failureOf(const std::string& address) {
    try {
      return "no failure but " + fetch(address);
    } catch (const PlatformError& error) {
      return error.localizedDescription();
    }
  }

  LoopbackServer server;
  std::atomic<bool> cancelled = false;
};

TEST_F(Download, TakesTheWholeContent) {
  server.serve("/feed", std::string(1000, 'x'));
  server.serve("/empty", "");
  EXPECT_EQ(fetch(server.address("/feed")), std::string(1000, 'x'));
  EXPECT_EQ(fetch(server.address("/empty")), "");
}

TEST_F(Download, FollowsFiveRedirectionsAndNoMore) {
  server.serve("/0", "content");
  for (int i = 1; i <= 6; ++i)
    server.redirect("/" + std::to_string(i), "/" + std::to_string(i - 1));
  EXPECT_EQ(fetch(server.address("/5")), "content");
  EXPECT_NE(failureOf(server.address("/6")).find("redirections"), std::string::npos);
  server.redirect("/circle", "/circle");
  EXPECT_NE(failureOf(server.address("/circle")).find("redirections"), std::string::npos);
}

TEST_F(Download, SpeaksNothingButHttpsWithOthers) {
  const std::string others[] = {"http://example.org/",
                                "file:///etc/passwd",
                                "ftp://localhost/",
                                "http://localhost.example.org/",
                                "http://user@example.org/",
                                "",
                                "no address"};
  for (const std::string& other : others) {
    EXPECT_NE(failureOf(other).find("https"), std::string::npos) << other;
    server.redirect("/away", other);
    if (!other.empty() && other != "no address") {
      EXPECT_NE(failureOf(server.address("/away")).find("https"), std::string::npos) << other;
    }
  }
}

TEST_F(Download, GivesUpWhatIsTooLong) {
  server.serve("/long", std::string(1001, 'x'));
  server.serveEndless("/endless");
  EXPECT_NE(failureOf(server.address("/long")).find("too long"), std::string::npos);
  EXPECT_NE(failureOf(server.address("/endless")).find("too long"), std::string::npos);
}

TEST_F(Download, RefusesHalfAnswersAndOtherStatuses) {
  server.serveRaw("/cut", "HTTP/1.1 200 OK\r\nContent-Length: 100\r\n\r\nhalf");
  server.serveRaw("/none", "");
  server.serveRaw("/part", "HTTP/1.1 206 Partial Content\r\nContent-Length: 2\r\n\r\nok");
  server.serveRaw("/nonsense", "nonsense\r\n\r\n");
  for (const char* path : {"/cut", "/none", "/part", "/nonsense", "/missing"})
    EXPECT_THROW(fetch(server.address(path)), PlatformError) << path;
}

TEST_F(Download, StopsWhenItIsCancelled) {
  server.serveEndless("/endless");
  const DownloadSink cancel = [this](std::string_view) { cancelled = true; };
  EXPECT_THROW(download(server.address("/endless"), {.bytes = ~std::uint64_t{0}, .seconds = 600},
                        cancel, cancelled),
               PlatformError);
}

TEST_F(Download, LetsTheFailureOfTheReceiverThrough) {
  server.serve("/feed", "content");
  const DownloadSink fail = [](std::string_view) { throw std::domain_error("full"); };
  EXPECT_THROW(download(server.address("/feed"), {.bytes = 100, .seconds = 60}, fail, cancelled),
               std::domain_error);
}

}  // namespace
}  // namespace kestrivane::test
