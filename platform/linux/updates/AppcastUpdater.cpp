#ifndef __linux__
#error "This adapter is for Linux."
#endif
#include "platform/linux/updates/AppcastUpdater.hpp"

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <system_error>
#include <utility>

#include "async/RunOn.hpp"
#include "platform/PlatformError.hpp"
#include "platform/linux/updates/UpdateArchive.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

using namespace std::chrono_literals;

constexpr std::chrono::nanoseconds interval = 24h;
/// The start of a session is busy enough.
constexpr std::chrono::nanoseconds shortestDelay = 1min;
constexpr DownloadLimits feedLimits{.bytes = 1 << 20, .seconds = 60};

std::optional<AppcastItem> findUpdate(const Downloader& download, const UpdateSource& source,
                                      const std::atomic<bool>& cancelled) {
  std::string feed;
  const DownloadSink sink = [&feed](std::string_view piece) { feed += piece; };
  download(source.feedAddress, feedLimits, sink, cancelled);
  return newestUpdate(parseAppcast(feed), source.currentVersion);
}

void noteCheck(const FileURL& file) {
  std::error_code ignored;
  std::filesystem::create_directories(file.deletingLastPathComponent().path(), ignored);
  std::ofstream(file.path()).close();
  std::filesystem::last_write_time(file.path(), std::filesystem::file_time_type::clock::now(),
                                   ignored);
}

}  // namespace

AppcastUpdater::AppcastUpdater(UpdateSource source, EventLoop& loop, Executor& longWorkQueue,
                               UnifiedLog& log, UpdatePrompt& prompt, Downloader download)
    : source_(std::move(source)),
      key_(EdPublicKey::create(source_.publicKey)),
      loop_(loop),
      longWorkQueue_(longWorkQueue),
      prompt_(prompt),
      download_(std::move(download)),
      logger_(log.makeLogger(logSubsystem, "Updater")),
      tasks_(loop) {}

AppcastUpdater::~AppcastUpdater() {
  *cancelled_ = true;
  if (timer_ != 0) loop_.cancelTimer(timer_);
}

void AppcastUpdater::start() {
  if (!source_.feedAddress.empty() && key_) checkAfter(untilFirstCheck());
}

void AppcastUpdater::checkAfter(std::chrono::nanoseconds delay) {
  timer_ = loop_.postAfter(delay, [this] {
    beginCheck(Reason::schedule);
    checkAfter(interval);
  });
}

void AppcastUpdater::beginCheck(Reason reason) {
  if (std::exchange(isBusy_, true)) return;
  noteCheck(source_.lastCheckFile);
  tasks_.spawn(check(reason));
}

std::chrono::nanoseconds AppcastUpdater::untilFirstCheck() const {
  std::error_code error;
  const auto last = std::filesystem::last_write_time(source_.lastCheckFile.path(), error);
  if (error) return shortestDelay;
  const auto passed = std::filesystem::file_time_type::clock::now() - last;
  // A clock that was set back must not put checks off for longer than usual.
  return std::clamp<std::chrono::nanoseconds>(interval - passed, shortestDelay, interval);
}

void AppcastUpdater::checkForUpdates() {
  if (source_.feedAddress.empty())
    return prompt_.tell(L10n::choose("Updates come from your system's package manager.",
                                     "Обновления приходят через менеджер пакетов системы."));
  if (!key_)
    return prompt_.tell(
        L10n::choose("This build of Kestrivane cannot check updates: its key is damaged.",
                     "Эта сборка Kestrivane не может проверять обновления: её ключ повреждён."));
  beginCheck(Reason::user);
}

Task<void> AppcastUpdater::check(Reason reason) {
  const auto work = [download = download_, source = source_, cancelled = cancelled_] {
    return findUpdate(download, source, *cancelled);
  };
  std::optional<AppcastItem> update;
  std::exception_ptr failure;
  try {
    update = co_await runOn(longWorkQueue_, work);
  } catch (...) {
    failure = std::current_exception();
  }
  isBusy_ = false;

  if (failure) {
    const std::string why = localizedDescription(failure);
    logger_->log(LogLevel::error, "Не удалось проверить обновления: " + why);
    if (reason == Reason::user)
      prompt_.tell(
          L10n::choose("Could not check for updates: ", "Не удалось проверить обновления: ") + why);
  } else if (update) {
    prompt_.offer(L10n::choose("Kestrivane ", "Доступна версия Kestrivane ") +
                      update->displayVersion + L10n::choose(" is available.", "."),
                  L10n::choose("Download", "Загрузить"),
                  [this, item = *update] { tasks_.spawn(fetch(item)); });
  } else if (reason == Reason::user) {
    prompt_.tell(
        L10n::choose("Kestrivane is up to date.", "Установлена последняя версия Kestrivane."));
  }
}

Task<void> AppcastUpdater::fetch(AppcastItem item) {
  const auto work = [download = download_, item, key = *key_, folder = source_.downloadFolder,
                     cancelled = cancelled_] {
    return fetchArchive(download, item, key, folder, *cancelled);
  };
  std::exception_ptr failure;
  try {
    const FileURL archive = co_await runOn(longWorkQueue_, work);
    prompt_.offer(archive.lastPathComponent() + L10n::choose(" has been downloaded.", " загружен."),
                  L10n::choose("Open", "Открыть"), [this, archive] { prompt_.open(archive); });
    co_return;
  } catch (...) {
    failure = std::current_exception();
  }
  const std::string why = localizedDescription(failure);
  logger_->log(LogLevel::error, "Не удалось загрузить обновление: " + why);
  prompt_.tell(
      L10n::choose("Could not download the update: ", "Не удалось загрузить обновление: ") + why);
}

}  // namespace kestrivane
