#include "platform/FileURL.hpp"

namespace kestrivane {
namespace {

std::string_view withoutTrailingSlashes(std::string_view path) {
  while (path.size() > 1 && path.back() == '/')
    path.remove_suffix(1);
  return path;
}

std::string_view lastComponent(std::string_view path) {
  path = withoutTrailingSlashes(path);
  if (path == "/") return path;
  const std::size_t slash = path.rfind('/');
  return slash == std::string_view::npos ? path : path.substr(slash + 1);
}

std::string_view extensionOf(std::string_view component) {
  const std::size_t dot = component.rfind('.');
  if (dot == std::string_view::npos || dot == 0) return {};
  const std::string_view extension = component.substr(dot + 1);
  return extension.find(' ') == std::string_view::npos ? extension : std::string_view{};
}

}  // namespace

std::string FileURL::lastPathComponent() const {
  return std::string(lastComponent(path_));
}

std::string FileURL::pathExtension() const {
  return std::string(extensionOf(lastComponent(path_)));
}

FileURL FileURL::deletingLastPathComponent() const {
  const std::string_view path = withoutTrailingSlashes(path_);
  const std::size_t slash = path.rfind('/');
  if (slash == std::string_view::npos || slash == 0) return FileURL("/");
  return FileURL(std::string(withoutTrailingSlashes(path.substr(0, slash))));
}

FileURL FileURL::deletingPathExtension() const {
  const std::string_view path = withoutTrailingSlashes(path_);
  const std::string_view extension = extensionOf(lastComponent(path));
  if (extension.empty()) return FileURL(std::string(path));
  return FileURL(std::string(path.substr(0, path.size() - extension.size() - 1)));
}

FileURL FileURL::appendingPathComponent(std::string_view component) const {
  std::string path(withoutTrailingSlashes(path_));
  if (path.back() != '/') path += '/';
  return FileURL(path.append(component));
}

}  // namespace kestrivane
