#include "tests/platform/images/ImageTesting.hpp"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <random>

#include <gtest/gtest.h>
#include <sys/wait.h>

#include "platform/linux/images/LcmsHandles.hpp"
#include "platform/linux/images/PngCodec.hpp"

namespace kestrivane::imageTesting {
namespace {

std::string makeTemporaryFolder() {
  std::string path = (std::filesystem::temp_directory_path() / "images-XXXXXX").string();
  if (::mkdtemp(path.data()) == nullptr) throw std::runtime_error("no temporary folder");
  return path;
}

int valueAt(const PixelBuffer& picture, std::size_t y, std::size_t i) {
  return picture.layout().depth == Depth::eight ? picture.row(y)[i] : picture.row16(y)[i];
}

template <typename Function>
void forEachDifference(const PixelBuffer& left, const PixelBuffer& right, Function function) {
  ASSERT_EQ(left.width(), right.width());
  ASSERT_EQ(left.height(), right.height());
  ASSERT_EQ(left.layout(), right.layout());
  for (std::size_t y = 0; y < left.height(); ++y)
    for (std::size_t i = 0; i < left.width() * left.layout().channelCount(); ++i)
      function(std::abs(valueAt(left, y, i) - valueAt(right, y, i)));
}

}  // namespace

TemporaryFolder::TemporaryFolder() : url_(makeTemporaryFolder()) {}

TemporaryFolder::~TemporaryFolder() {
  std::error_code ignored;
  std::filesystem::remove_all(url_.path(), ignored);
}

std::vector<std::string> TemporaryFolder::names() const {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(url_.path()))
    names.push_back(entry.path().filename().string());
  std::ranges::sort(names);
  return names;
}

FileURL sample(const std::string& name) {
  return FileURL(KESTRIVANE_SAMPLES).appendingPathComponent(name);
}

Bytes readFile(const FileURL& url) {
  std::ifstream file(url.path(), std::ios::binary);
  if (!file) throw std::runtime_error("cannot read " + url.path());
  return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const FileURL& url, std::span<const std::uint8_t> bytes) {
  std::ofstream file(url.path(), std::ios::binary);
  file.write(reinterpret_cast<const char*>(bytes.data()),
             static_cast<std::streamsize>(bytes.size()));
  if (!file.flush()) throw std::runtime_error("cannot write " + url.path());
}

PixelBuffer makePicture(std::size_t width, std::size_t height, PixelLayout layout) {
  PixelBuffer picture = PixelBuffer::create(width, height, layout);
  const double full = layout.depth == Depth::eight ? 255 : 65'535;
  const std::size_t channels = layout.channelCount();
  for (std::size_t y = 0; y < height; ++y)
    for (std::size_t i = 0; i < width * channels; ++i) {
      const double right = static_cast<double>(i / channels) / static_cast<double>(width);
      const double down = static_cast<double>(y) / static_cast<double>(height);
      const bool isAlpha = layout.hasAlpha() && i % channels == channels - 1;
      const double value = isAlpha                 ? (right + down) / 1.9
                           : i % channels % 3 == 0 ? right
                           : i % channels == 1     ? down
                                                   : 1 - (right + down) / 2;
      const auto stored = static_cast<int>(std::clamp(value, 0.0, 1.0) * full);
      if (layout.depth == Depth::eight)
        picture.row(y)[i] = static_cast<std::uint8_t>(stored);
      else
        picture.row16(y)[i] = static_cast<std::uint16_t>(stored);
    }
  return picture;
}

PixelBuffer makeNoise(std::size_t width, std::size_t height, PixelLayout layout) {
  PixelBuffer picture = PixelBuffer::create(width, height, layout);
  std::mt19937 random(1);
  for (std::size_t i = 0; i < picture.byteCount(); ++i)
    picture.row(0)[i] = static_cast<std::uint8_t>(random() % 256);
  return picture;
}

Bytes pixelsOf(const PixelBuffer& picture) {
  return {picture.row(0), picture.row(0) + picture.byteCount()};
}

PixelBuffer converted(const PixelBuffer& picture, PixelLayout layout) {
  const PixelRows rows(picture, {0, 0, picture.width(), picture.height()}, layout,
                       ProfileSupport::embedded);
  PixelBuffer result = PixelBuffer::create(picture.width(), picture.height(), layout);
  Bytes scratch(rows.scratchBytes());
  for (std::size_t y = 0; y < picture.height(); ++y)
    std::copy_n(rows.row(y, scratch.data()), rows.rowBytes(), result.row(y));
  result.iccProfile.assign(rows.iccProfile().begin(), rows.iccProfile().end());
  return result;
}

Bytes encode(const Codec& codec, const PixelBuffer& picture) {
  const TemporaryFolder folder;
  {
    std::optional<ImageOutput> output = ImageOutput::create(folder / "picture");
    if (!output) throw std::runtime_error("no output");
    PixelRows rows(picture, {0, 0, picture.width(), picture.height()},
                   codec.encodedLayout(picture.layout()), codec.profileSupport);
    codec.encode(rows, *output);
    if (!output->finish()) throw std::runtime_error("the output failed");
  }
  return readFile(folder / "picture");
}

PixelBuffer decode(const Codec& codec, std::span<const std::uint8_t> bytes) {
  if (!codec.recognise(bytes.first(std::min(bytes.size(), recognisedBytes))))
    throw ImageError("the format is not recognised");
  return codec.decode(ImageInput::ofBytes(bytes));
}

PixelBuffer shownByImageMagick(const std::string& name, const std::string& options) {
  const TemporaryFolder folder;
  const FileURL shown = folder / "shown.png";
  outputOf("convert " + sample(name).path() + " " + options +
           " -alpha off -depth 8 -strip -define png:color-type=2 PNG24:" + shown.path());
  return decode(pngCodec, readFile(shown));
}

Bytes withOrientation(std::uint8_t value, std::span<const std::uint8_t> jpeg) {
  // A segment APP1 with a directory of one entry, right after the start of the file.
  Bytes bytes = {0xFF, 0xD8, 0xFF, 0xE1, 0, 34,    'E', 'x', 'i', 'f', 0,  0, 'M',
                 'M',  0,    42,   0,    0, 0,     8,   0,   1,   1,   18, 0, 3,
                 0,    0,    0,    1,    0, value, 0,   0,   0,   0,   0,  0};
  bytes.insert(bytes.end(), jpeg.begin() + 2, jpeg.end());
  return bytes;
}

double meanDifference(const PixelBuffer& left, const PixelBuffer& right) {
  double sum = 0;
  std::size_t count = 0;
  forEachDifference(left, right, [&](int difference) {
    sum += difference;
    ++count;
  });
  EXPECT_GT(count, 0U);
  return sum / static_cast<double>(std::max<std::size_t>(count, 1));
}

int maximumDifference(const PixelBuffer& left, const PixelBuffer& right) {
  int maximum = -1;
  forEachDifference(left, right, [&](int difference) { maximum = std::max(maximum, difference); });
  EXPECT_GE(maximum, 0);
  return maximum;
}

Bytes makeCmykTestProfile() {
  const LcmsProfile profile(cmsCreateProfilePlaceholder(nullptr));
  cmsSetProfileVersion(profile.get(), 2.1);
  cmsSetDeviceClass(profile.get(), cmsSigOutputClass);
  cmsSetColorSpace(profile.get(), cmsSigCmykData);
  cmsSetPCS(profile.get(), cmsSigLabData);
  cmsPipeline* const inksToLab = cmsPipelineAlloc(nullptr, 4, 3);
  cmsStage* const table = cmsStageAllocCLut16bit(nullptr, 9, 4, 3, nullptr);
  const auto sampler = [](const cmsUInt16Number inks[], cmsUInt16Number lab[], void*) {
    const cmsCIELab color{100.0 - inks[0] / 655.35, 0, 0};
    cmsFloat2LabEncodedV2(lab, &color);
    return 1;
  };
  cmsStageSampleCLut16bit(table, sampler, nullptr, 0);
  cmsPipelineInsertStage(inksToLab, cmsAT_END, table);
  cmsWriteTag(profile.get(), cmsSigAToB0Tag, inksToLab);
  cmsPipelineFree(inksToLab);
  cmsUInt32Number size = 0;
  cmsSaveProfileToMem(profile.get(), nullptr, &size);
  Bytes bytes(size);
  cmsSaveProfileToMem(profile.get(), bytes.data(), &size);
  return bytes;
}

bool contains(std::span<const std::uint8_t> bytes, std::string_view text) {
  return !std::ranges::search(bytes, text, [](std::uint8_t byte, char character) {
            return byte == static_cast<std::uint8_t>(character);
          }).empty();
}

std::string outputOf(const std::string& command) {
  std::string output;
  FILE* const pipe = ::popen(command.c_str(), "r");
  if (pipe == nullptr) throw std::runtime_error("cannot run " + command);
  for (int character = std::fgetc(pipe); character != EOF; character = std::fgetc(pipe))
    output += static_cast<char>(character);
  const int status = ::pclose(pipe);
  EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) == 0) << command;
  return output;
}

}  // namespace kestrivane::imageTesting
