#include <QDir>
#include <QFile>
#include <QPainter>

#include <gtest/gtest.h>

#include "views/SymbolDrawing.hpp"

namespace kestrivane::test {
namespace {

constexpr QSize size(48, 48);

/// The symbols that the interface names.
constexpr const char* names[] = {"arrow.triangle.2.circlepath",
                                 "arrow.triangle.2.circlepath.circle.fill",
                                 "bell.badge.fill",
                                 "folder.badge.questionmark",
                                 "folder.fill",
                                 "plus.circle.fill",
                                 "power.circle.fill",
                                 "questionmark.app",
                                 "xmark.circle.fill"};

/// The sum of the opacities of all pixels.
qint64 coverage(const QImage& image) {
  qint64 sum = 0;
  for (int y = 0; y < image.height(); ++y) {
    for (int x = 0; x < image.width(); ++x)
      sum += image.pixelColor(x, y).alpha();
  }
  return sum;
}

TEST(SymbolDrawing, EverySymbolIsADrawingOfItsOwnInsideItsSquare) {
  const QImage substitute = symbolImage("questionmark.app", size, Qt::black);
  for (const char* const name : names) {
    const QImage image = symbolImage(name, size, Qt::black);
    EXPECT_EQ(image.size(), size);
    EXPECT_GT(coverage(image), 48 * 48 * 255 / 8) << name;
    EXPECT_EQ(image == substitute, name == QString("questionmark.app")) << name;
    for (int i = 0; i < 48; ++i) {
      for (const QPoint edge : {QPoint(i, 0), QPoint(i, 47), QPoint(0, i), QPoint(47, i)}) {
        EXPECT_EQ(image.pixelColor(edge).alpha(), 0) << name;
      }
    }
  }
}

TEST(SymbolDrawing, AQuestionMarkStandsForASymbolThatIsNotThere) {
  EXPECT_EQ(symbolImage("no.such.symbol", size, Qt::red),
            symbolImage("questionmark.app", size, Qt::red));
}

TEST(SymbolDrawing, AllColourComesFromTheTint) {
  const QImage image = symbolImage("folder.fill", size, QColor(10, 20, 200));
  EXPECT_EQ(image.pixelColor(24, 30), QColor(10, 20, 200));
  const QImage faint = symbolImage("folder.fill", size, QColor(10, 20, 200, 128));
  EXPECT_EQ(faint.pixelColor(24, 30).alpha(), 128);
}

TEST(SymbolDrawing, HierarchicalSymbolsHaveAFainterLayerBehind) {
  for (const char* const name : {"power.circle.fill", "xmark.circle.fill"}) {
    const QImage image = symbolImage(name, size, Qt::black);
    EXPECT_NEAR(image.pixelColor(24, 6).alpha(), 0.3 * 255, 2) << name;
    int strongest = 0;
    for (int x = 0; x < 48; ++x)
      strongest = std::max(strongest, image.pixelColor(x, 22).alpha());
    EXPECT_EQ(strongest, 255) << name;
  }
}

TEST(SymbolDrawing, AShadowKeepsItsCoverageAndIsSpreadEvenly) {
  QImage dot(41, 41, QImage::Format_ARGB32_Premultiplied);
  dot.fill(Qt::transparent);
  QPainter(&dot).fillRect(18, 18, 5, 5, Qt::black);
  const QImage shadow = shadowOf(dot, QColor(0, 0, 255, 128), 6);
  EXPECT_NEAR(static_cast<double>(coverage(shadow)), 25 * 128, 25 * 128 * 0.05);
  EXPECT_EQ(shadow.pixelColor(20, 15), shadow.pixelColor(15, 20));
  EXPECT_EQ(shadow.pixelColor(20, 15), shadow.pixelColor(20, 25));
  EXPECT_GT(shadow.pixelColor(20, 20).alpha(), shadow.pixelColor(20, 16).alpha());
  EXPECT_GT(shadow.pixelColor(20, 16).alpha(), 0);
  EXPECT_EQ(shadow.pixelColor(20, 2).alpha(), 0);
}

TEST(SymbolDrawing, TheArtworkIsThere) {
  for (const char* const name : {"kestrivane-icon", "menubar-icon"}) {
    EXPECT_TRUE(QFile::exists(QString(":/kestrivane/%1.svg").arg(name))) << name;
  }
  EXPECT_EQ(QDir(":/kestrivane/symbols").entryList().size(), static_cast<int>(std::size(names)));
}

}  // namespace
}  // namespace kestrivane::test
