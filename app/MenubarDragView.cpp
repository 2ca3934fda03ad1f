#include "app/MenubarDragView.hpp"

#include <utility>

namespace kestrivane {

void MenubarDragView::draggingEntered() {
  setHighlighting(true);
}

void MenubarDragView::draggingExited() {
  setHighlighting(false);
}

bool MenubarDragView::performDragOperation(const ReadFiles& read) {
  setHighlighting(false);
  std::optional<std::vector<FileURL>> urls = read();
  if (!urls || urls->empty()) return false;
  if (onFoldersDropped) onFoldersDropped(*std::move(urls));
  return true;
}

std::optional<DropHighlight> MenubarDragView::highlight() const {
  if (!isHighlighting_) return std::nullopt;
  return DropHighlight{.opacity = 0.3, .inset = 2, .cornerRadius = 4};
}

void MenubarDragView::setHighlighting(bool isHighlighting) {
  isHighlighting_ = isHighlighting;
  if (onDragStateChanged) onDragStateChanged(isHighlighting);
}

}  // namespace kestrivane
