// The owner of a handle of libtiff, and what libtiff reports while it works on one file.
//
// Thread-safety: none. Ownership: the handle closes what it holds and is closed before the reports
// and the file behind it go.
#pragma once

#include <cstdarg>
#include <memory>
#include <string_view>

#include <tiffio.h>

namespace kestrivane::tiff {

struct Closer {
  void operator()(TIFF* file) const { TIFFClose(file); }
};
using Handle = std::unique_ptr<TIFF, Closer>;

struct Reports {
  bool error = false;
  bool warning = false;
};

/// What libtiff calls to reach the bytes of a file; `user` is handed to each of the calls.
struct Access {
  thandle_t user;
  TIFFReadWriteProc read;
  TIFFReadWriteProc write;
  TIFFSeekProc seek;
  TIFFSizeProc size;
};

/// Opens a file with `mode`; null when libtiff cannot make sense of it. Nothing is printed: errors
/// and warnings go to `reports`.
inline Handle open(const Access& access, const char* mode, Reports& reports) {
  const std::unique_ptr<TIFFOpenOptions, decltype(&TIFFOpenOptionsFree)> options(
      TIFFOpenOptionsAlloc(), &TIFFOpenOptionsFree);
  const auto onError = [](TIFF*, void* user, const char*, const char*, va_list) {
    static_cast<Reports*>(user)->error = true;
    return 1;
  };
  const auto onWarning = [](TIFF*, void* user, const char* module, const char*, va_list) {
    // An old way of writing LZW is worth a warning to libtiff, yet the data is sound.
    if (std::string_view(module) != "LZWPreDecode") static_cast<Reports*>(user)->warning = true;
    return 1;
  };
  TIFFOpenOptionsSetErrorHandlerExtR(options.get(), onError, &reports);
  TIFFOpenOptionsSetWarningHandlerExtR(options.get(), onWarning, &reports);
  const auto close = [](thandle_t) { return 0; };
  const auto map = [](thandle_t, void**, toff_t*) { return 0; };
  const auto unmap = [](thandle_t, void*, toff_t) {};
  return Handle(TIFFClientOpenExt("picture", mode, access.user, access.read, access.write,
                                  access.seek, close, access.size, map, unmap, options.get()));
}

}  // namespace kestrivane::tiff
