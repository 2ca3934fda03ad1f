// Runs the tests of the tst_*.qml files over the views as they are built into programs.
#include <QQmlEngine>
#include <QQuickWindow>
#include <QtQuickTest>

#include "views/Views.hpp"

namespace {

class Setup : public QObject {
  Q_OBJECT

 public slots:
  void applicationAvailable() { QQuickWindow::setGraphicsApi(QSGRendererInterface::Software); }
  void qmlEngineAvailable(QQmlEngine* engine) { kestrivane::addViews(*engine); }
};

}  // namespace

QUICK_TEST_MAIN_WITH_SETUP(views, Setup)

#include "QuickTests.moc"
