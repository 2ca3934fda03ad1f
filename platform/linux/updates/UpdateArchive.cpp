#ifndef __linux__
#error "This adapter is for Linux."
#endif
#include "platform/linux/updates/UpdateArchive.hpp"

#include <algorithm>
#include <cerrno>
#include <span>
#include <string>
#include <system_error>

#include <fcntl.h>
#include <sys/mman.h>
#include <unistd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/FileDescriptor.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

constexpr DownloadLimits limits{.bytes = std::uint64_t{1} << 30, .seconds = 3600};
constexpr int maximumNumber = 1000;

[[noreturn]] void fail(int error, const FileURL& folder) {
  throw PlatformError(error, folder.path() + ": " + std::generic_category().message(error));
}

FileDescriptor makeUnnamedFile(const FileURL& folder) {
  FileDescriptor file(::open(folder.path().c_str(), O_TMPFILE | O_RDWR | O_CLOEXEC, 0600));
  if (!file) fail(errno, folder);
  return file;
}

void writeAll(int file, std::string_view bytes, const FileURL& folder) {
  while (!bytes.empty()) {
    const ssize_t written = ::write(file, bytes.data(), bytes.size());
    if (written < 0 && errno != EINTR) fail(errno, folder);
    if (written > 0) bytes.remove_prefix(static_cast<std::size_t>(written));
  }
}

/// The content of a file, mapped into memory.
class Mapping {
 public:
  Mapping(int file, std::size_t count, const FileURL& folder) : count_(count) {
    if (count == 0) return;
    address_ = ::mmap(nullptr, count, PROT_READ, MAP_PRIVATE, file, 0);
    if (address_ == MAP_FAILED) fail(errno, folder);
  }
  Mapping(const Mapping&) = delete;
  Mapping& operator=(const Mapping&) = delete;
  ~Mapping() {
    if (count_ > 0) ::munmap(address_, count_);
  }

  std::span<const unsigned char> bytes() const {
    return {static_cast<const unsigned char*>(address_), count_};
  }

 private:
  void* address_ = nullptr;
  std::size_t count_;
};

/// The last component of the address's path, without what has a meaning to shells and desktops.
std::string fileName(const AppcastItem& item) {
  std::string name = item.address.substr(0, item.address.find_first_of("?#"));
  name.erase(0, name.find_last_of('/') + 1);
  std::erase_if(name, [](unsigned char c) {
    return !((c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
             c == '.' || c == '-' || c == '_' || c == '+');
  });
  name.erase(0, name.find_first_not_of(".-"));
  return name.empty() ? "kestrivane-update" : name.substr(0, 200);
}

FileURL giveName(int file, const FileURL& folder, const std::string& name) {
  const std::string source = "/proc/self/fd/" + std::to_string(file);
  for (int number = 1; number <= maximumNumber; ++number) {
    const std::string prefix = number == 1 ? "" : std::to_string(number) + "-";
    const FileURL url(folder.path() + "/" + prefix + name);
    if (::linkat(AT_FDCWD, source.c_str(), AT_FDCWD, url.path().c_str(), AT_SYMLINK_FOLLOW) == 0)
      return url;
    if (errno != EEXIST) fail(errno, folder);
  }
  fail(EEXIST, folder);
}

}  // namespace

FileURL fetchArchive(const Downloader& download, const AppcastItem& item, const EdPublicKey& key,
                     const FileURL& folder, const std::atomic<bool>& cancelled) {
  const FileDescriptor file = makeUnnamedFile(folder);
  std::size_t count = 0;
  const DownloadSink sink = [&](std::string_view piece) {
    writeAll(file.get(), piece, folder);
    count += piece.size();
  };
  download(item.address, limits, sink, cancelled);

  const Mapping content(file.get(), count, folder);
  if ((item.length != 0 && item.length != count) || !key.verifies(item.signature, content.bytes()))
    throw PlatformError(
        EBADMSG, L10n::choose("The download is not what the makers of Kestrivane signed. It was "
                              "thrown away.",
                              "Загруженный файл не подписан разработчиками Kestrivane и удалён."));
  if (::fsync(file.get()) != 0) fail(errno, folder);
  return giveName(file.get(), folder, fileName(item));
}

}  // namespace kestrivane
