#include <optional>
#include <string>

#include <gtest/gtest.h>

#include "state/L10n.hpp"
#include "tests/support/FakeLocale.hpp"

namespace kestrivane::test {
namespace {

struct LanguageCase {
  std::optional<std::string> code;
  bool isRussian;
};

class L10nLanguage : public testing::TestWithParam<LanguageCase> {};

TEST_P(L10nLanguage, IsRussianForTheCodeRuOnly) {
  const LanguageGuard language(GetParam().code);
  EXPECT_EQ(L10n::isRussian(), GetParam().isRussian);
}

INSTANTIATE_TEST_SUITE_P(GoodAndBadCodes, L10nLanguage,
                         testing::Values(LanguageCase{"ru", true}, LanguageCase{"en", false},
                                         LanguageCase{"uk", false}, LanguageCase{"be", false},
                                         LanguageCase{"RU", false}, LanguageCase{"rus", false},
                                         LanguageCase{"", false},
                                         LanguageCase{std::nullopt, false}));

TEST(L10n, ALocaleWithoutALanguageYieldsEnglish) {
  const LanguageGuard language(std::nullopt);
  EXPECT_EQ(L10n::conversionError("x"), "Conversion error: x");
}

TEST(L10n, BuildsEveryMessageInEnglish) {
  const LanguageGuard language("en");
  EXPECT_EQ(L10n::unsupportedFormat("png", "svg"),
            "Conversion from 'png' to 'svg' is not supported.");
  EXPECT_EQ(L10n::conversionError("no"), "Conversion error: no");
  EXPECT_EQ(L10n::success("a.png", "a.jpg"), "Success: a.png -> a.jpg");
  EXPECT_EQ(L10n::reverted("clip.webm", "mp4"),
            "Conversion failed. File 'clip.webm' reverted to original extension 'mp4'.");
  EXPECT_EQ(L10n::revertFailed("a.jpg"),
            "Could not revert file 'a.jpg' to its original extension. Please check it manually.");
}

TEST(L10n, BuildsEveryMessageInRussian) {
  const LanguageGuard language("ru");
  EXPECT_EQ(L10n::unsupportedFormat("png", "svg"),
            "Конвертация из 'png' в 'svg' не поддерживается.");
  EXPECT_EQ(L10n::conversionError("no"), "Ошибка конвертации: no");
  EXPECT_EQ(L10n::success("a.png", "a.jpg"), "Успешно: a.png -> a.jpg");
  EXPECT_EQ(L10n::reverted("clip.webm", "mp4"),
            "Конвертация не удалась. Файл 'clip.webm' возвращен к исходному расширению 'mp4'.");
  EXPECT_EQ(L10n::revertFailed("a.jpg"),
            "Не удалось вернуть файл 'a.jpg' к исходному расширению. Пожалуйста, проверьте файл "
            "вручную.");
}

TEST(L10n, AChangeOfTheLanguageTakesEffectForTheNextMessage) {
  const LanguageGuard language("en");
  const std::string before = L10n::success("a", "b");
  fakeLanguageCode = "ru";
  EXPECT_EQ(L10n::success("a", "b"), "Успешно: a -> b");
  EXPECT_EQ(before, "Success: a -> b");
}

TEST(L10n, EmptyArgumentsAreInsertedAsEmptyStrings) {
  const LanguageGuard language("en");
  EXPECT_EQ(L10n::unsupportedFormat("", "jpg"), "Conversion from '' to 'jpg' is not supported.");
}

TEST(L10n, ApostrophesAndArrowsInNamesAreInsertedUnchanged) {
  const LanguageGuard language("en");
  EXPECT_EQ(L10n::success("it's -> a.png", "b.jpg"), "Success: it's -> a.png -> b.jpg");
  EXPECT_EQ(
      L10n::revertFailed("it's.jpg"),
      "Could not revert file 'it's.jpg' to its original extension. Please check it manually.");
}

}  // namespace
}  // namespace kestrivane::test
