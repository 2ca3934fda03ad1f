// kestrivane: the application. Folders that are named are added to the watched ones. Its only
// options are those that it answers to without starting.
#include <QCoreApplication>
#include <QGuiApplication>
#include <QLoggingCategory>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <string_view>
#include <vector>

#include "app/CommandLineAnswer.hpp"
#include "app/KestrivaneApp.hpp"
#include "cli/CommandLine.hpp"
#include "cli/StopSignals.hpp"
#include "platform/linux/system/InheritedState.hpp"
#include "platform/linux/system/ProcessMemory.hpp"

int main(int argc, char** argv) {
  using namespace kestrivane;

  // Before there is anything that needs a display.
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  if (const auto answer = commandLineAnswer(arguments, KESTRIVANE_VERSION)) {
    std::cout << *answer;
    return EXIT_SUCCESS;
  }

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
