#include <exception>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "engine/ConversionError.hpp"
#include "tests/support/FakeLocale.hpp"

namespace kestrivane::test {
namespace {

TEST(ConversionError, FileNotFoundDescribesItselfByTheBareNameInBothLanguages) {
  const auto error = ConversionError::fileNotFound(FileURL("/tmp/a/photo.png"));
  const LanguageGuard language("en");
  EXPECT_EQ(error.errorDescription(), "photo.png");
  fakeLanguageCode = "ru";
  EXPECT_EQ(error.errorDescription(), "photo.png");
}

TEST(ConversionError, RevertFailedDescribesItselfByTheNameAndTheUnderlyingError) {
  const auto error = ConversionError::revertFailed(
      FileURL("/x/clip.webm"), std::make_exception_ptr(PlatformError(2, "No such file")));
  const LanguageGuard language("en");
  EXPECT_EQ(error.errorDescription(), "clip.webm: No such file");
  fakeLanguageCode = "ru";
  EXPECT_EQ(error.errorDescription(), "clip.webm: No such file");
}

TEST(ConversionError, UnsupportedFormatKeepsTheCapitalsOfItsPayload) {
  const LanguageGuard language("en");
  EXPECT_EQ(ConversionError::unsupportedFormat("MOV", "webm").errorDescription(),
            "Conversion from 'MOV' to 'webm' is not supported.");
}

TEST(ConversionError, TheLanguageIsThatOfTheReadingNotOfTheCreation) {
  const LanguageGuard language("en");
  const auto error = ConversionError::conversionFailed("причина");
  EXPECT_EQ(error.errorDescription(), "Conversion error: причина");
  fakeLanguageCode = "ru";
  EXPECT_EQ(error.errorDescription(), "Ошибка конвертации: причина");
}

TEST(ConversionError, NestedDescriptionsDoubleThePrefix) {
  const LanguageGuard language("en");
  const auto inner = ConversionError::conversionFailed("Error processing WebM.");
  const auto outer = ConversionError::conversionFailed(inner.localizedDescription());
  EXPECT_EQ(outer.errorDescription(), "Conversion error: Conversion error: Error processing WebM.");
}

TEST(ConversionError, TheGenericDescriptionIsTheSameText) {
  const LanguageGuard language("en");
  const auto error = std::make_exception_ptr(ConversionError::conversionFailed("no"));
  EXPECT_EQ(localizedDescription(error), "Conversion error: no");
}

TEST(ConversionError, TheCasesHaveTheirOrder) {
  using Case = ConversionError::Case;
  const FileURL url("/a");
  EXPECT_EQ(ConversionError::unsupportedFormat("a", "b").caseIndex(), Case::unsupportedFormat);
  EXPECT_EQ(ConversionError::conversionFailed("a").caseIndex(), Case::conversionFailed);
  EXPECT_EQ(ConversionError::fileNotFound(url).caseIndex(), Case::fileNotFound);
  EXPECT_EQ(ConversionError::revertFailed(url, nullptr).caseIndex(), Case::revertFailed);
  EXPECT_EQ(static_cast<int>(Case::unsupportedFormat), 0);
  EXPECT_EQ(static_cast<int>(Case::revertFailed), 3);
  EXPECT_STREQ(ConversionError::fileNotFound(url).what(), "fileNotFound");
}

TEST(LocalizedDescription, OfOtherExceptionsIsWhatTheySay) {
  EXPECT_EQ(localizedDescription(std::make_exception_ptr(std::runtime_error("plain"))), "plain");
  EXPECT_EQ(localizedDescription(std::make_exception_ptr(7)), "Unknown error");
}

}  // namespace
}  // namespace kestrivane::test
