#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/images/ImageOutput.hpp"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>

namespace kestrivane {

std::optional<ImageOutput> ImageOutput::create(const FileURL& url) {
  FileDescriptor file(
      ::open(url.path().c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file) return std::nullopt;
  return ImageOutput(std::move(file), url.path());
}

ImageOutput::ImageOutput(FileDescriptor file, std::string path)
    : file_(std::move(file)), path_(std::move(path)) {
  buffer_.reserve(bufferSize);
}

ImageOutput::~ImageOutput() {
  if (file_ && !finished_) ::unlink(path_.c_str());
}

bool ImageOutput::write(std::span<const std::uint8_t> bytes) noexcept {
  if (failed_) return false;
  if (buffer_.size() + bytes.size() > bufferSize) {
    if (!flush()) return false;
    if (bytes.size() >= bufferSize) return writeThrough(bytes);
  }
  buffer_.insert(buffer_.end(), bytes.begin(), bytes.end());  // never more than was reserved
  return true;
}

bool ImageOutput::seek(std::uint64_t position) noexcept {
  if (position == this->position()) return !failed_;
  if (!flush()) return false;
  flushed_ = position;
  return true;
}

bool ImageOutput::finish() noexcept {
  finished_ = flush();
  return finished_;
}

bool ImageOutput::flush() noexcept {
  if (failed_) return false;
  const bool written = writeThrough(buffer_);
  buffer_.clear();
  return written;
}

bool ImageOutput::writeThrough(std::span<const std::uint8_t> bytes) noexcept {
  while (!bytes.empty()) {
    const ssize_t count =
        ::pwrite(file_.get(), bytes.data(), bytes.size(), static_cast<off_t>(flushed_));
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) {
      failed_ = true;
      return false;
    }
    flushed_ += static_cast<std::uint64_t>(count);
    bytes = bytes.subspan(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace kestrivane
