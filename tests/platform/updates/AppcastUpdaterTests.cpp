#include <array>
#include <filesystem>
#include <utility>
#include <vector>

#include <gtest/gtest.h>
#include <sodium.h>

#include "platform/linux/updates/AppcastUpdater.hpp"
#include "tests/platform/updates/LoopbackServer.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/TemporaryFolder.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {
namespace {

using namespace std::chrono_literals;

class RecordingPrompt final : public UpdatePrompt {
 public:
  void tell(std::string text) override { told.push_back(std::move(text)); }
  void offer(std::string text, std::string button, std::function<void()> accept) override {
    offered.push_back(text + " [" + button + "]");
    accepts.push_back(std::move(accept));
  }
  void open(const FileURL& archive) override { opened.push_back(archive); }

  void forget() {
    told.clear();
    offered.clear();
    accepts.clear();
  }

  std::vector<std::string> told, offered;
  std::vector<std::function<void()>> accepts;
  std::vector<FileURL> opened;
};

/// A pair of keys that is the same in each run.
class Signer {
 public:
  Signer() {
    const std::array<unsigned char, crypto_sign_ed25519_SEEDBYTES> seed{1, 2, 3};
    ::crypto_sign_ed25519_seed_keypair(publicKey_.data(), secretKey_.data(), seed.data());
  }
  std::string publicKey() const { return base64(publicKey_); }
  std::string sign(const std::string& content) const {
    std::array<unsigned char, crypto_sign_ed25519_BYTES> signature{};
    ::crypto_sign_ed25519_detached(signature.data(), nullptr,
                                   reinterpret_cast<const unsigned char*>(content.data()),
                                   content.size(), secretKey_.data());
    return base64(signature);
  }

 private:
  template <std::size_t count>
  static std::string base64(const std::array<unsigned char, count>& bytes) {
    std::array<char, 2 * count> text{};
    return ::sodium_bin2base64(text.data(), text.size(), bytes.data(), count,
                               sodium_base64_VARIANT_ORIGINAL);
  }
  std::array<unsigned char, crypto_sign_ed25519_PUBLICKEYBYTES> publicKey_{};
  std::array<unsigned char, crypto_sign_ed25519_SECRETKEYBYTES> secretKey_{};
};

class Updates : public testing::Test {
 protected:
  Updates() { std::filesystem::create_directory(folder.path() + "/Downloads"); }

  UpdateSource source() const {
    return {.feedAddress = server.address("/feed"),
            .publicKey = signer.publicKey(),
            .currentVersion = "1.0",
            .downloadFolder = folder.url("Downloads"),
            .lastCheckFile = folder.url("state/last-update-check")};
  }
  std::unique_ptr<AppcastUpdater> makeUpdater(UpdateSource updateSource) {
    return std::make_unique<AppcastUpdater>(std::move(updateSource), loop, loop, log, prompt,
                                            download);
  }

  /// The feed offers version 2.0, whose archive the server has under `path`.
  void serveFeed(const std::string& signature, const std::string& length = "7",
                 const std::string& path = "/files/kestrivane-2.0.tar.gz") {
    server.serve("/feed",
                 R"(<rss xmlns:u="http://www.andymatuschak.org/xml-namespaces/sparkle"><channel>)"
                 R"(<item><u:version>2.0</u:version><enclosure u:os="linux" url=")" +
                     server.address(path) + "\" length=\"" + length + "\" u:edSignature=\"" +
                     signature + "\"/></item></channel></rss>");
    server.serve("/files/kestrivane-2.0.tar.gz", archive);
  }

  std::vector<std::string> downloads() const {
    std::vector<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(folder.path() + "/Downloads"))
      names.push_back(entry.path().filename());
    return names;
  }

  const std::string archive = "archive";
  const Signer signer;
  TemporaryFolder folder;
  LoopbackServer server;
  FakeLog log;
  VirtualLoop loop;
  RecordingPrompt prompt;
};

TEST_F(Updates, FetchesNothingButTheFeedUntilTheUserAgrees) {
  serveFeed(signer.sign(archive));
  const auto updater = makeUpdater(source());
  updater->checkForUpdates();
  loop.runUntilIdle();
  EXPECT_EQ(prompt.offered, std::vector<std::string>{"Kestrivane 2.0 is available. [Download]"});
  EXPECT_EQ(server.requests(), std::vector<std::string>{"/feed"});
  EXPECT_TRUE(downloads().empty());

  prompt.accepts[0]();
  loop.runUntilIdle();
  ASSERT_EQ(prompt.offered.size(), 2u);
  EXPECT_EQ(prompt.offered[1], "kestrivane-2.0.tar.gz has been downloaded. [Open]");
  EXPECT_EQ(contentOf(folder.url("Downloads/kestrivane-2.0.tar.gz")), archive);
  EXPECT_TRUE(prompt.opened.empty());

  prompt.accepts[1]();
  EXPECT_EQ(prompt.opened, std::vector<FileURL>{folder.url("Downloads/kestrivane-2.0.tar.gz")});
  EXPECT_TRUE(prompt.told.empty());
}

TEST_F(Updates, NeverOverwriteAnEarlierDownload) {
  serveFeed(signer.sign(archive));
  folder.write("Downloads/kestrivane-2.0.tar.gz", "mine");
  const auto updater = makeUpdater(source());
  updater->checkForUpdates();
  loop.runUntilIdle();
  prompt.accepts.at(0)();
  loop.runUntilIdle();
  EXPECT_EQ(contentOf(folder.url("Downloads/kestrivane-2.0.tar.gz")), "mine");
  EXPECT_EQ(contentOf(folder.url("Downloads/2-kestrivane-2.0.tar.gz")), archive);
}

TEST_F(Updates, KeepNothingThatIsNotSignedByTheKeyOfTheBuild) {
  struct Case {
    const char* name;
    std::string signature, length, path;
  };
  const std::string right = signer.sign(archive), path = "/files/kestrivane-2.0.tar.gz";
  for (const Case& wrong :
       {Case{"signature of another file", signer.sign("another"), "7", path},
        Case{"no Base64", "!", "7", path}, Case{"another length", right, "8", path},
        Case{"no archive", right, "7", "/missing"}, Case{"empty archive", right, "0", "/empty"}}) {
    SCOPED_TRACE(wrong.name);
    prompt.forget();
    server.serve("/empty", "");
    serveFeed(wrong.signature, wrong.length, wrong.path);
    const auto updater = makeUpdater(source());
    updater->checkForUpdates();
    loop.runUntilIdle();
    ASSERT_EQ(prompt.accepts.size(), 1u);
    prompt.accepts[0]();
    loop.runUntilIdle();
    EXPECT_EQ(prompt.offered.size(), 1u);
    ASSERT_EQ(prompt.told.size(), 1u);
    EXPECT_EQ(prompt.told[0].find("Could not download the update: "), 0u) << prompt.told[0];
    EXPECT_TRUE(downloads().empty());
  }
}

TEST_F(Updates, GiveNoNameOfTheFeedsChoiceToTheDownload) {
  serveFeed(signer.sign(archive), "7", "/..%2f/.-bad%0Aname;rm?x=/etc/passwd");
  server.serve("/..%2f/.-bad%0Aname;rm?x=/etc/passwd", archive);
  const auto updater = makeUpdater(source());
  updater->checkForUpdates();
  loop.runUntilIdle();
  prompt.accepts.at(0)();
  loop.runUntilIdle();
  EXPECT_EQ(downloads(), std::vector<std::string>{"bad0Anamerm"});
}

TEST_F(Updates, SayWhenThereIsNothingNewAndWhenTheFeedIsDamaged) {
  UpdateSource current = source();
  current.currentVersion = "2.0";
  serveFeed(signer.sign(archive));
  auto updater = makeUpdater(current);
  updater->checkForUpdates();
  loop.runUntilIdle();
  EXPECT_EQ(prompt.told, std::vector<std::string>{"Kestrivane is up to date."});

  server.serve("/feed", "<rss><channel>");
  updater->checkForUpdates();
  loop.runUntilIdle();
  ASSERT_EQ(prompt.told.size(), 2u);
  EXPECT_EQ(prompt.told[1].find("Could not check for updates: The list of updates is damaged"), 0u)
      << prompt.told[1];
  EXPECT_EQ(log.messages(LogLevel::error).size(), 1u);
}

TEST_F(Updates, AreCheckedOnceADayAndQuietly) {
  const auto updater = makeUpdater(source());  // the feed is missing
  updater->start();
  loop.advance(59s);
  EXPECT_TRUE(server.requests().empty());
  loop.advance(2s);
  EXPECT_EQ(server.requests().size(), 1u);
  loop.advance(24h - 2s);
  EXPECT_EQ(server.requests().size(), 1u);
  loop.advance(2s);
  EXPECT_EQ(server.requests().size(), 2u);
  EXPECT_TRUE(prompt.told.empty());
  EXPECT_EQ(log.messages(LogLevel::error).size(), 2u);

  // A restart within the day does not check again.
  const auto restarted = makeUpdater(source());
  restarted->start();
  loop.advance(1h);
  EXPECT_EQ(server.requests().size(), 2u);
}

TEST_F(Updates, ComeFromThePackageManagerWithoutAFeed) {
  UpdateSource none = source();
  none.feedAddress.clear();
  const auto updater = makeUpdater(none);
  updater->start();
  loop.advance(48h);
  updater->checkForUpdates();
  EXPECT_EQ(prompt.told,
            std::vector<std::string>{"Updates come from your system's package manager."});
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(Updates, AreNotCheckedWithADamagedKey) {
  UpdateSource damaged = source();
  damaged.publicKey = "key";
  const auto updater = makeUpdater(damaged);
  updater->start();
  loop.advance(48h);
  updater->checkForUpdates();
  ASSERT_EQ(prompt.told.size(), 1u);
  EXPECT_NE(prompt.told[0].find("key is damaged"), std::string::npos);
  EXPECT_TRUE(server.requests().empty());
}

TEST_F(Updates, AreGivenUpWhenTheUpdaterGoes) {
  serveFeed(signer.sign(archive));
  auto updater = makeUpdater(source());
  updater->start();
  updater->checkForUpdates();
  updater.reset();
  loop.advance(48h);
  EXPECT_TRUE(prompt.offered.empty());
  EXPECT_TRUE(prompt.told.empty());
}

}  // namespace
}  // namespace kestrivane::test
