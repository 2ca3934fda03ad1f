#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MediaModule.hpp"

#include "platform/linux/system/ModuleFunction.hpp"

namespace kestrivane::mediaModule {

std::unique_ptr<OpenedMedia> open(const Bundle& bundle, const FileURL& url) {
  return std::unique_ptr<OpenedMedia>(moduleFunction<Open>(bundle, fileName, openName)(url));
}

bool isCutShort(const Bundle& bundle, const FileURL& result, const FileURL& source) {
  return moduleFunction<IsCutShort>(bundle, fileName, isCutShortName)(result, source);
}

}  // namespace kestrivane::mediaModule
