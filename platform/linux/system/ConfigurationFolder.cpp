#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/ConfigurationFolder.hpp"

#include <cerrno>
#include <cstdlib>
#include <string>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/system/SystemCall.hpp"

namespace kestrivane {
namespace {

/// The value of the variable if it is an absolute path; else empty.
std::string pathInEnvironment(const char* variable) {
  const char* const value = std::getenv(variable);
  return value != nullptr && *value == '/' ? value : "";
}

std::string homeFolder() {
  if (std::string home = pathInEnvironment("HOME"); !home.empty()) return home;
  const passwd* const user = getpwuid(geteuid());
  return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "/";
}

}  // namespace

FileURL configurationFolder() {
  const std::string configured = pathInEnvironment("XDG_CONFIG_HOME");
  const FileURL base = configured.empty() ? FileURL(homeFolder()).appendingPathComponent(".config")
                                          : FileURL(configured);
  return base.appendingPathComponent("kestrivane");
}

void makeFolder(const FileURL& folder) {
  if (mkdir(folder.path().c_str(), 0700) == 0 || errno == EEXIST) return;
  if (errno != ENOENT || folder.path() == "/") throwSystemError(errno);
  makeFolder(folder.deletingLastPathComponent());
  if (mkdir(folder.path().c_str(), 0700) != 0 && errno != EEXIST) throwSystemError(errno);
}

}  // namespace kestrivane
