#include <string>

#include <gtest/gtest.h>

#include "platform/linux/updates/EdSignature.hpp"

namespace kestrivane {
namespace {

// The second test vector of RFC 8032, section 7.1: its public key, and the signature of the
// byte 72.
constexpr std::string_view key = "PUAXw+hDiVqStwqnTRt+vJyYLM8uxJaMwM1V8Sr0Zgw=";
constexpr std::string_view signature =
    "kqAJqfDUyrhyDoILX2QlQKKye1QWUD+Ps3YiI+vbadoIWsHkPhWZbkWPNhPQ8R2MOHsurrQwKu6wDSkWErsMAA==";
constexpr unsigned char message[] = {0x72};

TEST(EdSignature, VerifiesThePublishedExample) {
  const auto publicKey = EdPublicKey::create(key);
  ASSERT_TRUE(publicKey);
  EXPECT_TRUE(publicKey->verifies(signature, message));
}

TEST(EdSignature, RefusesOtherBytesSignaturesAndKeys) {
  const auto publicKey = EdPublicKey::create(key);
  ASSERT_TRUE(publicKey);
  constexpr unsigned char other[] = {0x73};
  EXPECT_FALSE(publicKey->verifies(signature, other));
  EXPECT_FALSE(publicKey->verifies(signature, {}));
  std::string changed(signature);
  changed[3] = 'A';
  EXPECT_FALSE(publicKey->verifies(changed, message));
  EXPECT_FALSE(publicKey->verifies("", message));
  EXPECT_FALSE(publicKey->verifies(signature.substr(4), message));
  EXPECT_FALSE(publicKey->verifies("not Base64!", message));
  const auto otherKey = EdPublicKey::create("11qYAYKxCrfVS/7TyWQHOg7hcvPapiMlrwIaaPcHURo=");
  ASSERT_TRUE(otherKey);
  EXPECT_FALSE(otherKey->verifies(signature, message));
}

TEST(EdSignature, MakesNoKeyOfAnythingElse) {
  EXPECT_FALSE(EdPublicKey::create(""));
  EXPECT_FALSE(EdPublicKey::create("PUAXw+hDiVqStwqnTRt+vJyYLM8uxJaMwM1V8Sr0Zg=="));
  EXPECT_FALSE(EdPublicKey::create("a key"));
}

}  // namespace
}  // namespace kestrivane
