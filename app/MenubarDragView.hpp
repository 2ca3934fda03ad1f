// The drop target that lies over the status item's button: takes every drag of files, shows it, and
// hands on what is dropped. It does not tell folders from files; its receiver does.
//
// Thread-safety: for the main thread. Ownership: owned by the button; what the two callbacks
// capture is the owner's business.
#pragma once

#include <functional>
#include <optional>
#include <vector>

#include "platform/StatusBar.hpp"

namespace kestrivane {

class MenubarDragView final : public DropTarget {
 public:
  /// Called once for each drop of at least one file, with all of them in their order.
  std::function<void(std::vector<FileURL>)> onFoldersDropped;
  /// Called with true when a drag enters, with false when it leaves or is dropped.
  std::function<void(bool isDragging)> onDragStateChanged;

  void draggingEntered() override;
  void draggingExited() override;
  /// The highlight ends first, whatever comes of reading. True for every drop of at least one file,
  /// whether or not anybody is told of it.
  bool performDragOperation(const ReadFiles& read) override;
  std::optional<DropHighlight> highlight() const override;

 private:
  void setHighlighting(bool isHighlighting);

  bool isHighlighting_ = false;
};

}  // namespace kestrivane
