// Converts whatever bytes it is handed: the first chooses the target's format, the rest is the
// file.
//
// The source must stay as it is, a failure is a `ConversionError` that leaves nothing behind, and a
// result is a picture of the expected size. As in all of this build, pictures of more than 4
// million pixels are refused.
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "platform/linux/images/LinuxImageIO.hpp"
#include "tests/support/ConvertPicture.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane {
namespace {

constexpr std::array extensions{"jpg", "jpeg", "png", "heic", "tiff", "gif", "bmp", "webp", "ico"};

void require(bool condition, const char* what) {
  if (condition) return;
  std::fprintf(stderr, "fuzz: %s\n", what);
  std::abort();
}

void checkResult(const LinuxImageIO& imageIO, const FileURL& source, const FileURL& result) {
  const auto resultSource = imageIO.createSource(result);
  require(resultSource != nullptr, "the result is not recognised");
  const auto image = resultSource->createImage(0);
  require(image != nullptr, "the result cannot be decoded");
  if (result.pathExtension() == "ico") {
    require(image->width() == image->height() && image->width() <= 256, "no icon's size");
    return;
  }
  const auto original = imageIO.createSource(source)->createImage(0);
  require(image->width() == original->width() && image->height() == original->height(),
          "the result has another size");
}

}  // namespace
}  // namespace kestrivane

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
  using namespace kestrivane;
  if (count == 0) return 0;
  const std::string content(reinterpret_cast<const char*>(bytes + 1), count - 1);
  const test::TemporaryFolder folder(std::filesystem::temp_directory_path().string());
  const FileURL source = folder.write("source", content);
  const FileURL result =
      folder.url(std::string("result.") + extensions[bytes[0] % extensions.size()]);

  const LinuxImageIO imageIO;
  const bool converted = test::convertPicture(imageIO, source, result);
  require(test::contentOf(source) == content, "the source has been changed");
  require(folder.names().size() == (converted ? 2 : 1), "something else has been left behind");
  if (converted) checkResult(imageIO, source, result);
  return 0;
}
