// The planes of a decoded picture of HEVC: brightness and, unless it is grey, colour differences.
//
// Its blocks are marked before it is decoded: a mark that is still there afterwards stands for a
// block that was not. Thread-safety: none; a picture that nobody changes may be read from any
// thread. Ownership: owns its planes.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace kestrivane::heic {

/// How many colour differences there are; the value is that of chroma_format_idc.
enum class Chroma : std::uint8_t { none = 0, halved = 1, halvedAcross = 2, full = 3 };

struct HevcFormat {
  std::size_t width = 0;
  std::size_t height = 0;
  Chroma chroma = Chroma::halved;
  int bits = 8;  ///< of a sample, 8 to 16; samples of more than 8 are `std::uint16_t`

  std::size_t planeCount() const { return chroma == Chroma::none ? 1 : 3; }
  std::size_t bytesPerSample() const { return bits > 8 ? 2 : 1; }
  /// Whether there is one colour difference for two columns, for two rows.
  bool isHalvedAcross() const { return chroma == Chroma::halved || chroma == Chroma::halvedAcross; }
  bool isHalvedDown() const { return chroma == Chroma::halved; }

  friend bool operator==(const HevcFormat&, const HevcFormat&) = default;
};

/// What samples stand for (ITU-T H.273).
struct HevcSignal {
  bool isFullRange = false;
  int matrix = 2;  ///< MatrixCoefficients; 2 is unspecified
};

/// What the coded picture has around the one to be shown, in pixels.
struct HevcWindow {
  std::size_t codedWidth = 0;
  std::size_t codedHeight = 0;
  std::size_t left = 0;
  std::size_t top = 0;
};

class HevcPicture {
 public:
  /// Blocks are marked, everything else is not set.
  HevcPicture(const HevcFormat& format, const HevcWindow& window);

  const HevcFormat& format() const { return format_; }
  /// Row `y` of brightness (0) or of a colour difference (1, 2), which may have half as many.
  const std::uint8_t* row(std::size_t plane, std::size_t y) const;
  /// Gives memory of the rows before `y` back to the system; they are not read again.
  void releaseRowsBefore(std::size_t y);

  /// For the decoder: a plane as it is coded, and bytes from one row to the next.
  std::uint8_t* codedPlane(std::size_t plane) { return planes_[plane].bytes.get(); }
  std::size_t stride(std::size_t plane) const { return planes_[plane].stride; }
  /// Whether some block has not been decoded.
  bool missesBlocks();

  HevcSignal signal;

 private:
  struct Plane {
    std::unique_ptr<std::uint8_t[]> bytes;
    std::size_t width = 0;  // samples
    std::size_t rows = 0;
    std::size_t stride = 0;    // bytes
    std::size_t first = 0;     // bytes before the first sample that is shown
    std::size_t released = 0;  // bytes
  };

  template <typename Sample, typename Function>
  bool anyMiddle(Function function);
  template <typename Sample>
  void mark();
  template <typename Sample>
  bool isMarked();
  void markBlocks();

  HevcFormat format_;
  std::array<Plane, 3> planes_;
};

}  // namespace kestrivane::heic
