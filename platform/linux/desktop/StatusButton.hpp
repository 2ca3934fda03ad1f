// The button of the status item as a value that the icons of the desktop's several trays show: what
// it looks like, what a click does and what takes its drops.
//
// Thread-safety: for the main thread. Ownership: owns its drop target. The icon that shows it sets
// `onChanged` and `findAnchor`, and clears them when it goes.
#pragma once

#include <QColor>
#include <QPainter>
#include <QRect>
#include <functional>
#include <optional>

#include "platform/StatusBar.hpp"

namespace kestrivane {

class StatusButton final : public StatusBarButton {
 public:
  /// `isSpent` says of the click that is handled now that it has done its work already.
  explicit StatusButton(std::function<bool()> isSpent) : isSpent_(std::move(isSpent)) {}

  /// Called when it looks different.
  std::function<void()> onChanged;
  /// Where on the screen it is, in Qt's coordinates; empty when that cannot be known.
  std::function<QRect()> findAnchor;

  void setImage(const StatusImage& image) override;
  void setAlphaValue(double alpha) override;
  void setAction(std::function<void()> action) override { action_ = std::move(action); }
  void setDropTarget(std::unique_ptr<DropTarget> target) override { target_ = std::move(target); }

  QRect anchor() const { return findAnchor ? findAnchor() : QRect(); }
  const StatusImage& image() const { return image_; }

  void click();
  void dragEntered();
  void dragExited();
  bool dropped(std::optional<std::vector<FileURL>> urls);

  /// Paints the button, `size` in points, with tinted images in `tint`.
  void paint(QPainter& painter, QSizeF size, const QColor& tint) const;

 private:
  void changed() const;

  std::function<bool()> isSpent_;
  StatusImage image_;
  double alpha_ = 1;
  std::function<void()> action_;
  std::unique_ptr<DropTarget> target_;
};

}  // namespace kestrivane
