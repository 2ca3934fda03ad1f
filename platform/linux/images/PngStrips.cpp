#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngStrips.hpp"

#include <algorithm>
#include <condition_variable>
#include <exception>
#include <mutex>
#include <optional>
#include <system_error>
#include <thread>
#include <vector>

#include <libdeflate.h>
#include <zlib.h>

#include "platform/linux/images/PngChunk.hpp"
#include "platform/linux/images/PngDeflater.hpp"

namespace kestrivane::png {
namespace {

/// Long enough that the missing look back over a strip's start costs under 1 %.
constexpr std::size_t stripBytes = 512 * 1024;

/// Each takes up to 2 MB: a strip before and after compression, and the compressor's tables.
constexpr std::size_t maximumThreads = 8;

/// Photos hardly get smaller with more effort, drawings do and take little time even so.
int levelFor(FilterChoice choice) {
  return choice == FilterChoice::perRow ? 2 : 7;
}

class Strips {
 public:
  Strips(const PixelRows& picture, FilterChoice choice, ImageOutput& output)
      : picture_(picture),
        choice_(choice),
        rows_(std::max<std::size_t>(stripBytes / (picture.rowBytes() + 1), 1)),
        count_((picture.height() + rows_ - 1) / rows_),
        output_(output) {}

  void write() {
    writeChunk("IDAT", zlibHeader, output_);
    {
      std::vector<std::jthread> helpers;
      startHelpers(helpers);
      work();
    }
    if (failure_) std::rethrow_exception(failure_);
    writeChunk("IDAT", bigEndian(checksum_), output_);
  }

 private:
  /// Fewer than wanted, down to none, will do.
  void startHelpers(std::vector<std::jthread>& helpers) {
    const std::size_t threads =
        std::min<std::size_t>({std::thread::hardware_concurrency(), count_, maximumThreads});
    try {
      while (helpers.size() + 1 < threads)
        helpers.emplace_back([this] { work(); });
    } catch (const std::system_error&) {
    }
  }

  void work() noexcept {
    try {
      RowFilter filter(picture_);
      Deflater deflater(levelFor(choice_));
      std::vector<std::uint8_t> filtered;
      while (const std::optional<std::size_t> strip = takeStrip()) {
        filtered.clear();
        filter.append(*strip * rows_, std::min((*strip + 1) * rows_, picture_.height()), choice_,
                      filtered);
        const auto compressed =
            deflater.compress(filtered, *strip + 1 == count_ ? StreamEnd::yes : StreamEnd::no);
        put(*strip, filtered, compressed);
      }
    } catch (...) {
      const std::scoped_lock lock(mutex_);
      failure_ = std::current_exception();
      changed_.notify_all();
    }
  }

  std::optional<std::size_t> takeStrip() {
    const std::scoped_lock lock(mutex_);
    if (failure_ || taken_ == count_) return {};
    return taken_++;
  }

  /// Waits until the strips before it are written.
  void put(std::size_t strip, std::span<const std::uint8_t> filtered,
           std::span<const std::uint8_t> compressed) {
    const std::uint32_t ofChunk = chunkChecksum("IDAT", compressed);
    const std::uint32_t ofStrip = libdeflate_adler32(1, filtered.data(), filtered.size());
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return written_ == strip || failure_; });
    if (failure_) return;
    writeChunk("IDAT", compressed, ofChunk, output_);
    checksum_ = static_cast<std::uint32_t>(
        adler32_combine(checksum_, ofStrip, static_cast<z_off_t>(filtered.size())));
    ++written_;
    changed_.notify_all();
  }

  const PixelRows& picture_;
  const FilterChoice choice_;
  const std::size_t rows_;   // of a strip; the last one may have fewer
  const std::size_t count_;  // of strips

  std::mutex mutex_;  // for everything below
  std::condition_variable changed_;
  ImageOutput& output_;
  std::size_t taken_ = 0;
  std::size_t written_ = 0;
  std::uint32_t checksum_ = 1;  // Adler-32 of the strips written
  std::exception_ptr failure_;
};

}  // namespace

void writeStrips(const PixelRows& picture, FilterChoice choice, ImageOutput& output) {
  Strips(picture, choice, output).write();
}

}  // namespace kestrivane::png
