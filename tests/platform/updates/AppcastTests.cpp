#include <string>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/updates/Appcast.hpp"

namespace kestrivane {
namespace {

std::string feedOf(const std::string& items) {
  return R"(<?xml version="1.0" encoding="utf-8"?>
<rss version="2.0" xmlns:u="http://www.andymatuschak.org/xml-namespaces/sparkle">
<channel><title>Kestrivane</title><version>9</version>)" +
         items + "</channel></rss>";
}

TEST(Appcast, ReadsVersionsFromElementsOrFromTheEnclosure) {
  const auto items = parseAppcast(feedOf(R"(
    <item><title>Two</title><u:version>200</u:version>
      <u:shortVersionString>2.0 &amp; more</u:shortVersionString><u:channel>beta</u:channel>
      <enclosure url="https://example.org/2.tar.gz" length="12345" type="application/octet-stream"
                 u:edSignature="c2ln" u:os="linux"/></item>
    <item><enclosure url="https://example.org/1.zip" u:version="100"/></item>)"));
  ASSERT_EQ(items.size(), 2u);
  EXPECT_EQ(items[0].version, "200");
  EXPECT_EQ(items[0].displayVersion, "2.0 & more");
  EXPECT_EQ(items[0].channel, "beta");
  EXPECT_EQ(items[0].address, "https://example.org/2.tar.gz");
  EXPECT_EQ(items[0].length, 12345u);
  EXPECT_EQ(items[0].signature, "c2ln");
  EXPECT_EQ(items[0].system, "linux");
  EXPECT_EQ(items[1].version, "100");
  EXPECT_EQ(items[1].displayVersion, "100");
  EXPECT_EQ(items[1].length, 0u);
  EXPECT_EQ(items[1].system, "");
}

TEST(Appcast, LeavesOutItemsWithoutVersionOrArchive) {
  EXPECT_TRUE(parseAppcast(feedOf("<item><u:version>2</u:version></item>"
                                  "<item><enclosure url='https://example.org/a'/></item>"
                                  "<item/>"))
                  .empty());
  EXPECT_TRUE(parseAppcast("<rss/>").empty());
}

TEST(Appcast, RefusesWhatIsNoWellFormedFeed) {
  const std::string item = "<item><enclosure url='https://example.org/a' u:version='2'/></item>";
  std::string deep;
  for (int i = 0; i < 40; ++i)
    deep += "<a>";
  for (const std::string& feed :
       {std::string(), std::string("no XML"), feedOf(item).substr(0, 250), feedOf(deep),
        feedOf("<item>&unknown;</item>"), feedOf(item) + feedOf(item), feedOf(item) + '\0',
        "<!DOCTYPE rss [<!ENTITY a \"aaaaaaaaaa\">]>" + feedOf("").substr(38),
        feedOf(std::string("\xFF\xFE"))}) {
    EXPECT_THROW(parseAppcast(feed), PlatformError) << feed;
  }
}

AppcastItem itemOf(const std::string& version) {
  AppcastItem item;
  item.version = version;
  item.address = "https://example.org/" + version;
  item.signature = "signature";
  item.system = "linux";
  return item;
}

TEST(Appcast, OffersTheNewestReleaseForThisSystem) {
  std::vector<AppcastItem> items{itemOf("1.1"), itemOf("1.10"), itemOf("1.9"), itemOf("1.10.0"),
                                 itemOf("3.0"), itemOf("4.0"),  itemOf("5.0")};
  items[4].system = "";
  items[5].channel = "beta";
  items[6].signature = "";
  const auto newest = newestUpdate(items, "1.1");
  ASSERT_TRUE(newest);
  EXPECT_EQ(newest->version, "1.10");
  EXPECT_FALSE(newestUpdate(items, "1.10"));
  EXPECT_FALSE(newestUpdate(items, "2.0"));
  EXPECT_FALSE(newestUpdate({}, "1.0"));
}

}  // namespace
}  // namespace kestrivane
