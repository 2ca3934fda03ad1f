#include "views/SymbolDrawing.hpp"

#include <QFile>
#include <QPainter>
#include <QSvgRenderer>
#include <algorithm>
#include <cmath>
#include <vector>

namespace kestrivane {

namespace {

QString symbolPath(const QString& name) {
  const QString path = QStringLiteral(":/kestrivane/symbols/%1.svg");
  const QString wanted = path.arg(name);
  return QFile::exists(wanted) ? wanted : path.arg(QStringLiteral("questionmark.app"));
}

/// The weights of pixels 0, 1, 2... away from the middle, up to three deviations. Their sum over
/// both sides is one.
std::vector<qreal> gaussian(qreal deviation) {
  std::vector<qreal> weights;
  qreal sum = 0;
  for (int distance = 0; distance <= std::ceil(3 * deviation); ++distance) {
    weights.push_back(std::exp(-distance * distance / (2 * deviation * deviation)));
    sum += (distance == 0 ? 1 : 2) * weights.back();
  }
  for (auto& weight : weights)
    weight /= sum;
  return weights;
}

/// Blurs the rows of an 8-bit image and returns it with rows and columns exchanged.
QImage blurredAndTurned(const QImage& image, const std::vector<qreal>& weights) {
  QImage result(image.height(), image.width(), QImage::Format_Alpha8);
  const int reach = static_cast<int>(weights.size()) - 1;
  for (int y = 0; y < image.height(); ++y) {
    const uchar* row = image.constScanLine(y);
    for (int x = 0; x < image.width(); ++x) {
      qreal sum = 0;
      for (int i = std::max(x - reach, 0); i <= std::min(x + reach, image.width() - 1); ++i) {
        sum += row[i] * weights[static_cast<std::size_t>(std::abs(i - x))];
      }
      result.scanLine(x)[y] = static_cast<uchar>(std::lround(sum));
    }
  }
  return result;
}

}  // namespace

QImage symbolImage(const QString& name, QSize pixels, const QBrush& tint) {
  QImage image(pixels, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  QSvgRenderer(symbolPath(name)).render(&painter);
  painter.setCompositionMode(QPainter::CompositionMode_SourceIn);
  painter.fillRect(image.rect(), tint);
  return image;
}

QImage shadowOf(const QImage& image, const QColor& colour, qreal radius) {
  const auto weights = gaussian(radius / 2);
  const QImage coverage = image.convertToFormat(QImage::Format_Alpha8);
  const QImage blurred = blurredAndTurned(blurredAndTurned(coverage, weights), weights);

  QImage shadow(image.size(), QImage::Format_ARGB32_Premultiplied);
  shadow.fill(colour);
  QPainter painter(&shadow);
  painter.setCompositionMode(QPainter::CompositionMode_DestinationIn);
  painter.drawImage(0, 0, blurred);
  return shadow;
}

}  // namespace kestrivane
