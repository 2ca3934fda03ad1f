// A notification centre in memory. Thread-safety: none; used on the test's thread.
// Ownership: owns what it was handed.
#pragma once

#include <cstdint>
#include <exception>
#include <string>
#include <utility>
#include <vector>

#include "platform/NotificationCenter.hpp"

namespace kestrivane::test {

class FakeNotificationCenter final : public NotificationCenter {
 public:
  std::vector<std::uint32_t> authorizationRequests;
  std::vector<NotificationRequest> requests;
  bool grants = true;
  std::exception_ptr failure;  ///< handed to every completion handler

  void requestAuthorization(std::uint32_t options, AuthorizationHandler handler) override {
    authorizationRequests.push_back(options);
    handler(grants, failure);
  }

  void add(NotificationRequest request, AddHandler handler) override {
    requests.push_back(std::move(request));
    handler(failure);
  }

  /// The notifications so far, each as "TITLE: BODY".
  std::vector<std::string> lines() const {
    std::vector<std::string> lines;
    for (const NotificationRequest& request : requests) {
      lines.push_back(request.title + ": " + request.body);
    }
    return lines;
  }
};

}  // namespace kestrivane::test
