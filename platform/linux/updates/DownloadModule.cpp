#ifndef __linux__
#error "This adapter is for Linux."
#endif
#include "platform/linux/updates/DownloadModule.hpp"

#include "platform/linux/system/ModuleFunction.hpp"

namespace kestrivane::downloadModule {

Downloader downloader(const Bundle& bundle) {
  return [&bundle](const std::string& address, DownloadLimits limits, const DownloadSink& sink,
                   const std::atomic<bool>& cancelled) {
    moduleFunction<Entry>(bundle, fileName, entryName)(address, limits, sink, cancelled);
  };
}

}  // namespace kestrivane::downloadModule
