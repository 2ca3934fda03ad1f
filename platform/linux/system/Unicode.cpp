#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/Unicode.hpp"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <memory>
#include <new>

#include <unicase.h>
#include <unistr.h>

namespace kestrivane {
namespace {

const std::uint8_t* bytesOf(std::string_view text) {
  return reinterpret_cast<const std::uint8_t*>(text.data());
}

bool isASCII(std::string_view text) {
  for (const char c : text)
    if (static_cast<unsigned char>(c) >= 0x80) return false;
  return true;
}

struct FreeDeleter {
  void operator()(void* memory) const { std::free(memory); }
};

}  // namespace

std::string lowercased(std::string_view text) {
  if (isASCII(text) || u8_check(bytesOf(text), text.size()) != nullptr)
    return asciiLowercased(text);
  std::size_t length = 0;
  const std::unique_ptr<std::uint8_t, FreeDeleter> lower(
      u8_tolower(bytesOf(text), text.size(), nullptr, nullptr, nullptr, &length));
  if (lower == nullptr) throw std::bad_alloc();
  return std::string(reinterpret_cast<const char*>(lower.get()), length);
}

}  // namespace kestrivane
