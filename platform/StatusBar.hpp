// The icon of the program in the system's status bar (menu bar, panel or tray).
//
// Thread-safety: for the main thread. Ownership: whoever makes an item owns it, an item owns its
// button, a button owns its drop target. Lengths are in points.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/FileURL.hpp"

namespace kestrivane {

/// A picture for a button, named and not loaded: the adapter draws it as its system wants it.
struct StatusImage {
  enum class Source {
    symbol,  ///< of the symbol set
    asset,   ///< a file of the program's own artwork
  };
  enum class Rendering {
    original,
    tinted,  ///< only the shape counts; the bar's own colour fills it (a template image)
  };

  Source source = Source::symbol;
  std::string name;
  std::string accessibilityDescription;
  Rendering rendering = Rendering::original;
  std::optional<double> side;  ///< of the square that it is drawn into; the symbol's own if absent

  friend bool operator==(const StatusImage&, const StatusImage&) = default;
};

/// How a drop target shows that a drag is over it: a rounded rectangle of the accent colour.
struct DropHighlight {
  double opacity;
  double inset;  ///< from each edge of the button
  double cornerRadius;

  friend bool operator==(const DropHighlight&, const DropHighlight&) = default;
};

/// Lies over a whole button and takes drags of files. Clicks go to the button.
class DropTarget {
 public:
  DropTarget() = default;
  DropTarget(const DropTarget&) = delete;
  DropTarget& operator=(const DropTarget&) = delete;
  virtual ~DropTarget() = default;

  /// A drag of files is over the button; they are offered to be copied.
  virtual void draggingEntered() = 0;
  /// The drag has left, or was given up.
  virtual void draggingExited() = 0;
  /// Reads what was dropped; nothing when that cannot be read as files.
  using ReadFiles = std::function<std::optional<std::vector<FileURL>>()>;

  /// The drag was dropped. Returns whether the drop was accepted.
  virtual bool performDragOperation(const ReadFiles& read) = 0;

  /// What to draw over the button now; nothing when no drag is over it.
  virtual std::optional<DropHighlight> highlight() const = 0;
};

class StatusBarButton {
 public:
  StatusBarButton() = default;
  StatusBarButton(const StatusBarButton&) = delete;
  StatusBarButton& operator=(const StatusBarButton&) = delete;
  virtual ~StatusBarButton() = default;

  /// Shows `image`. When there is no such asset, the image stays as it was.
  virtual void setImage(const StatusImage& image) = 0;
  /// How opaque the image is, from 0 to 1.
  virtual void setAlphaValue(double alpha) = 0;
  /// What a click does, with whichever button.
  virtual void setAction(std::function<void()> action) = 0;
  /// Lays `target` over the button, which asks it for its highlight after each of its calls.
  virtual void setDropTarget(std::unique_ptr<DropTarget> target) = 0;
};

class StatusItem {
 public:
  StatusItem() = default;
  StatusItem(const StatusItem&) = delete;
  StatusItem& operator=(const StatusItem&) = delete;
  virtual ~StatusItem() = default;

  /// Null where the system shows items without buttons.
  virtual StatusBarButton* button() = 0;
};

class StatusBar {
 public:
  StatusBar() = default;
  StatusBar(const StatusBar&) = delete;
  StatusBar& operator=(const StatusBar&) = delete;
  virtual ~StatusBar() = default;

  /// An item as wide as its image. It stays in the bar until it is destroyed.
  virtual std::unique_ptr<StatusItem> makeStatusItem() = 0;
};

}  // namespace kestrivane
