#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/StatusButton.hpp"

#include <QFile>
#include <QGuiApplication>
#include <QPalette>
#include <QSvgRenderer>
#include <algorithm>
#include <cmath>
#include <utility>

namespace kestrivane {
namespace {

/// Of a bar that an image without a side of its own is made for, in points: the image leaves two
/// above and two below.
constexpr double barHeight = 22;
constexpr double imageSide = 18;

QString fileOf(const StatusImage& image) {
  const QString name = QString::fromStdString(image.name) + ".svg";
  return (image.source == StatusImage::Source::symbol ? ":/kestrivane/symbols/" : ":/kestrivane/") +
         name;
}

}  // namespace

void StatusButton::setImage(const StatusImage& image) {
  if (!QFile::exists(fileOf(image))) return;
  image_ = image;
  changed();
}

void StatusButton::setAlphaValue(double alpha) {
  alpha_ = alpha;
  changed();
}

void StatusButton::click() {
  if (!isSpent_() && action_) action_();
}

void StatusButton::dragEntered() {
  if (target_) target_->draggingEntered();
  changed();
}

void StatusButton::dragExited() {
  if (target_) target_->draggingExited();
  changed();
}

bool StatusButton::dropped(std::optional<std::vector<FileURL>> urls) {
  const bool isAccepted = target_ && target_->performDragOperation([&] { return std::move(urls); });
  changed();
  return isAccepted;
}

void StatusButton::paint(QPainter& painter, QSizeF size, const QColor& tint) const {
  const double scale = std::min(size.width(), size.height()) / barHeight;
  if (!image_.name.empty()) {
    const double side = image_.side.value_or(imageSide) * scale;
    const double density = painter.device()->devicePixelRatioF();
    // Whole pixels keep straight edges sharp.
    const int pixels = std::max(1, static_cast<int>(std::lround(side * density)));
    QImage drawn(pixels, pixels, QImage::Format_ARGB32_Premultiplied);
    drawn.fill(Qt::transparent);
    QPainter drawing(&drawn);
    QSvgRenderer(fileOf(image_)).render(&drawing);
    // A symbol has no colours of its own; in a bar it is drawn like a template.
    drawing.setCompositionMode(QPainter::CompositionMode_SourceIn);
    drawing.fillRect(drawn.rect(), tint);
    drawing.end();
    drawn.setDevicePixelRatio(density);
    const double left = std::floor((size.width() * density - pixels) / 2) / density;
    const double top = std::floor((size.height() * density - pixels) / 2) / density;
    painter.setOpacity(alpha_);
    painter.drawImage(QPointF(left, top), drawn);
    painter.setOpacity(1);
  }

  if (const auto highlight = target_ ? target_->highlight() : std::nullopt) {
    QColor accent = QGuiApplication::palette().color(QPalette::Highlight);
    accent.setAlphaF(static_cast<float>(highlight->opacity));
    const double inset = highlight->inset;
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(accent);
    painter.drawRoundedRect(QRectF(QPointF(0, 0), size).adjusted(inset, inset, -inset, -inset),
                            highlight->cornerRadius, highlight->cornerRadius);
  }
}

void StatusButton::changed() const {
  if (onChanged) onChanged();
}

}  // namespace kestrivane
