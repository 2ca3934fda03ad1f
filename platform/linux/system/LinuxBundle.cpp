#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/LinuxBundle.hpp"

#include <filesystem>
#include <system_error>

namespace kestrivane {
namespace {

std::optional<FileURL> ifThere(const FileURL& url) {
  std::error_code ignored;
  if (!std::filesystem::exists(url.path(), ignored)) return std::nullopt;
  return url;
}

}  // namespace

LinuxBundle LinuxBundle::ofThisProgram() {
  const std::filesystem::path link = "/proc/self/exe";
  std::error_code error;
  const std::filesystem::path program = std::filesystem::read_symlink(link, error);
  // Without /proc nothing is found next to the link either.
  return LinuxBundle(FileURL(error ? link : program));
}

LinuxBundle::LinuxBundle(const FileURL& programURL)
    : prefix_(programURL.deletingLastPathComponent().deletingLastPathComponent()) {}

std::optional<FileURL> LinuxBundle::auxiliaryExecutable(std::string_view name) const {
  return ifThere(prefix_.appendingPathComponent("libexec/kestrivane").appendingPathComponent(name));
}

std::optional<FileURL> LinuxBundle::resource(std::string_view name) const {
  return ifThere(prefix_.appendingPathComponent("share/kestrivane").appendingPathComponent(name));
}

}  // namespace kestrivane
