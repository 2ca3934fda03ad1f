// A picture library for pictures that are lines of text: "picture WIDTHxHEIGHT" is one that
// decodes, "picture WIDTHxHEIGHT orientation N" one that is stored turned, "damaged" one that opens
// and does not decode, and everything else is no picture.
//
// Files are those of an `InMemoryFileSystem`, which outlives it. What is written is again a line:
// "TYPE WIDTHxHEIGHT". Thread-safety: none; used on the test's thread.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/ImageIO.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {

class FakeImageIO final : public ImageIO {
 public:
  explicit FakeImageIO(InMemoryFileSystem& fileSystem) : fileSystem_(fileSystem) {}

  /// Each makes the step of that name fail.
  bool croppingFails = false;
  bool bitmapContextFails = false;
  bool makeImageFails = false;
  bool destinationFails = false;
  bool finalizeFails = false;

  /// What was asked for: "createImage 0", "crop 200,0 600x600", "context 256x256 8
  /// premultipliedLast", "quality 3", "draw 600x600 into 0,0 256x256", "destination TYPE 1".
  mutable std::vector<std::string> operations;

  std::unique_ptr<ImageSource> createSource(const FileURL& url) const override;
  std::unique_ptr<ImageDestination> createDestination(const FileURL& url,
                                                      std::string_view typeIdentifier,
                                                      std::size_t imageCount) const override;
  std::unique_ptr<BitmapContext> createBitmapContext(std::size_t width, std::size_t height,
                                                     std::size_t bitsPerComponent,
                                                     BitmapInfo info) const override;

 private:
  class Picture;
  class Source;
  class Destination;
  class Canvas;

  InMemoryFileSystem& fileSystem_;
};

}  // namespace kestrivane::test
