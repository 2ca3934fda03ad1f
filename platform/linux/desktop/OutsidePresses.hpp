// Presses of pointer buttons anywhere on the X screen, whoever gets them (raw events of the X Input
// Extension 2.2). Scrolling does not count.
//
// Thread-safety: for the main thread. Ownership: the connection outlives it.
#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <cstdint>
#include <functional>

#include "platform/linux/desktop/XConnection.hpp"

namespace kestrivane {

class OutsidePresses final : public QObject, private QAbstractNativeEventFilter {
 public:
  /// `onPress` is called for each press while presses are listened to.
  OutsidePresses(XConnection& connection, std::function<void()> onPress);
  OutsidePresses(const OutsidePresses&) = delete;
  OutsidePresses& operator=(const OutsidePresses&) = delete;
  ~OutsidePresses() override;

  void listen();
  void ignore();

 private:
  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;
  void select(std::uint32_t events);

  XConnection& connection_;
  std::function<void()> onPress_;
  std::uint8_t extension_ = 0;
  bool isListening_ = false;
};

}  // namespace kestrivane
