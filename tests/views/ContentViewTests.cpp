// The content over the program's own view model.
#include <QGuiApplication>
#include <QMimeData>
#include <QQmlProperty>
#include <QQuickItem>
#include <QQuickView>
#include <QSignalSpy>
#include <QTest>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "tests/support/FakeLocale.hpp"
#include "tests/unit/AppViewModelFixture.hpp"
#include "views/ViewModelObject.hpp"
#include "views/Views.hpp"

namespace kestrivane::test {
namespace {

class ContentViewTest : public ViewModelFixture {
 protected:
  ContentViewTest() {
    make();
    settle();
    object = std::make_unique<ViewModelObject>(
        model, ViewModelObject::Actions{[this] { ++checksForUpdates; }, [this] { ++quits; }});
  }

  void show() {
    addViews(*view.engine());
    view.setInitialProperties({{"viewModel", QVariant::fromValue<QObject*>(object.get())}});
    view.setSource(contentViewURL());
    ASSERT_NE(view.rootObject(), nullptr);
    view.show();
    ASSERT_TRUE(QTest::qWaitForWindowExposed(&view));
  }

  /// Drags addresses over the middle of the content and drops them: was the drop taken?
  bool drop(const QMimeData& data) {
    const QPoint middle(180, 270);
    QDragEnterEvent enter(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &enter);
    if (!enter.isAccepted()) return false;
    QDropEvent event(middle, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(&view, &event);
    settle();
    return event.isAccepted();
  }

  QVariant value(const char* name, const char* property) {
    return view.rootObject()->findChild<QObject*>(name)->property(property);
  }

  int checksForUpdates = 0;
  int quits = 0;
  std::unique_ptr<ViewModelObject> object;
  QQuickView view;
};

TEST_F(ContentViewTest, ShowsWhatTheViewModelPublishes) {
  show();
  EXPECT_EQ(value("list", "count"), 0);
  add({"/b", "/a"});
  EXPECT_TRUE(QTest::qWaitFor([this] { return value("list", "count") == 2; }));
  EXPECT_EQ(value("status", "text"), "Ready to work");
  model->handleStatusChange(true);
  EXPECT_EQ(value("status", "text"), "Converting...");
  model->handleStatusChange(false);
  EXPECT_EQ(value("status", "text"), "Ready to work");
  model->setShowSuccessNotifications(false);
  EXPECT_EQ(value("switch", "checked"), false);
  model->removeFolder(0);
  EXPECT_TRUE(QTest::qWaitFor([this] { return value("list", "count") == 1; }));
}

TEST_F(ContentViewTest, ShowsTheFoldersThatWereThereBefore) {
  add({"/a", "/b", "/c"});
  show();
  EXPECT_EQ(value("list", "count"), 3);
}

TEST_F(ContentViewTest, PassesOnWhatTheUserDoes) {
  add({"/a", "/b"});
  object->removeFolder(0);
  EXPECT_EQ(folders(), Lines{"/b"});
  object->setProperty("showSuccessNotifications", false);
  EXPECT_FALSE(model->showSuccessNotifications().value());
  object->checkForUpdates();
  object->quit();
  EXPECT_EQ(std::pair(checksForUpdates, quits), std::pair(1, 1));
}

TEST_F(ContentViewTest, RemovesNoFolderThatIsNotThere) {
  add({"/a"});
  object->removeFolder(-1);
  object->removeFolder(1);
  EXPECT_EQ(folders(), Lines{"/a"});
}

TEST_F(ContentViewTest, AddsTheFoldersAmongWhatIsDroppedInTheirOrder) {
  files.writeFile("/file.txt", "x");
  show();
  QMimeData data;
  data.setData("text/uri-list",
               "file:///c\r\nfile:///file.txt\r\nhttp://example.org/b\r\nfile:///a/\r\n");
  EXPECT_TRUE(drop(data));
  EXPECT_EQ(folders(), (Lines{"/c", "/a"}));
}

TEST_F(ContentViewTest, AddsADroppedFolderWhoseNameIsNoText) {
  files.createDirectory("/na\xffme");
  show();
  QMimeData data;
  data.setData("text/uri-list", "file:///na%FFme\r\n");
  EXPECT_TRUE(drop(data));
  EXPECT_EQ(folders(), Lines{"/na\xffme"});
}

TEST_F(ContentViewTest, DoesNotTakeADropOfOtherAddresses) {
  show();
  QMimeData data;
  data.setData("text/uri-list", "http://example.org/a\r\nfiles:///a\r\n");
  EXPECT_FALSE(drop(data));
  EXPECT_TRUE(folders().empty());
  EXPECT_TRUE(defaults.writes.empty());
}

TEST_F(ContentViewTest, TakesADropOfNoFolderOfThisComputerAndChangesNothing) {
  show();
  QMimeData data;
  data.setData("text/uri-list", "FILE:///a%00b\r\n");
  EXPECT_TRUE(drop(data));
  EXPECT_TRUE(folders().empty());
  EXPECT_TRUE(defaults.writes.empty());
}

TEST_F(ContentViewTest, DoesNotTakeADropWithoutAddresses) {
  show();
  QMimeData data;
  data.setText("/a");
  EXPECT_FALSE(drop(data));
  EXPECT_TRUE(folders().empty());
}

TEST_F(ContentViewTest, SpeaksTheLanguageOfTheSystem) {
  const LanguageGuard russian("ru");
  show();
  EXPECT_EQ(value("heading", "text"), "АКТИВНЫЕ ПАПКИ");
  EXPECT_EQ(value("status", "text"), "Готов к работе");
}

}  // namespace
}  // namespace kestrivane::test

int main(int argumentCount, char** arguments) {
  testing::InitGoogleTest(&argumentCount, arguments);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QQuickWindow::setGraphicsApi(QSGRendererInterface::Software);
  const QGuiApplication application(argumentCount, arguments);
  return RUN_ALL_TESTS();
}
