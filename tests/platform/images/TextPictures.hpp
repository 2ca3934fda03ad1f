// A picture library whose pictures are lines of text in memory, as the fakes read them.
//
// Thread-safety: belongs to the test's thread. Ownership: the file system outlives it.
#pragma once

#include <string>

#include "tests/platform/images/ImageIOConformance.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {

class TextPictures : public PictureLibrary {
 public:
  explicit TextPictures(InMemoryFileSystem& files) : files_(files) {}

  FileURL url(const std::string& name) const override { return FileURL("/tmp/" + name); }
  void writePicture(const FileURL& url, std::size_t width, std::size_t height) override {
    files_.writeFile(url.path(), pictureOf(width, height));
  }
  void writePictureOnItsSide(const FileURL& url, std::size_t width, std::size_t height) override {
    files_.writeFile(url.path(), pictureOf(width, height) + " orientation 6");
  }
  void writeHalfAPicture(const FileURL& url) override { files_.writeFile(url.path(), "damaged"); }
  void writeText(const FileURL& url) override { files_.writeFile(url.path(), "a letter"); }
  bool exists(const FileURL& url) const override { return files_.content(url.path()).has_value(); }

 private:
  static std::string pictureOf(std::size_t width, std::size_t height) {
    return "picture " + std::to_string(width) + "x" + std::to_string(height);
  }

  InMemoryFileSystem& files_;
};

}  // namespace kestrivane::test
