#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/ModuleFunction.hpp"

#include <cerrno>
#include <optional>
#include <string>

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

}  // namespace

void* moduleFunction(const Bundle& bundle, const char* file, const char* name) {
  const std::optional<FileURL> url = bundle.auxiliaryExecutable(file);
  if (!url) throwUnusable(file);
  // A library that is missing is told now, not in the middle of the work.
  void* const module = found(dlopen(url->path().c_str(), RTLD_NOW | RTLD_LOCAL));
  return found(dlsym(module, name));
}

}  // namespace kestrivane
