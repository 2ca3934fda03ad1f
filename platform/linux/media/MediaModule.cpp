#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MediaModule.hpp"

#include <cerrno>
#include <optional>
#include <string>

#include <dlfcn.h>

#include "platform/PlatformError.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

[[noreturn]] void throwUnusable(const std::string& reason) {
  throw PlatformError(
      ELIBACC, L10n::choose("The part of Kestrivane that converts films cannot be loaded: ",
                            "Не удалось загрузить часть Kestrivane, которая преобразует видео: ") +
                   reason);
}

/// The result of a call to the dynamic linker, which says in words why there is none.
void* found(void* result) {
  if (result == nullptr) throwUnusable(dlerror());
  return result;
}

}  // namespace

std::unique_ptr<OpenedMedia> MediaModule::open(const FileURL& url) {
  return std::unique_ptr<OpenedMedia>(load()(url));
}

MediaModule::Entry& MediaModule::load() {
  const std::lock_guard lock(mutex_);
  if (entry_ == nullptr) {
    const std::optional<FileURL> file = bundle_.auxiliaryExecutable(fileName);
    if (!file) throwUnusable(fileName);
    // A library that is missing is told now, not in the middle of a film.
    void* const module = found(dlopen(file->path().c_str(), RTLD_NOW | RTLD_LOCAL));
    entry_ = reinterpret_cast<Entry*>(found(dlsym(module, entryName)));
  }
  return *entry_;
}

}  // namespace kestrivane
