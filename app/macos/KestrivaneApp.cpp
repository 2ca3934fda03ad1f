#include "app/KestrivaneApp.hpp"

#include <QCoreApplication>
#include <QGuiApplication>
#include <QQmlComponent>
#include <QQmlEngine>
#include <QQuickItem>
#include <cstdlib>
#include <utility>

#include "app/AppDelegate.hpp"
#include "app/Quitting.hpp"
#include "app/macos/MacApplication.hpp"
#include "app/macos/MacPopover.hpp"
#include "app/macos/MacStatusBar.hpp"
#include "app/macos/SparkleUpdater.hpp"
#include "async/LimitedQueue.hpp"
#include "async/TaskScope.hpp"
#include "converters/FFmpegConverter.hpp"
#include "converters/ImageConverter.hpp"
#include "converters/VideoConverter.hpp"
#include "platform/macos/MacAssetExporter.hpp"
#include "platform/macos/MacBundle.hpp"
#include "platform/macos/MacDispatch.hpp"
#include "platform/macos/MacFileEventService.hpp"
#include "platform/macos/MacFileManager.hpp"
#include "platform/macos/MacImageIO.hpp"
#include "platform/macos/MacLogger.hpp"
#include "platform/macos/MacMediaInspector.hpp"
#include "platform/macos/MacNotificationCenter.hpp"
#include "platform/macos/MacOpenPanel.hpp"
#include "platform/macos/MacProcess.hpp"
#include "platform/macos/MacSecurityScopedBookmarks.hpp"
#include "platform/macos/MacUserDefaults.hpp"
#include "platform/qt/QtEventLoop.hpp"
#include "views/ViewModelObject.hpp"
#include "views/Views.hpp"

namespace kestrivane {

/// The members go in the reverse of their order: first the interface, then the view model and its
/// tasks, then what they use, the main loop last.
class KestrivaneApp::Program {
 public:
  Program() = default;

  int run(std::vector<FileURL> folders) {
    // The popover's window comes and goes; the program stays.
    QGuiApplication::setQuitOnLastWindowClosed(false);
    // On the loop's first turn AppKit has launched the application.
    loop_.post([this] { delegate_.applicationDidFinishLaunching(); });
    if (!folders.empty()) {
      loop_.post([this, folders = std::move(folders)] { viewModel_->addFolders(folders); });
    }
    // Every `terminate:` ends the loop, also one that does not come from us.
    const int status = QCoreApplication::exec();
    if (quitting_.leavesConversions()) {
      process_.endAll();
      std::_Exit(status);
    }
    return status;
  }

 private:
  /// In the order in which they are asked.
  std::vector<std::shared_ptr<const FileConverter>> makeConverters() {
    return {
        std::make_shared<ImageConverter>(imageIO_,
                                         dispatch_.globalQueue(QualityOfService::userInitiated)),
        std::make_shared<VideoConverter>(assetExporter_),
        std::make_shared<FFmpegConverter>(FFmpegConverter::Services{
            bundle_, fileManager_, process_, mediaInspector_, log_, encodingQueue_}),
    };
  }

  std::unique_ptr<QQuickItem> makeContent(QQmlEngine& engine) {
    addViews(engine);
    viewModelObject_ = std::make_unique<ViewModelObject>(
        viewModel_, ViewModelObject::Actions{[this] { updater_.checkForUpdates(); },
                                             [this] { quitting_.quit(); }});
    QQmlComponent component(&engine, contentViewURL());
    std::unique_ptr<QObject> content(component.createWithInitialProperties(
        {{"viewModel", QVariant::fromValue(viewModelObject_.get())}}));
    if (!content) qFatal("%s", qUtf8Printable(component.errorString()));
    return std::unique_ptr<QQuickItem>(qobject_cast<QQuickItem*>(content.release()));
  }

  MacApplication application_;
  QtEventLoop loop_;

  MacLog log_;
  MacFileManager fileManager_;
  MacBundle bundle_;
  MacUserDefaults userDefaults_;
  MacSecurityScopedBookmarks bookmarks_;
  MacOpenPanel openPanel_;
  MacNotificationCenter notificationCenter_;
  MacDispatch dispatch_{loop_};
  MacImageIO imageIO_;
  MacAssetExporter assetExporter_;
  // AVFoundation bounds by itself what it does at once; this is for the tool.
  LimitedQueue encodingQueue_{dispatch_.longWorkQueue(), 8};
  MacProcess process_;
  MacMediaInspector mediaInspector_;
  SparkleUpdater updater_;
  MacFileEventService fileEvents_;
  TaskScope tasks_{loop_};
  std::shared_ptr<AppViewModel> viewModel_ =
      AppViewModel::create({fileManager_, fileEvents_, notificationCenter_, userDefaults_,
                            bookmarks_, openPanel_, log_, dispatch_, tasks_},
                           [this] { return makeConverters(); });

  std::unique_ptr<ViewModelObject> viewModelObject_;
  MacPopover popover_{[this](QQmlEngine& engine) { return makeContent(engine); }};
  MacStatusBar statusBar_{[this](double press) { return popover_.hasClosedSince(press); }};
  Quitting quitting_{{application_, popover_, *viewModel_, loop_, tasks_}};
  AppDelegate delegate_{{application_, notificationCenter_, popover_, statusBar_, updater_},
                        viewModel_};
};

KestrivaneApp::KestrivaneApp() : program_(std::make_unique<Program>()) {}

KestrivaneApp::~KestrivaneApp() = default;

int KestrivaneApp::run(std::vector<FileURL> folders) {
  return program_->run(std::move(folders));
}

}  // namespace kestrivane
