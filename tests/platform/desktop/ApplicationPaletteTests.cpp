#include <QGuiApplication>
#include <QPalette>

#include <gtest/gtest.h>

#include "platform/linux/desktop/ApplicationPalette.hpp"

namespace kestrivane::test {
namespace {

float lightness(QPalette::ColorRole role) {
  return QGuiApplication::palette().color(role).lightnessF();
}

void expectDark() {
  EXPECT_LT(lightness(QPalette::Window), 0.3F);
  EXPECT_GT(lightness(QPalette::WindowText), 0.9F);
}

void expectLight() {
  EXPECT_GT(lightness(QPalette::Window), 0.9F);
  EXPECT_LT(lightness(QPalette::WindowText), 0.1F);
}

TEST(ApplicationPalette, HasTheAppearanceThatIsAskedFor) {
  const QPalette before = QGuiApplication::palette();
  showAppearance(Appearance::dark);
  expectDark();
  showAppearance(Appearance::light);
  expectLight();
  showAppearance(Appearance::dark);
  expectDark();
  EXPECT_EQ(QGuiApplication::palette().color(QPalette::Highlight),
            before.color(QPalette::Highlight));
  showAppearance(std::nullopt);
  EXPECT_EQ(QGuiApplication::palette(), before);
}

TEST(ApplicationPalette, IsThatOfTheDesktopWhereItHasTheAppearanceAlready) {
  const QPalette before = QGuiApplication::palette();
  showAppearance(Appearance::light);
  EXPECT_EQ(QGuiApplication::palette(), before);
}

}  // namespace
}  // namespace kestrivane::test
