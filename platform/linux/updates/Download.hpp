// Fetches what stands at an address of the web.
//
// Thread-safety: may be called from any thread; blocks until the transfer has ended.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <string_view>

namespace kestrivane {

struct DownloadLimits {
  std::uint64_t bytes;  ///< more is a failure, noticed as it comes in
  long seconds;         ///< for the whole transfer
};

/// Takes each piece of the content in its order.
using DownloadSink = std::function<void(std::string_view piece)>;

/// Hands the content at `address` to `sink`. Only https is spoken, and http with this machine
/// itself; at most five redirections are followed, by the same rule. Throws `PlatformError` with a
/// curl code for everything that is not a complete answer of status 200, and when `cancelled`
/// becomes true; what `sink` throws passes through.
void download(const std::string& address, DownloadLimits limits, const DownloadSink& sink,
              const std::atomic<bool>& cancelled);

/// `download`, or what does the same.
using Downloader = std::function<decltype(download)>;

}  // namespace kestrivane
