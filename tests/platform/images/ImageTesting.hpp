// Helpers of the picture tests: pictures with known pixels, comparison, files in a folder of their
// own, other programs as independent readers.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "platform/FileURL.hpp"
#include "platform/linux/images/Codec.hpp"

namespace kestrivane::imageTesting {

using Bytes = std::vector<std::uint8_t>;

inline constexpr PixelLayout grey8{Channels::grey, Depth::eight};
inline constexpr PixelLayout grey16{Channels::grey, Depth::sixteen};
inline constexpr PixelLayout rgb8{Channels::rgb, Depth::eight};
inline constexpr PixelLayout rgb16{Channels::rgb, Depth::sixteen};
inline constexpr PixelLayout rgba8{Channels::rgba, Depth::eight};
inline constexpr PixelLayout rgba16{Channels::rgba, Depth::sixteen};

/// A folder that is removed, with everything in it, at the end of the test.
class TemporaryFolder {
 public:
  TemporaryFolder();
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder();

  FileURL operator/(const std::string& name) const { return url_.appendingPathComponent(name); }
  /// The names of what is in it, sorted.
  std::vector<std::string> names() const;

 private:
  FileURL url_;
};

/// The file of that name in tests/samples.
FileURL sample(const std::string& name);

Bytes readFile(const FileURL& url);
void writeFile(const FileURL& url, std::span<const std::uint8_t> bytes);

/// Smooth, different in every channel and at every place; alpha, where there is any, runs from 0 to
/// full.
PixelBuffer makePicture(std::size_t width, std::size_t height, PixelLayout layout);

/// Bytes without any pattern, the same every time.
PixelBuffer makeNoise(std::size_t width, std::size_t height, PixelLayout layout);

Bytes pixelsOf(const PixelBuffer& picture);

/// The picture as other channels or with another depth.
PixelBuffer converted(const PixelBuffer& picture, PixelLayout layout);

/// What `codec` makes of `picture`, as a file's bytes; the picture is handed over in the layout and
/// colours that the codec asks for.
Bytes encode(const Codec& codec, const PixelBuffer& picture);
PixelBuffer decode(const Codec& codec, std::span<const std::uint8_t> bytes);

/// The sample as ImageMagick shows it after `options`, with 8 bits and without its alpha channel.
PixelBuffer shownByImageMagick(const std::string& name, const std::string& options = "");

/// The JPEG file with the orientation `value` told before everything else.
Bytes withOrientation(std::uint8_t value, std::span<const std::uint8_t> jpeg);

/// Over all channels, in steps of the depth's smallest unit. Both of one size and layout.
double meanDifference(const PixelBuffer& left, const PixelBuffer& right);
int maximumDifference(const PixelBuffer& left, const PixelBuffer& right);

/// An ICC profile for CMYK in which cyan alone makes black, in proportion, and other inks do
/// nothing.
Bytes makeCmykTestProfile();

bool contains(std::span<const std::uint8_t> bytes, std::string_view text);

/// What `command` prints, run by the shell; the test fails when its exit status is not 0.
std::string outputOf(const std::string& command);

}  // namespace kestrivane::imageTesting
