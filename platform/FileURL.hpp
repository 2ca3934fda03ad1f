// An absolute file URL as a value. Its path is a string of bytes, as the file system has it: no
// encoding is assumed, nothing is resolved, and two URLs are equal when their strings are.
//
// Thread-safety: a value; distinct objects are independent. Ownership: owns its string.
#pragma once

#include <compare>
#include <functional>
#include <string>
#include <string_view>

namespace kestrivane {

class FileURL {
 public:
  /// `path` is absolute. It is kept as it stands.
  explicit FileURL(std::string path) : path_(std::move(path)) {}

  const std::string& path() const { return path_; }

  /// The text after the last "/" that is not at the end; "/" for the root.
  std::string lastPathComponent() const;

  /// The text after the last "." of the last component, without the dot. Empty when there is no
  /// dot, when the only dot is the first or the last character, or when the text after it has a
  /// blank.
  std::string pathExtension() const;

  /// The folder that holds the last component, without a "/" at the end unless it is the root.
  FileURL deletingLastPathComponent() const;

  /// The same URL without its path extension and the dot before it.
  FileURL deletingPathExtension() const;

  /// The URL of `component` inside this folder.
  FileURL appendingPathComponent(std::string_view component) const;

  friend bool operator==(const FileURL&, const FileURL&) = default;
  friend std::strong_ordering operator<=>(const FileURL&, const FileURL&) = default;

 private:
  std::string path_;
};

}  // namespace kestrivane

template <>
struct std::hash<kestrivane::FileURL> {
  std::size_t operator()(const kestrivane::FileURL& url) const noexcept {
    return std::hash<std::string>{}(url.path());
  }
};
