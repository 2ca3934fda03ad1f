// The one function that the module offers to the program that loads it.
#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include <QQuickItem>
#include <QQuickView>
#include <cerrno>
#include <type_traits>

#include "platform/PlatformError.hpp"
#include "platform/linux/desktop/PopoverModule.hpp"
#include "views/Views.hpp"

using namespace kestrivane;

extern "C" [[gnu::visibility("default")]] QWindow* kestrivaneMakePopover(QObject& viewModel) {
  // The popover is small and mostly still: drawing it on the processor takes a third of the memory
  // and needs no driver.
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  auto view = std::make_unique<QQuickView>();
  addViews(*view->engine());
  view->setResizeMode(QQuickView::SizeRootObjectToView);
  view->setInitialProperties({{"viewModel", QVariant::fromValue(&viewModel)}});
  view->setSource(contentViewURL());
  if (view->status() != QQuickView::Ready) {
    std::string reason;
    for (const QQmlError& error : view->errors())
      reason += (reason.empty() ? "" : "\n") + error.toString().toStdString();
    throw PlatformError(ELIBBAD, reason);
  }
  view->rootObject()->forceActiveFocus();
  return view.release();
}

static_assert(std::is_same_v<decltype(kestrivaneMakePopover), popoverModule::Entry>);
