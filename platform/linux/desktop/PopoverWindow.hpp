// The window of the popover: closes on Escape, and tells when it can take the keyboard and when it
// has lost it.
//
// Thread-safety: for the main thread.
#pragma once

#include <QQuickWindow>
#include <functional>

namespace kestrivane {

class PopoverWindow final : public QQuickWindow {
 public:
  std::function<void()> onEscape;
  std::function<void()> onExposed;
  std::function<void()> onKeyboardLost;

 private:
  void exposeEvent(QExposeEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;
};

}  // namespace kestrivane
