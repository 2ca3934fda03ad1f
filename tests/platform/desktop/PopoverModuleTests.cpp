// The views as the application loads them.
#include <QGuiApplication>
#include <QScreen>
#include <QSet>
#include <QStringListModel>
#include <QTest>
#include <cerrno>
#include <string>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/desktop/PopoverModule.hpp"
#include "tests/support/FakeBundle.hpp"

namespace kestrivane::test {
namespace {

constexpr QSize size(360, 540);

/// What the views show, as far as they ask for it without folders.
class ViewModel final : public QObject {
  Q_OBJECT
  Q_PROPERTY(QAbstractItemModel* monitoredFolders READ monitoredFolders CONSTANT)
  Q_PROPERTY(bool isProcessing MEMBER flag_ CONSTANT)
  Q_PROPERTY(bool showSuccessNotifications MEMBER flag_ CONSTANT)
  Q_PROPERTY(bool isRussian MEMBER flag_ CONSTANT)

 public:
  QAbstractItemModel* monitoredFolders() { return &folders_; }

 private:
  QStringListModel folders_;
  bool flag_ = false;
};

int countColours(const QImage& image) {
  QSet<QRgb> colours;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x)
      colours.insert(image.pixel(x, y));
  return static_cast<int>(colours.size());
}

TEST(PopoverModule, MakesAWindowThatIsFilledWithTheViews) {
  FakeBundle bundle;
  bundle.auxiliaryExecutables.insert_or_assign(popoverModule::fileName,
                                               FileURL(KESTRIVANE_POPOVER_MODULE));
  ViewModel viewModel;
  const auto window = popoverModule::makeWindow(bundle, viewModel);
  ASSERT_NE(window, nullptr);
  window->resize(size);
  window->show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(window.get()));
  const auto isDrawn = [&] {
    const QPixmap picture = window->screen()->grabWindow(window->winId());
    return picture.size() == size && countColours(picture.toImage()) > 20;
  };
  EXPECT_TRUE(QTest::qWaitFor(isDrawn, 60'000));
}

TEST(PopoverModule, IsAnErrorWhenItIsMissing) {
  ViewModel viewModel;
  try {
    popoverModule::makeWindow(FakeBundle(), viewModel);
    FAIL() << "there is no module";
  } catch (const PlatformError& error) {
    EXPECT_EQ(error.code(), ELIBACC);
  }
}

}  // namespace
}  // namespace kestrivane::test

#include "PopoverModuleTests.moc"
