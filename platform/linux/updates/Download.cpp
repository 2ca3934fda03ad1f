#ifndef __linux__
#error "This adapter is for Linux."
#endif
#include "platform/linux/updates/Download.hpp"

#include <array>
#include <exception>
#include <memory>
#include <new>

#include <curl/curl.h>

#include "platform/PlatformError.hpp"

namespace kestrivane {
namespace {

constexpr int maximumRedirections = 5;
constexpr long connectSeconds = 20;

struct CleanUp {
  void operator()(CURL* transfer) const { ::curl_easy_cleanup(transfer); }
  void operator()(CURLU* address) const { ::curl_url_cleanup(address); }
  void operator()(char* text) const { ::curl_free(text); }
};
using Transfer = std::unique_ptr<CURL, CleanUp>;
using Address = std::unique_ptr<CURLU, CleanUp>;
using Text = std::unique_ptr<char, CleanUp>;

Text part(CURLU* address, CURLUPart which) {
  char* text = nullptr;
  ::curl_url_get(address, which, &text, 0);
  return Text(text);
}

/// What is fetched without encryption could be read and changed by whoever carries it.
bool isPermitted(const std::string& text) {
  const Address address(::curl_url());
  if (!address) throw std::bad_alloc();
  if (::curl_url_set(address.get(), CURLUPART_URL, text.c_str(), 0) != CURLUE_OK) return false;
  const Text scheme = part(address.get(), CURLUPART_SCHEME);
  const Text host = part(address.get(), CURLUPART_HOST);
  if (!scheme || !host) return false;
  const std::string_view name = host.get();
  const bool isThisMachine = name == "localhost" || name == "127.0.0.1" || name == "[::1]";
  return std::string_view(scheme.get()) == "https" ||
         (std::string_view(scheme.get()) == "http" && isThisMachine);
}

/// What the callbacks of one transfer share.
struct Progress {
  CURL* transfer;
  const DownloadSink& sink;
  const std::atomic<bool>& cancelled;
  std::uint64_t bytesLeft;
  std::exception_ptr exception = nullptr;
  bool tooLong = false;
};

std::size_t take(char* bytes, std::size_t, std::size_t count, void* data) {
  auto& progress = *static_cast<Progress*>(data);
  long status = 0;
  ::curl_easy_getinfo(progress.transfer, CURLINFO_RESPONSE_CODE, &status);
  if (count > progress.bytesLeft) {
    progress.tooLong = true;
    return CURL_WRITEFUNC_ERROR;
  }
  progress.bytesLeft -= count;
  try {
    // The body of a redirection is nobody's content.
    if (status == 200) progress.sink({bytes, count});
    return count;
  } catch (...) {
    progress.exception = std::current_exception();
    return CURL_WRITEFUNC_ERROR;
  }
}

int isCancelled(void* data, curl_off_t, curl_off_t, curl_off_t, curl_off_t) {
  return static_cast<Progress*>(data)->cancelled ? 1 : 0;
}

class Request {
 public:
  Request() : transfer_(::curl_easy_init()) {
    if (!transfer_) throw std::bad_alloc();
  }

  template <typename Value>
  void set(CURLoption option, Value value) {
    ::curl_easy_setopt(transfer_.get(), option, value);
  }
  template <typename Value>
  Value get(CURLINFO info) const {
    Value value{};
    ::curl_easy_getinfo(transfer_.get(), info, &value);
    return value;
  }
  CURL* handle() const { return transfer_.get(); }

 private:
  Transfer transfer_;
};

[[noreturn]] void fail(CURLcode code, const std::string& address, std::string_view reason) {
  throw PlatformError(code, address + ": " + std::string(reason));
}

/// Fetches from one address. Returns where it redirects to, or "" when the content was taken.
std::string fetch(const std::string& address, DownloadLimits limits, const DownloadSink& sink,
                  const std::atomic<bool>& cancelled) {
  Request request;
  Progress progress{request.handle(), sink, cancelled, limits.bytes};
  std::array<char, CURL_ERROR_SIZE> reason{};
  request.set(CURLOPT_URL, address.c_str());
  request.set(CURLOPT_PROTOCOLS_STR, "http,https");
  request.set(CURLOPT_NOSIGNAL, 1L);
  request.set(CURLOPT_CONNECTTIMEOUT, connectSeconds);
  request.set(CURLOPT_TIMEOUT, limits.seconds);
  request.set(CURLOPT_USERAGENT, "Kestrivane");
  request.set(CURLOPT_ERRORBUFFER, reason.data());
  request.set(CURLOPT_WRITEFUNCTION, &take);
  request.set(CURLOPT_WRITEDATA, &progress);
  request.set(CURLOPT_NOPROGRESS, 0L);
  request.set(CURLOPT_XFERINFOFUNCTION, &isCancelled);
  request.set(CURLOPT_XFERINFODATA, &progress);
  request.set(CURLOPT_NOPROXY, "localhost,127.0.0.1,::1");
  request.set(CURLOPT_FAILONERROR, 1L);

  const CURLcode code = ::curl_easy_perform(request.handle());
  if (progress.exception) std::rethrow_exception(progress.exception);
  if (progress.tooLong) fail(code, address, "The answer is too long.");
  if (code != CURLE_OK)
    fail(code, address, reason[0] != '\0' ? reason.data() : ::curl_easy_strerror(code));
  if (const char* next = request.get<char*>(CURLINFO_REDIRECT_URL)) return next;
  if (const long status = request.get<long>(CURLINFO_RESPONSE_CODE); status != 200)
    fail(CURLE_HTTP_RETURNED_ERROR, address,
         "The answer has status " + std::to_string(status) + ".");
  return {};
}

}  // namespace

void download(const std::string& address, DownloadLimits limits, const DownloadSink& sink,
              const std::atomic<bool>& cancelled) {
  std::string current = address;
  for (int redirections = 0; redirections <= maximumRedirections; ++redirections) {
    if (!isPermitted(current))
      fail(CURLE_UNSUPPORTED_PROTOCOL, current, "Only https addresses are fetched.");
    current = fetch(current, limits, sink, cancelled);
    if (current.empty()) return;
  }
  fail(CURLE_TOO_MANY_REDIRECTS, address, "There are too many redirections.");
}

}  // namespace kestrivane
