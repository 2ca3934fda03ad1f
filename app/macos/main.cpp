// Kestrivane.app: the application. It has no options; folders that are named by their whole path
// are added to the watched ones.
#include <QGuiApplication>
#include <QQuickWindow>
#include <string_view>
#include <utility>
#include <vector>

#include "app/KestrivaneApp.hpp"

int main(int argc, char** argv) {
  using namespace kestrivane;

  // The popover is small and mostly still: drawing it on the processor saves memory.
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  QGuiApplication application(argc, argv);
  QGuiApplication::setApplicationName("Kestrivane");

  // The system may add arguments of its own.
  std::vector<FileURL> folders;
  for (int i = 1; i < argc; ++i)
    if (std::string_view(argv[i]).starts_with('/')) folders.emplace_back(argv[i]);
  return KestrivaneApp().run(std::move(folders));
}
