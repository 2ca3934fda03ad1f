// Looks for newer versions in the feed that this build names, once a day and on demand.
//
// Nothing is fetched but the feed until the user has agreed to a download, and nothing is run: the
// user is offered to open what was fetched, if it is signed. Thread-safety: for the main thread,
// which it never blocks. Ownership: the loop, the queue and the prompt outlive it; destroying it
// gives up what is under way.
#pragma once

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "async/TaskScope.hpp"
#include "platform/FileURL.hpp"
#include "platform/Logger.hpp"
#include "platform/Updater.hpp"
#include "platform/linux/updates/Appcast.hpp"
#include "platform/linux/updates/Download.hpp"
#include "platform/linux/updates/EdSignature.hpp"

namespace kestrivane {

/// How the updater talks to the user; on the main thread.
class UpdatePrompt {
 public:
  UpdatePrompt() = default;
  UpdatePrompt(const UpdatePrompt&) = delete;
  UpdatePrompt& operator=(const UpdatePrompt&) = delete;
  virtual ~UpdatePrompt() = default;

  /// Shows one sentence or two.
  virtual void tell(std::string text) = 0;
  /// Asks whether `accept` shall be called; it may be called later, once, or never.
  virtual void offer(std::string text, std::string button, std::function<void()> accept) = 0;
  /// Opens the archive in the program that the desktop has for it.
  virtual void open(const FileURL& archive) = 0;
};

struct UpdateSource {
  std::string feedAddress;  ///< empty if the package manager brings updates
  std::string publicKey;    ///< Ed25519, in Base64
  std::string currentVersion;
  FileURL downloadFolder;
  FileURL lastCheckFile;  ///< its modification time is the time of the last check
};

class AppcastUpdater final : public Updater {
 public:
  AppcastUpdater(UpdateSource source, EventLoop& loop, Executor& longWorkQueue, UnifiedLog& log,
                 UpdatePrompt& prompt, Downloader download);
  ~AppcastUpdater() override;

  void start() override;
  void checkForUpdates() override;

 private:
  enum class Reason { schedule, user };

  void checkAfter(std::chrono::nanoseconds delay);
  void beginCheck(Reason reason);
  Task<void> check(Reason reason);
  Task<void> fetch(AppcastItem item);
  std::chrono::nanoseconds untilFirstCheck() const;

  const UpdateSource source_;
  const std::optional<EdPublicKey> key_;
  EventLoop& loop_;
  Executor& longWorkQueue_;
  UpdatePrompt& prompt_;
  const Downloader download_;  ///< called on the queue
  const std::unique_ptr<Logger> logger_;
  /// Read by the transfers, which may outlive this object.
  const std::shared_ptr<std::atomic<bool>> cancelled_ = std::make_shared<std::atomic<bool>>(false);
  EventLoop::TimerId timer_ = 0;
  bool isBusy_ = false;
  TaskScope tasks_;
};

}  // namespace kestrivane
