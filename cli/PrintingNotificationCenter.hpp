// Prints each notification as one line "TITLE: BODY" and hands it on to the desktop.
//
// Thread-safety: as `NotificationCenter`. Ownership: refers to the writer and to the desktop's
// centre, which outlive it.
#pragma once

#include <utility>

#include "cli/LineWriter.hpp"
#include "platform/NotificationCenter.hpp"

namespace kestrivane {

class PrintingNotificationCenter final : public NotificationCenter {
 public:
  PrintingNotificationCenter(LineWriter& output, NotificationCenter& desktop)
      : output_(output), desktop_(desktop) {}

  void requestAuthorization(std::uint32_t options, AuthorizationHandler handler) override {
    desktop_.requestAuthorization(options, std::move(handler));
  }

  void add(NotificationRequest request, AddHandler handler) override {
    output_.writeLine(request.title + ": " + request.body);
    desktop_.add(std::move(request), std::move(handler));
  }

 private:
  LineWriter& output_;
  NotificationCenter& desktop_;
};

}  // namespace kestrivane
