#include "app/KestrivaneApp.hpp"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QFile>
#include <QStandardPaths>
#include <cstdlib>
#include <iostream>
#include <optional>
#include <string>
#include <utility>

#include "app/AppDelegate.hpp"
#include "app/Quitting.hpp"
#include "async/TaskScope.hpp"
#include "cli/Converters.hpp"
#include "cli/StopSignals.hpp"
#include "monitor/FileObserver.hpp"
#include "platform/PlatformError.hpp"
#include "platform/UUID.hpp"
#include "platform/Unicode.hpp"
#include "platform/linux/desktop/ApplicationPalette.hpp"
#include "platform/linux/desktop/DesktopOpenPanel.hpp"
#include "platform/linux/desktop/DesktopUpdatePrompt.hpp"
#include "platform/linux/desktop/LinuxPopover.hpp"
#include "platform/linux/desktop/LinuxStatusBar.hpp"
#include "platform/linux/desktop/PopoverModule.hpp"
#include "platform/linux/desktop/PreferredAppearance.hpp"
#include "platform/linux/desktop/SingleInstance.hpp"
#include "platform/linux/desktop/XConnection.hpp"
#include "platform/linux/events/InotifyFileEventService.hpp"
#include "platform/linux/system/ConfigurationFolder.hpp"
#include "platform/linux/system/FileUserDefaults.hpp"
#include "platform/linux/system/FreedesktopNotificationCenter.hpp"
#include "platform/linux/system/LinuxBundle.hpp"
#include "platform/linux/system/LinuxDispatch.hpp"
#include "platform/linux/system/LinuxFileManager.hpp"
#include "platform/linux/system/LinuxLog.hpp"
#include "platform/linux/system/LinuxSecurityScopedBookmarks.hpp"
#include "platform/linux/system/SavedFoldersLock.hpp"
#include "platform/linux/updates/AppcastUpdater.hpp"
#include "platform/linux/updates/DownloadModule.hpp"
#include "platform/qt/QtApplication.hpp"
#include "platform/qt/QtEventLoop.hpp"
#include "state/L10n.hpp"
#include "views/ViewModelObject.hpp"

namespace kestrivane {
namespace {

UpdateSource updateSource() {
  const QString downloads = QStandardPaths::writableLocation(QStandardPaths::DownloadLocation);
  return {.feedAddress = KESTRIVANE_FEED_ADDRESS,
          .publicKey = KESTRIVANE_FEED_KEY,
          .currentVersion = KESTRIVANE_VERSION,
          .downloadFolder = FileURL(QFile::encodeName(downloads).toStdString()),
          .lastCheckFile = configurationFolder().appendingPathComponent("last-update-check")};
}

}  // namespace

/// The members go in the reverse of their order: first the interface, then the view model and its
/// tasks, then what they use, the main loop last.
class KestrivaneApp::Program {
 public:
  Program() = default;

  int run(std::vector<FileURL> folders) {
    if (!instance_.isFirst()) return instance_.handOver(folders) ? EXIT_SUCCESS : EXIT_FAILURE;
    std::optional<FileLock> lock;
    try {
      lock = tryLockSavedFolders();
    } catch (const PlatformError& error) {
      return refuse(error.localizedDescription());
    }
    if (!lock) {
      // Two programs that convert the same files would get in each other's way.
      return refuse(
          L10n::choose("kestrivane-watch is running already and watches the saved folders.",
                       "kestrivane-watch уже запущен и следит за сохранёнными папками."));
    }
    const StopSignals stopSignals([this] { loop_.post([this] { quit(); }); });
    const FileObserver listObserver(fileEvents_, *dispatch_, userDefaults_.file(),
                                    [this] { viewModel_->followSavedFolders(); });
    delegate_.applicationDidFinishLaunching();
    if (!folders.empty()) {
      // After the saved ones, which are restored on the loop's next turn.
      loop_.post([this, folders = std::move(folders)] { viewModel_->addFolders(folders); });
    }
    const int status = QCoreApplication::exec();
    // The kernel ends the tools, which die with the threads that wait for them, frees the name on
    // the bus and closes the windows.
    if (quitting_.leavesConversions()) std::_Exit(status);
    return status;
  }

 private:
  void notify(std::string body) {
    notificationCenter_->add({.identifier = makeUUIDString(),
                              .title = "Kestrivane",
                              .body = std::move(body),
                              .sound = NotificationSound::none},
                             [](const std::exception_ptr&) {});
  }

  void showWithoutTray() {
    notify(
        L10n::choose("There is no tray for the icon. Start Kestrivane again to open its window.",
                     "Нет панели для значка. Запустите Kestrivane ещё раз, чтобы открыть окно."));
    delegate_.openPopover();
  }

  int refuse(const std::string& reason) {
    std::cerr << "kestrivane: " << printable(reason) << '\n';
    notify(reason);
    return EXIT_FAILURE;
  }

  void quit() { quitting_.quit(); }

  /// The saved list may have changed before it was watched, and a disk may have come with a folder
  /// of it. May be called from any thread.
  void followList() {
    loop_.post([this] { viewModel_->followSavedFolders(); });
  }

  QtApplication application_;
  QtEventLoop loop_;
  QDBusConnection bus_ = QDBusConnection::sessionBus();
  SingleInstance instance_{bus_,
                           {.activate = [this] { delegate_.openPopover(); },
                            .open =
                                [this](const std::vector<FileURL>& folders) {
                                  viewModel_->addFolders(folders);
                                  delegate_.openPopover();
                                },
                            .quit = [this] { quit(); }}};

  std::unique_ptr<LinuxLog> log_ = LinuxLog::create();
  LinuxFileManager fileManager_;
  LinuxBundle bundle_ = LinuxBundle::ofThisProgram();
  FileUserDefaults userDefaults_{userDefaultsFile(), *log_};
  const std::string listFolder_ = userDefaults_.file().deletingLastPathComponent().path();
  LinuxSecurityScopedBookmarks bookmarks_;
  DesktopOpenPanel openPanel_{bus_, bundle_};
  std::unique_ptr<FreedesktopNotificationCenter> notificationCenter_ =
      FreedesktopNotificationCenter::create(*log_);
  std::unique_ptr<LinuxDispatch> dispatch_ = LinuxDispatch::create(loop_);
  DesktopUpdatePrompt updatePrompt_{bus_, bundle_};
  AppcastUpdater updater_{updateSource(), loop_,         dispatch_->longWorkQueue(),
                          *log_,          updatePrompt_, downloadModule::downloader(bundle_)};
  Converters converters_{fileManager_, *log_, *dispatch_};
  InotifyFileEventService fileEvents_{*log_,
                                      [this](const std::string& path, WatchCoverage) {
                                        if (path == listFolder_) followList();
                                      },
                                      [this] { followList(); }};
  TaskScope tasks_{loop_};
  std::shared_ptr<AppViewModel> viewModel_ =
      AppViewModel::create({fileManager_, fileEvents_, *notificationCenter_, userDefaults_,
                            bookmarks_, openPanel_, *log_, *dispatch_, tasks_},
                           [this] { return converters_.make(); });

  std::unique_ptr<XConnection> x_ = XConnection::ofApplication();
  PreferredAppearance appearance_{bus_, showAppearance};
  ViewModelObject viewModelObject_{
      viewModel_,
      {.checkForUpdates = [this] { updater_.checkForUpdates(); }, .quit = [this] { quit(); }}};
  LinuxPopover popover_{
      x_.get(),
      {.makeWindow = [this] { return popoverModule::makeWindow(bundle_, viewModelObject_); },
       .onFailure =
           [this](const std::string& reason) {
             notify(L10n::choose("The window cannot be opened: ", "Не удалось открыть окно: ") +
                    reason);
           }}};
  LinuxStatusBar statusBar_{
      x_.get(),
      {.menu = {{[] { return L10n::choose("Open Kestrivane", "Открыть Kestrivane"); },
                 [this] { delegate_.openPopover(); }},
                {[] { return L10n::choose("Quit", "Выйти"); }, [this] { quit(); }}},
       .isClickSpent = [this] { return popover_.takeClosingClick(); },
       .onUnseen = [this] { showWithoutTray(); }}};
  Quitting quitting_{{application_, popover_, *viewModel_, loop_, tasks_}};
  AppDelegate delegate_{{application_, *notificationCenter_, popover_, statusBar_, updater_},
                        viewModel_};
};

KestrivaneApp::KestrivaneApp() : program_(std::make_unique<Program>()) {}

KestrivaneApp::~KestrivaneApp() = default;

int KestrivaneApp::run(std::vector<FileURL> folders) {
  return program_->run(std::move(folders));
}

}  // namespace kestrivane
