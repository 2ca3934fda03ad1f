#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/media/MediaFile.hpp"

#include <cerrno>
#include <cstdio>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/linux/media/LibavVersions.hpp"
#include "platform/linux/media/MediaError.hpp"

namespace kestrivane {
namespace {

/// Small enough that going to and fro between tracks that lie far apart does not read much in vain.
constexpr int readingBuffer = 128 * 1024;
constexpr int writingBuffer = 1024 * 1024;

FileDescriptor open(const FileURL& url, int flags) {
  FileDescriptor file(::open(url.path().c_str(), flags | O_CLOEXEC, S_IRUSR | S_IWUSR));
  if (!file) throw mediaError(AVERROR(errno));
  return file;
}

}  // namespace

// Without blocking, as the item may be a pipe; that one cannot be read at a place then.
std::unique_ptr<MediaFile> MediaFile::openForReading(const FileURL& url) {
  std::unique_ptr<MediaFile> file(new MediaFile(open(url, O_RDONLY | O_NONBLOCK), {}));
  posix_fadvise(file->file_.get(), 0, 0, POSIX_FADV_SEQUENTIAL);
  auto* const buffer = static_cast<std::uint8_t*>(allocated(av_malloc(readingBuffer)));
  file->context_ =
      allocated(avio_alloc_context(buffer, readingBuffer, 0, file.get(), &read, nullptr, &seek));
  return file;
}

std::unique_ptr<MediaFile> MediaFile::create(const FileURL& url) {
  std::unique_ptr<MediaFile> file(new MediaFile(open(url, O_RDWR | O_CREAT | O_EXCL), url.path()));
  auto* const buffer = static_cast<std::uint8_t*>(allocated(av_malloc(writingBuffer)));
  const auto writer = [](void* self, WrittenBytes* bytes, int length) {
    return write(self, bytes, length);
  };
  file->context_ =
      allocated(avio_alloc_context(buffer, writingBuffer, 1, file.get(), nullptr, writer, &seek));
  return file;
}

MediaFile::MediaFile(FileDescriptor file, std::string pathToRemove)
    : file_(std::move(file)), path_(std::move(pathToRemove)) {}

MediaFile::~MediaFile() {
  if (context_ != nullptr) av_freep(&context_->buffer);
  avio_context_free(&context_);
  if (!path_.empty()) ::unlink(path_.c_str());
}

std::int64_t MediaFile::size() const {
  struct stat status {};
  if (::fstat(file_.get(), &status) != 0) throw mediaError(AVERROR(errno));
  return status.st_size;
}

std::size_t MediaFile::readBeginning(std::span<std::uint8_t> bytes) const {
  const ssize_t count = ::pread(file_.get(), bytes.data(), bytes.size(), 0);
  if (count < 0) throw mediaError(AVERROR(errno));
  return static_cast<std::size_t>(count);
}

int MediaFile::read(void* self, std::uint8_t* buffer, int length) {
  auto& file = *static_cast<MediaFile*>(self);
  ssize_t count = 0;
  do {
    count = ::pread(file.file_.get(), buffer, static_cast<std::size_t>(length), file.position_);
  } while (count < 0 && errno == EINTR);
  if (count < 0) return AVERROR(errno);
  if (count == 0) return AVERROR_EOF;
  file.position_ += count;
  return static_cast<int>(count);
}

int MediaFile::write(void* self, const std::uint8_t* buffer, int length) {
  auto& file = *static_cast<MediaFile*>(self);
  int written = 0;
  while (written < length) {
    const ssize_t count = ::pwrite(file.file_.get(), buffer + written,
                                   static_cast<std::size_t>(length - written), file.position_);
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) return count < 0 ? AVERROR(errno) : AVERROR(EIO);
    file.position_ += count;
    written += static_cast<int>(count);
  }
  return written;
}

std::int64_t MediaFile::seek(void* self, std::int64_t offset, int whence) {
  auto& file = *static_cast<MediaFile*>(self);
  struct stat status {};
  if (::fstat(file.file_.get(), &status) != 0) return AVERROR(errno);
  switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE:
      return status.st_size;
    case SEEK_SET:
      break;
    case SEEK_CUR:
      offset += file.position_;
      break;
    case SEEK_END:
      offset += status.st_size;
      break;
    default:
      return AVERROR(EINVAL);
  }
  if (offset < 0) return AVERROR(EINVAL);
  return file.position_ = offset;
}

}  // namespace kestrivane
