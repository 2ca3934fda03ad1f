// kestrivane: the application. It has no options; folders that are named are added to the watched
// ones.
#include <QCoreApplication>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <filesystem>
#include <vector>

#include "app/KestrivaneApp.hpp"
#include "cli/CommandLine.hpp"
#include "cli/StopSignals.hpp"
#include "platform/linux/system/InheritedState.hpp"
#include "platform/linux/system/ProcessMemory.hpp"

int main(int argc, char** argv) {
  using namespace kestrivane;

  returnLargeBlocksWhenFreed();
  replaceInheritedState();
  StopSignals::block();

  QGuiApplication application(argc, argv);
  // From here on Qt's X11 part has nothing to say but that a tray maps our icon, as trays do.
  QLoggingCategory::setFilterRules("qt.qpa.xcb=false");
  QGuiApplication::setApplicationName("kestrivane");
  QGuiApplication::setApplicationDisplayName("Kestrivane");
  QGuiApplication::setDesktopFileName("com.kestrivane.Kestrivane");

  std::vector<FileURL> folders;
  for (int i = 1; i < argc; ++i) {
    try {
      folders.emplace_back(absoluteFolderPath(argv[i]));
    } catch (const std::filesystem::filesystem_error&) {
      // There is no such folder; others that are none are passed over later.
    }
  }
  return KestrivaneApp().run(std::move(folders));
}
