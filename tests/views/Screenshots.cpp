// Saves a picture of the popover's content in each of its states to the folder given. The scale is
// that of the environment variable QT_SCALE_FACTOR.
#include <QDir>
#include <QFont>
#include <QGuiApplication>
#include <QImage>
#include <QQmlComponent>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickView>
#include <QTest>
#include <cstdio>
#include <iterator>
#include <memory>

#include "views/Views.hpp"

namespace {

struct State {
  const char* name;
  int folders = 3;
  bool isRussian = false;
  bool isProcessing = false;
  /// The object name of the item that the pointer is over.
  const char* hovered = nullptr;
  /// How often the Tab key has been pressed.
  int tabs = 0;
};

constexpr State states[] = {
    {.name = "empty", .folders = 0},
    {.name = "empty-russian", .folders = 0, .isRussian = true},
    {.name = "one", .folders = 1},
    {.name = "three"},
    {.name = "three-russian", .isRussian = true},
    {.name = "twenty", .folders = 20},
    {.name = "busy", .isProcessing = true},
    {.name = "busy-russian", .isRussian = true, .isProcessing = true},
    {.name = "hovered-exit", .hovered = "exit"},
    {.name = "hovered-card", .hovered = "card"},
    {.name = "focused-exit", .tabs = 1},
    {.name = "focused-card", .tabs = 2},
    {.name = "focused-add", .tabs = 3},
    {.name = "focused-switch", .tabs = 4},
};

const char* const folders[] = {"/home/anna/Pictures/Holidays", "/home/anna/Downloads",
                               "/media/anna/archive/Photographs/2019/Scans from the old albums",
                               "/home/anna/Музыка", "/srv/shared/incoming"};

QQuickItem* find(QQuickItem* root, const QString& name) {
  if (root->objectName() == name) return root;
  for (QQuickItem* child : root->childItems()) {
    if (QQuickItem* found = find(child, name)) return found;
  }
  return nullptr;
}

QImage picture(const State& state, bool dark) {
  QQmlEngine engine;
  kestrivane::addViews(engine);
  QQmlComponent fake(&engine, QUrl("qrc:/FakeViewModel.qml"));
  const std::unique_ptr<QObject> model(fake.create());
  QQuickView view(&engine, nullptr);
  model->setProperty("isRussian", state.isRussian);
  for (int i = 0; i < state.folders; ++i) {
    const QString path = folders[static_cast<std::size_t>(i) % std::size(folders)];
    QMetaObject::invokeMethod(model.get(), "watch", Q_ARG(QVariant, path));
  }
  QQmlComponent theme(&engine, QUrl("qrc:/Appearance.qml"));
  const std::unique_ptr<QObject> appearance(theme.createWithInitialProperties({{"dark", dark}}));
  view.setInitialProperties({{"viewModel", QVariant::fromValue(model.get())}});
  view.setSource(kestrivane::contentViewURL());
  if (view.rootObject() == nullptr) qFatal("The content does not load.");
  view.show();
  view.requestActivate();
  if (!QTest::qWaitForWindowActive(&view)) qFatal("The window does not show.");

  model->setProperty("isProcessing", state.isProcessing);
  if (state.hovered != nullptr) {
    QQuickItem* item = find(view.rootObject(), state.hovered);
    QTest::mouseMove(&view, QPoint(1, 1));
    QTest::mouseMove(&view, item->mapToScene(item->boundingRect().center()).toPoint());
  }
  for (int i = 0; i < state.tabs; ++i)
    QTest::keyClick(&view, Qt::Key_Tab);
  QTest::qWait(600);  // until what moves has come to rest
  return view.grabWindow();
}

}  // namespace

int main(int argumentCount, char** arguments) {
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QGuiApplication application(argumentCount, arguments);
  const QStringList given = QCoreApplication::arguments();
  if (given.size() < 2) {
    std::fputs("Usage: views_screenshots FOLDER [FONT-FAMILY]\n", stderr);
    return 2;
  }
  if (given.size() > 2) QGuiApplication::setFont(QFont(given[2], 10));
  for (const State& state : states) {
    for (const bool dark : {false, true}) {
      const QString name = QString("%1-%2.png").arg(state.name, dark ? "dark" : "light");
      if (!picture(state, dark).save(QDir(given[1]).filePath(name)))
        qFatal("Cannot save pictures.");
    }
  }
}
