// The conformance suite of pictures over ImageIO and CoreGraphics, behind which pictures are lines
// of text.
#include "platform/macos/MacImageIO.hpp"
#include "tests/macos/fakes/FakeSystem.hpp"
#include "tests/platform/images/TextPictures.hpp"

namespace kestrivane::test {
namespace {

/// Made before the library, which needs its file system.
struct SystemOwner {
  UsedFakeSystem system;
};

class MacLibrary final : private SystemOwner, public TextPictures {
 public:
  MacLibrary() : TextPictures(system->files) {}

  const ImageIO& imageIO() const override { return imageIO_; }
  void writeHalfAPicture(const FileURL& url) override {
    system->files.writeFile(url.path(), "half a picture 40x30");
  }
  std::vector<std::string_view> types() const override {
    std::vector<std::string_view> all = PictureLibrary::types();
    std::erase(all, imageType::webp);
    return all;
  }

 private:
  MacImageIO imageIO_;
};

INSTANTIATE_TEST_SUITE_P(MacOS, ImageIOConformance,
                         testing::Values([]() -> std::unique_ptr<PictureLibrary> {
                           return std::make_unique<MacLibrary>();
                         }),
                         [](const auto&) { return std::string("Library"); });

}  // namespace
}  // namespace kestrivane::test
