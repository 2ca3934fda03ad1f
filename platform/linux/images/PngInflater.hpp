// Decompresses a zlib stream (RFC 1950) that comes piece by piece, over ISA-L.
//
// Takes about 100 KB, however large the stream. Thread-safety: none, but an inflater may go from
// one thread to another. Ownership: owns its state; the source is asked from within `readUpTo` and
// `finish` only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <span>

struct inflate_state;

namespace kestrivane::png {

class Inflater {
 public:
  /// Hands out the next compressed bytes, which stay until it is asked again; none at their end.
  using Source = std::function<std::span<const std::uint8_t>()>;

  explicit Inflater(Source source);
  ~Inflater();
  Inflater(const Inflater&) = delete;
  Inflater& operator=(const Inflater&) = delete;

  // Both throw `ImageError` when the stream is damaged or cut short, and what the source throws.

  /// Fills `target`, of less than 4 GiB, unless the stream ends before. Returns the number of bytes
  /// decompressed.
  std::size_t readUpTo(std::span<std::uint8_t> target);

  /// Passes over the rest of the stream; its checksum has been compared then.
  void finish();

 private:
  void refill();

  Source source_;
  std::unique_ptr<inflate_state> state_;
  bool hasStarted_ = false;
};

}  // namespace kestrivane::png
