#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/desktop/PopoverModule.hpp"

#include "platform/linux/system/ModuleFunction.hpp"

namespace kestrivane::popoverModule {

std::unique_ptr<QWindow> makeWindow(const Bundle& bundle, QObject& viewModel) {
  return std::unique_ptr<QWindow>(moduleFunction<Entry>(bundle, fileName, entryName)(viewModel));
}

}  // namespace kestrivane::popoverModule
