#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/ApplicationPalette.hpp"

#include <QGuiApplication>
#include <QPalette>

namespace kestrivane {
namespace {

Appearance appearanceOf(const QPalette& palette) {
  const bool isDark = palette.color(QPalette::Window).lightnessF() < 0.5F;
  return isDark ? Appearance::dark : Appearance::light;
}

}  // namespace

void showAppearance(std::optional<Appearance> appearance) {
  QGuiApplication::setPalette({});
  const QPalette found = QGuiApplication::palette();
  if (appearance.value_or(appearanceOf(found)) == appearanceOf(found)) return;

  const QColor background =
      appearance == Appearance::dark ? QColor(48, 48, 55) : QColor(243, 243, 247);
  QPalette palette(background);  // the other colours follow from this one
  palette.setColor(QPalette::Highlight, found.color(QPalette::Highlight));
  QGuiApplication::setPalette(palette);
}

}  // namespace kestrivane
