#ifndef __linux__
#error "This adapter is for Linux."
#endif
#include "platform/linux/updates/EdSignature.hpp"

#include <sodium.h>

namespace kestrivane {
namespace {

template <std::size_t count>
std::optional<std::array<unsigned char, count>> decoded(std::string_view base64) {
  std::array<unsigned char, count> bytes{};
  std::size_t length = 0;
  const int status = ::sodium_base642bin(bytes.data(), count, base64.data(), base64.size(), nullptr,
                                         &length, nullptr, sodium_base64_VARIANT_ORIGINAL);
  if (status != 0 || length != count) return std::nullopt;
  return bytes;
}

}  // namespace

std::optional<EdPublicKey> EdPublicKey::create(std::string_view base64) {
  const auto bytes = decoded<crypto_sign_ed25519_PUBLICKEYBYTES>(base64);
  if (!bytes) return std::nullopt;
  EdPublicKey key;
  key.key_ = *bytes;
  return key;
}

bool EdPublicKey::verifies(std::string_view signature, std::span<const unsigned char> bytes) const {
  const auto decodedSignature = decoded<crypto_sign_ed25519_BYTES>(signature);
  return decodedSignature &&
         ::crypto_sign_ed25519_verify_detached(decodedSignature->data(), bytes.data(), bytes.size(),
                                               key_.data()) == 0;
}

}  // namespace kestrivane
