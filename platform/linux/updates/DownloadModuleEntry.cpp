// The one function that the module offers to the program that loads it.
#ifndef __linux__
#error "This adapter is for Linux."
#endif
#include <type_traits>

#include "platform/linux/updates/DownloadModule.hpp"

extern "C" [[gnu::visibility("default")]] void kestrivaneDownload(
    const std::string& address, kestrivane::DownloadLimits limits,
    const kestrivane::DownloadSink& sink, const std::atomic<bool>& cancelled) {
  kestrivane::download(address, limits, sink, cancelled);
}

static_assert(std::is_same_v<decltype(kestrivaneDownload), kestrivane::downloadModule::Entry>);
