// A web server on this machine that answers each path with bytes that a test wrote down.
//
// Thread-safety: for the test's thread, which may change answers between requests. Ownership: owns
// its thread and socket; destroying it ends both.
#pragma once

#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "platform/linux/FileDescriptor.hpp"

namespace kestrivane::test {

class LoopbackServer {
 public:
  LoopbackServer();
  ~LoopbackServer();

  /// "http://127.0.0.1:PORT" + `path`.
  std::string address(const std::string& path) const;

  /// Answers `path` with status 200 and `body`.
  void serve(const std::string& path, const std::string& body);
  void redirect(const std::string& path, const std::string& target);
  /// Answers `path` with these bytes and closes the connection.
  void serveRaw(const std::string& path, const std::string& answer);
  /// Answers `path` with a body that never ends.
  void serveEndless(const std::string& path);

  /// The paths that were asked for, in their order.
  std::vector<std::string> requests() const;

 private:
  struct Answer {
    std::string bytes;
    bool isEndless = false;
  };

  void run();
  void answer(int connection);
  /// Notes that `path` was asked for.
  Answer take(const std::string& path);

  FileDescriptor listener_;
  std::string origin_;
  mutable std::mutex mutex_;
  std::map<std::string, Answer> answers_;
  std::vector<std::string> requests_;
  std::thread thread_;
};

}  // namespace kestrivane::test
