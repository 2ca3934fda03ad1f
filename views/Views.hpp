// What a program does to show the views: it calls addViews() and loads contentViewURL.
//
// Thread-safety: main thread only.
#pragma once

#include <QQmlEngine>
#include <QUrl>

namespace kestrivane {

/// Makes the module "Kestrivane" known to `engine`. Its pictures are in the artwork of resources/,
/// which the program links.
void addViews(QQmlEngine& engine);

/// The popover's content, an Item of 360 x 540 points. Its required property `viewModel` is a
/// ViewModelObject.
QUrl contentViewURL();

}  // namespace kestrivane
