// Makes the application light or dark: its palette is what views and icons go by.
//
// Thread-safety: for the main thread.
#pragma once

#include <optional>

#include "platform/linux/desktop/PreferredAppearance.hpp"

namespace kestrivane {

/// Gives the application a palette of that appearance: the one that Qt has found for the desktop,
/// unless that is of the other one.
void showAppearance(std::optional<Appearance> appearance);

}  // namespace kestrivane
