#include <string>

#include <gtest/gtest.h>

#include "platform/FileURL.hpp"

namespace kestrivane::test {
namespace {

struct PathCase {
  std::string path;
  std::string folder;
  std::string name;
  std::string extension;
  std::string withoutExtension;
};

class FileURLParts : public testing::TestWithParam<PathCase> {};

TEST_P(FileURLParts, AreTakenFromTheString) {
  const FileURL url(GetParam().path);
  EXPECT_EQ(url.path(), GetParam().path);
  EXPECT_EQ(url.deletingLastPathComponent().path(), GetParam().folder);
  EXPECT_EQ(url.lastPathComponent(), GetParam().name);
  EXPECT_EQ(url.pathExtension(), GetParam().extension);
  EXPECT_EQ(url.deletingPathExtension().path(), GetParam().withoutExtension);
}

INSTANTIATE_TEST_SUITE_P(
    Paths, FileURLParts,
    testing::Values(PathCase{"/w/a.png", "/w", "a.png", "png", "/w/a"},
                    PathCase{"/w/a", "/w", "a", "", "/w/a"},
                    PathCase{"/a.png", "/", "a.png", "png", "/a"}, PathCase{"/", "/", "/", "", "/"},
                    PathCase{"/w/a.tar.gz", "/w", "a.tar.gz", "gz", "/w/a.tar"},
                    PathCase{"/w/.hidden", "/w", ".hidden", "", "/w/.hidden"},
                    PathCase{"/w/.hidden.png", "/w", ".hidden.png", "png", "/w/.hidden"},
                    PathCase{"/w/a.", "/w", "a.", "", "/w/a."},
                    PathCase{"/w.d/a", "/w.d", "a", "", "/w.d/a"},
                    PathCase{"/w/folder.png/", "/w", "folder.png", "png", "/w/folder"},
                    PathCase{"/w/a.b c", "/w", "a.b c", "", "/w/a.b c"},
                    PathCase{"/w/\xff\n.PNG", "/w", "\xff\n.PNG", "PNG", "/w/\xff\n"}));

TEST(FileURL, AppendsOneSlashBetweenFolderAndName) {
  EXPECT_EQ(FileURL("/w").appendingPathComponent("a.png").path(), "/w/a.png");
  EXPECT_EQ(FileURL("/w/").appendingPathComponent("a.png").path(), "/w/a.png");
  EXPECT_EQ(FileURL("/").appendingPathComponent("a.png").path(), "/a.png");
}

TEST(FileURL, IsEqualWhenTheStringIs) {
  EXPECT_EQ(FileURL("/w/a"), FileURL("/w/a"));
  EXPECT_NE(FileURL("/w/a"), FileURL("/w/a/"));
  EXPECT_NE(FileURL("/w/a"), FileURL("/w/../w/a"));
}

}  // namespace
}  // namespace kestrivane::test
