// A panel that hangs from a status item. Its adapter is made with what it shows.
//
// Thread-safety: for the main thread. Ownership: keeps no reference to the button.
#pragma once

#include "platform/StatusBar.hpp"

namespace kestrivane {

struct PopoverSize {
  double width;   ///< points
  double height;  ///< points

  friend bool operator==(const PopoverSize&, const PopoverSize&) = default;
};

enum class PopoverBehavior {
  applicationDefined,  ///< closes only when it is told to
  transient,           ///< closes when the user clicks outside of it
};

class Popover {
 public:
  Popover() = default;
  Popover(const Popover&) = delete;
  Popover& operator=(const Popover&) = delete;
  virtual ~Popover() = default;

  virtual void setContentSize(PopoverSize size) = 0;
  virtual void setBehavior(PopoverBehavior behavior) = 0;

  virtual bool isShown() const = 0;
  /// Shows it beside `button`, on the side of it that faces the middle of the screen.
  virtual void showRelativeTo(StatusBarButton& button) = 0;
  /// Gives the keyboard to it, once it is shown.
  virtual void makeKey() = 0;
  virtual void performClose() = 0;
};

}  // namespace kestrivane
