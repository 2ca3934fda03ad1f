#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/PngInflater.hpp"

#include <utility>
#include <vector>

#include <isa-l/igzip_lib.h>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane::png {

Inflater::Inflater(Source source)
    : source_(std::move(source)), state_(std::make_unique<inflate_state>()) {
  isal_inflate_init(state_.get());
  state_->crc_flag = ISAL_ZLIB;  // reads the header and compares the checksum at the end
}

Inflater::~Inflater() = default;

std::size_t Inflater::readUpTo(std::span<std::uint8_t> target) {
  inflate_state& state = *state_;
  state.next_out = target.data();
  state.avail_out = static_cast<std::uint32_t>(target.size());
  while (state.avail_out > 0 && state.block_state != ISAL_BLOCK_FINISH) {
    if (state.avail_in == 0) refill();
    const std::uint32_t inputBefore = state.avail_in;
    const std::uint32_t roomBefore = state.avail_out;
    const int result = isal_inflate(&state);
    if (result < 0 || result == ISAL_NEED_DICT) throw ImageError("the compressed data is damaged");
    const bool stands = state.avail_in == inputBefore && state.avail_out == roomBefore;
    if (stands && state.block_state != ISAL_BLOCK_FINISH)
      throw ImageError("the compressed data is cut short");
  }
  return target.size() - state.avail_out;
}

void Inflater::finish() {
  std::vector<std::uint8_t> surplus(64 * 1024);
  while (readUpTo(surplus) == surplus.size()) {
  }
}

void Inflater::refill() {
  const std::span<const std::uint8_t> bytes = source_();
  // ISA-L does not look at the size of the window that the first byte tells.
  if (!hasStarted_ && !bytes.empty() && bytes[0] >> 4 > 7)
    throw ImageError("the compressed data is damaged");
  hasStarted_ = true;
  state_->next_in = const_cast<std::uint8_t*>(bytes.data());  // which it only reads
  state_->avail_in = static_cast<std::uint32_t>(bytes.size());
}

}  // namespace kestrivane::png
