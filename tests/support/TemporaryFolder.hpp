// A folder of the test's own and the few things that tests do with files.
//
// Thread-safety: none. Ownership: removes the folder and all that is in it.
#pragma once

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>

#include "platform/FileURL.hpp"

namespace kestrivane::test {

class TemporaryFolder {
 public:
  explicit TemporaryFolder(const std::string& base = "/tmp") : path_(base + "/test-XXXXXX") {
    if (mkdtemp(path_.data()) == nullptr) throw std::runtime_error("no folder in " + base);
  }
  TemporaryFolder(const TemporaryFolder&) = delete;
  TemporaryFolder& operator=(const TemporaryFolder&) = delete;
  ~TemporaryFolder() {
    std::error_code ignored;
    std::filesystem::permissions(path_, std::filesystem::perms::owner_all, ignored);
    std::filesystem::remove_all(path_, ignored);
  }

  const std::string& path() const { return path_; }
  FileURL url(const std::string& name) const { return FileURL(path_ + "/" + name); }

  FileURL write(const std::string& name, const std::string& content) const {
    std::ofstream(path_ + "/" + name, std::ios::binary) << content;
    return url(name);
  }

  /// The names of all items in it, those of hidden ones too.
  std::set<std::string> names() const {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator(path_))
      names.insert(entry.path().filename().string());
    return names;
  }

 private:
  std::string path_;
};

/// The bytes of the file; "(none)" when it cannot be read.
inline std::string contentOf(const FileURL& url) {
  std::ifstream file(url.path(), std::ios::binary);
  if (!file) return "(none)";
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace kestrivane::test
