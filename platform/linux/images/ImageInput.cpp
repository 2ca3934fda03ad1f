#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/ImageInput.hpp"

#include <algorithm>
#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

#include "platform/linux/images/ImageError.hpp"

namespace kestrivane {

std::optional<ImageInput> ImageInput::open(const FileURL& url) {
  // Without O_NONBLOCK, opening a pipe would wait for its writer.
  FileDescriptor file(::open(url.path().c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY));
  struct stat status {};
  if (!file || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return ImageInput(std::move(file), static_cast<std::uint64_t>(status.st_size));
}

std::size_t ImageInput::readUpTo(std::uint64_t offset,
                                 std::span<std::uint8_t> target) const noexcept {
  if (offset >= size_) return 0;
  const std::size_t wanted = std::min<std::uint64_t>(target.size(), size_ - offset);
  if (!file_) {
    std::copy_n(bytes_.begin() + static_cast<std::ptrdiff_t>(offset), wanted, target.begin());
    return wanted;
  }
  std::size_t done = 0;
  while (done < wanted) {
    const ssize_t count = ::pread(file_.get(), target.data() + done, wanted - done,
                                  static_cast<off_t>(offset + done));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    done += static_cast<std::size_t>(count);
  }
  return done;
}

void ImageInput::readAt(std::uint64_t offset, std::span<std::uint8_t> target) const {
  if (readUpTo(offset, target) != target.size()) throw ImageError("the file is cut short");
}

std::vector<std::uint8_t> ImageInput::readAll() const {
  constexpr std::uint64_t limit = std::uint64_t{1} << 30;
  if (size_ > limit) throw ImageError("the file is too large");
  std::vector<std::uint8_t> bytes(size_);
  readAt(0, bytes);
  return bytes;
}

}  // namespace kestrivane
