// The module with the views and Qt Quick, which take 6 MB of memory unused; the popover is opened
// once in a while, the icon is there all day.
//
// Thread-safety: for the main thread. Ownership: none kept.
#pragma once

#include <QObject>
#include <QWindow>
#include <memory>

#include "platform/Bundle.hpp"

namespace kestrivane::popoverModule {

inline constexpr auto fileName = "kestrivane-popover.so";
inline constexpr auto entryName = "kestrivaneMakePopover";
/// The caller owns the result.
using Entry = QWindow*(QObject& viewModel);

/// A window that is filled with the views of `viewModel`, a ViewModelObject that outlives it. By
/// way of the module of `bundle`. Throws `PlatformError` when that, or the QML modules that it
/// needs, cannot be loaded.
std::unique_ptr<QWindow> makeWindow(const Bundle& bundle, QObject& viewModel);

}  // namespace kestrivane::popoverModule
