#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/ModuleFunction.hpp"

#include <cerrno>
#include <optional>
#include <string>
#include <string_view>

#include <dlfcn.h>

#include "platform/PlatformError.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

[[noreturn]] void throwUnusable(const std::string& reason) {
  throw PlatformError(ELIBACC, L10n::choose("A part of Kestrivane cannot be loaded: ",
                                            "Не удалось загрузить часть Kestrivane: ") +
                                   reason);
}

/// The result of a call to the dynamic linker, which says in words why there is none.
void* found(void* result) {
  if (result == nullptr) throwUnusable(dlerror());
  return result;
}

/// A program that has been replaced while it runs must not load parts of the new one.
void checkVersion(void* module) {
  const auto* version = static_cast<const char*>(found(dlsym(module, "kestrivaneModuleVersion")));
  if (std::string_view(version) != KESTRIVANE_VERSION) {
    throwUnusable(L10n::choose("it is of another version. Start Kestrivane again.",
                               "она от другой версии. Запустите Kestrivane ещё раз."));
  }
}

}  // namespace

void* moduleFunction(const Bundle& bundle, const char* file, const char* name) {
  const std::optional<FileURL> url = bundle.auxiliaryExecutable(file);
  if (!url) throwUnusable(file);
  // A library that is missing is told now, not in the middle of the work.
  void* const module = found(dlopen(url->path().c_str(), RTLD_NOW | RTLD_LOCAL));
  checkVersion(module);
  return found(dlsym(module, name));
}

}  // namespace kestrivane
