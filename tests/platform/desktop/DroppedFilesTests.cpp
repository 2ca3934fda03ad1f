#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "platform/qt/DroppedFiles.hpp"

namespace kestrivane::test {
namespace {

struct Address {
  const char* address;
  const char* path;  ///< null for one that names no file of this computer
};

class FileAtAddress : public testing::TestWithParam<Address> {};

TEST_P(FileAtAddress, IsItsPath) {
  const auto file = fileAtAddress(GetParam().address);
  if (GetParam().path == nullptr) {
    EXPECT_EQ(file, std::nullopt);
  } else {
    EXPECT_EQ(file, FileURL(GetParam().path));
  }
}

INSTANTIATE_TEST_SUITE_P(
    Addresses, FileAtAddress,
    testing::Values(Address{"file:///home/ada/Pictures", "/home/ada/Pictures"},
                    Address{"file:///a%20b/%25", "/a b/%"}, Address{"file:///folder/", "/folder"},
                    Address{"file:///", "/"}, Address{"file://localhost/a", "/a"},
                    Address{"FILE:/a", "/a"}, Address{"file:///caf%E9", "/caf\xe9"},
                    Address{"file:///%D0%B0", "/\xd0\xb0"},
                    Address{"https://example.org/a", nullptr}, Address{"/a", nullptr},
                    Address{"file:///a%00b", nullptr}, Address{"file:///%00", nullptr},
                    Address{"file:a", nullptr}, Address{"file://host", nullptr},
                    Address{"", nullptr}));

TEST(AddressOf, LeadsBackToTheFileWhateverItsBytes) {
  for (const std::string path : {"/", "/a b%c/\xd0\xb0", "/caf\xe9?#&", "/line\nbreak"}) {
    const QByteArray address = addressOf(FileURL(path));
    EXPECT_EQ(fileAtAddress(address), FileURL(path));
    EXPECT_EQ(address.indexOf('\n'), -1);
  }
}

TEST(FilesIn, AreTheLocalOnesInTheirOrder) {
  QMimeData data;
  data.setData("text/uri-list",
               "# a comment\r\nfile:///b\r\nhttps://example.org/\r\nfile:///a%E9\r\n");
  EXPECT_TRUE(offersFiles(data));
  EXPECT_EQ(filesIn(data), (std::vector{FileURL("/b"), FileURL("/a\xe9")}));
}

TEST(FilesIn, AreNotOfferedByOtherAddresses) {
  QMimeData data;
  data.setData("text/uri-list", "# file:///a\r\nhttps://example.org/file:///a\r\nfiles:/a\r\n");
  EXPECT_FALSE(offersFiles(data));
  EXPECT_EQ(filesIn(data), std::vector<FileURL>());
  data.setData("text/uri-list", "http://example.org/\r\nFILE:/a\r\n");
  EXPECT_TRUE(offersFiles(data));
}

TEST(FilesIn, AreNothingInOtherKindsOfContent) {
  QMimeData data;
  data.setText("file:///a");
  EXPECT_FALSE(offersFiles(data));
  EXPECT_EQ(filesIn(data), std::nullopt);
}

}  // namespace
}  // namespace kestrivane::test
