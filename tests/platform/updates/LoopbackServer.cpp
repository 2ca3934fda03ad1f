#include "tests/platform/updates/LoopbackServer.hpp"

#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

namespace kestrivane::test {
namespace {

bool sendAll(int connection, std::string_view bytes) {
  while (!bytes.empty()) {
    const ssize_t sent = ::send(connection, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    if (sent <= 0) return false;
    bytes.remove_prefix(static_cast<std::size_t>(sent));
  }
  return true;
}

}  // namespace

LoopbackServer::LoopbackServer() : listener_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t length = sizeof address;
  const auto generic = reinterpret_cast<sockaddr*>(&address);
  if (::bind(listener_.get(), generic, length) != 0 || ::listen(listener_.get(), 16) != 0 ||
      ::getsockname(listener_.get(), generic, &length) != 0)
    throw std::runtime_error("no server");
  origin_ = "http://127.0.0.1:" + std::to_string(ntohs(address.sin_port));
  thread_ = std::thread([this] { run(); });
}

LoopbackServer::~LoopbackServer() {
  ::shutdown(listener_.get(), SHUT_RDWR);
  thread_.join();
}

std::string LoopbackServer::address(const std::string& path) const {
  return origin_ + path;
}

void LoopbackServer::serve(const std::string& path, const std::string& body) {
  serveRaw(path, "HTTP/1.1 200 OK\r\nConnection: close\r\nContent-Length: " +
                     std::to_string(body.size()) + "\r\n\r\n" + body);
}

void LoopbackServer::redirect(const std::string& path, const std::string& target) {
  serveRaw(path, "HTTP/1.1 302 Found\r\nConnection: close\r\nContent-Length: 5\r\nLocation: " +
                     target + "\r\n\r\nmoved");
}

void LoopbackServer::serveRaw(const std::string& path, const std::string& answer) {
  const std::lock_guard lock(mutex_);
  answers_[path] = {answer};
}

void LoopbackServer::serveEndless(const std::string& path) {
  const std::lock_guard lock(mutex_);
  answers_[path] = {"HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n", true};
}

std::vector<std::string> LoopbackServer::requests() const {
  const std::lock_guard lock(mutex_);
  return requests_;
}

void LoopbackServer::run() {
  while (true) {
    const FileDescriptor connection(::accept4(listener_.get(), nullptr, nullptr, SOCK_CLOEXEC));
    if (!connection) return;
    answer(connection.get());
  }
}

void LoopbackServer::answer(int connection) {
  std::string request;
  char piece[4096];
  while (request.find("\r\n\r\n") == std::string::npos) {
    const ssize_t count = ::recv(connection, piece, sizeof piece, 0);
    if (count <= 0) return;
    request.append(piece, static_cast<std::size_t>(count));
  }
  const Answer known = take(request.substr(4, request.find(' ', 4) - 4));
  bool more = sendAll(connection, known.bytes) && known.isEndless;
  while (more)
    more = sendAll(connection, std::string(65536, 'x'));
}

LoopbackServer::Answer LoopbackServer::take(const std::string& path) {
  const std::lock_guard lock(mutex_);
  requests_.push_back(path);
  const auto known = answers_.find(path);
  if (known != answers_.end()) return known->second;
  return {"HTTP/1.1 404 Not Found\r\nConnection: close\r\nContent-Length: 0\r\n\r\n"};
}

}  // namespace kestrivane::test
