// Lower case and valid UTF-8, as the Unicode Standard defines them.

#include <string>

#include <gtest/gtest.h>

#include "platform/Unicode.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"

namespace kestrivane::test {
namespace {

struct TextCase {
  std::string text;
  std::string expected;
};

class LowerCase : public testing::TestWithParam<TextCase> {};

TEST_P(LowerCase, IsThatOfUnicode) {
  EXPECT_EQ(lowercased(GetParam().text), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(
    Texts, LowerCase,
    testing::Values(TextCase{"", ""}, TextCase{"PNG", "png"}, TextCase{"Png1_.Z[", "png1_.z["},
                    TextCase{"ФОТО.PNG", "фото.png"}, TextCase{"ÄÖÜ", "äöü"}, TextCase{"ß", "ß"},
                    TextCase{"\u1E9E", "ß"}, TextCase{"\u0130", "i\u0307"},  // capital i with a dot
                    TextCase{"\U00010400", "\U00010428"},  // Deseret, four bytes long
                    TextCase{"\u212A", "k"},               // the Kelvin sign becomes shorter
                    TextCase{"A\xff"
                             "B",
                             "a\xff"
                             "b"},  // not UTF-8: only A to Z change
                    TextCase{"\xff"
                             "Ä",
                             "\xff"
                             "Ä"},
                    TextCase{"JPG\xd0", "jpg\xd0"},
                    TextCase{std::string("A\0B", 3), std::string("a\0b", 3)},
                    TextCase{"日本", "日本"}));

TEST(LowerCase, DoesNotDependOnTheLocale) {
  const EnvironmentGuard turkish("LC_ALL", "tr_TR.UTF-8");
  EXPECT_EQ(lowercased("TIFF"), "tiff");
  EXPECT_EQ(lowercased("ЁI"), "ёi");
}

class ValidText : public testing::TestWithParam<TextCase> {};

TEST_P(ValidText, HasOneReplacementForEachMaximalSubpart) {
  EXPECT_EQ(validUTF8(GetParam().text), GetParam().expected);
}

#define R "\uFFFD"
INSTANTIATE_TEST_SUITE_P(
    Texts, ValidText,
    testing::Values(TextCase{"", ""}, TextCase{"a.png", "a.png"},
                    TextCase{"фото \U0001F600", "фото \U0001F600"},
                    TextCase{std::string("a\0b", 3), std::string("a\0b", 3)}, TextCase{"\x80", R},
                    TextCase{"\xff\xfe.jpg", R R ".jpg"}, TextCase{"a\xd1", "a" R},
                    TextCase{"\xd1.png", R ".png"}, TextCase{"\xc0\xaf", R R},  // "/" in two bytes
                    TextCase{"\xc1\xbf", R R},
                    TextCase{"\xe0\x9f\xbf", R R R},  // longer than needed
                    TextCase{"\xe0\xa0\x80", "\u0800"}, TextCase{"\xed\x9f\xbf", "\uD7FF"},
                    TextCase{"\xed\xa0\x80", R R R},  // a surrogate
                    TextCase{"\xf0\x8f\xbf\xbf", R R R R},
                    TextCase{"\xf0\x90\x80\x80", "\U00010000"},
                    TextCase{"\xf4\x8f\xbf\xbf", "\U0010FFFF"},
                    TextCase{"\xf4\x90\x80\x80", R R R R},  // beyond the last character
                    TextCase{"\xf5\x80", R R}, TextCase{"\xe2\x82", R},  // cut short: one subpart
                    TextCase{"\xe2\x82x", R "x"}, TextCase{"\xf0\x9f\x98", R},
                    TextCase{"\xf0\x9f\x98\xf0\x9f\x98\x80", R "\U0001F600"},
                    // The Standard's own example, table 3-8.
                    TextCase{"\xc0\xaf\xe0\x80\xbf\xf0\x81\x82\x41", R R R R R R R R "A"},
                    // And table 3-11.
                    TextCase{"\xe1\x80\xe2\xf0\x91\x92\xf1\xbf\x41", R R R R "A"}));
#undef R

TEST(PrintableText, EscapesControlCharactersAndMendsInvalidText) {
  EXPECT_EQ(printable("a\nb\tc\x1b[31m\x7f"), "a\\nb\\x09c\\x1b[31m\\x7f");
  EXPECT_EQ(printable("\xC2\x9B"
                      "31m"),
            "\\x9b31m");
  EXPECT_EQ(printable("ФОТО -> é"), "ФОТО -> é");
  EXPECT_EQ(printable("a\xFF.png"), "a\xEF\xBF\xBD.png");
}

}  // namespace
}  // namespace kestrivane::test
