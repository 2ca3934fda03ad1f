// A Qt Quick item inside of a view of the system's.
//
// Thread-safety: for the main thread. Ownership: owns the item, its engine and its windows; the
// view that it lies in, and what the item refers to, outlive it.
#pragma once

#include <functional>
#include <memory>

class QQmlEngine;
class QQuickItem;
class QQuickWindow;
class QWindow;

namespace kestrivane {

class QuickContent {
 public:
  /// Makes the item; ends the program if it cannot.
  using ItemFactory = std::function<std::unique_ptr<QQuickItem>(QQmlEngine& engine)>;

  /// Makes the item and lays it, of this size in points, into the NSView `parent`.
  QuickContent(const ItemFactory& makeItem, void* parent, int width, int height);
  QuickContent(const QuickContent&) = delete;
  QuickContent& operator=(const QuickContent&) = delete;
  ~QuickContent();

  void show();
  /// What is hidden neither draws nor animates.
  void hide();

  /// The NSView that takes the keyboard.
  void* view() const;

 private:
  std::unique_ptr<QQmlEngine> engine_;
  std::unique_ptr<QQuickItem> item_;
  std::unique_ptr<QWindow> host_;         ///< the parent as Qt sees it
  std::unique_ptr<QQuickWindow> window_;  ///< lies in the host, shows the item, goes first
};

}  // namespace kestrivane
