// Whether a file comes from whoever holds the private half of a key: Ed25519 (RFC 8032).
//
// Thread-safety: immutable values.
#pragma once

#include <array>
#include <optional>
#include <span>
#include <string_view>

namespace kestrivane {

class EdPublicKey {
 public:
  /// From the 32 bytes in Base64 (RFC 4648); nothing for anything else.
  static std::optional<EdPublicKey> create(std::string_view base64);

  /// True if `signature`, 64 bytes in Base64, is this key's for exactly these bytes.
  bool verifies(std::string_view signature, std::span<const unsigned char> bytes) const;

 private:
  EdPublicKey() = default;

  std::array<unsigned char, 32> key_{};
};

}  // namespace kestrivane
