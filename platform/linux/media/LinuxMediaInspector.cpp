#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/LinuxMediaInspector.hpp"

#include "platform/linux/media/MediaModule.hpp"

namespace kestrivane {

bool LinuxMediaInspector::isCutShort(const FileURL& result, const FileURL& source) const {
  return mediaModule::isCutShort(bundle_, result, source);
}

}  // namespace kestrivane
