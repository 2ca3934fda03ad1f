#include <QAbstractItemModelTester>
#include <QUrl>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "views/FolderListModel.hpp"

namespace kestrivane::test {
namespace {

using Lines = std::vector<std::string>;

/// A model and what it announced, in words.
class FolderListModelTest : public testing::Test {
 protected:
  FolderListModelTest() {
    const auto record = [this](const char* what) {
      return [this, what](const QModelIndex&, int first, int last) {
        announced.push_back(what + std::to_string(first) + "-" + std::to_string(last));
      };
    };
    QObject::connect(&model, &QAbstractItemModel::rowsInserted, record("inserted "));
    QObject::connect(&model, &QAbstractItemModel::rowsRemoved, record("removed "));
    QObject::connect(&model, &QAbstractItemModel::rowsMoved, record("moved "));
    QObject::connect(&model, &QAbstractItemModel::modelReset,
                     [this] { announced.push_back("reset"); });
  }

  void set(const Lines& paths) {
    announced.clear();
    model.setFolders({paths.begin(), paths.end()});
    Lines shown;
    for (int row = 0; row < model.rowCount(); ++row)
      shown.push_back("/" + text(row, FolderListModel::name));
    EXPECT_EQ(shown, paths);
  }

  std::string text(int row, FolderListModel::Role role) const {
    return model.data(model.index(row), role).toString().toStdString();
  }

  FolderListModel model;
  QAbstractItemModelTester tester{&model, QAbstractItemModelTester::FailureReportingMode::Fatal};
  Lines announced;
};

TEST_F(FolderListModelTest, AnnouncesOnlyTheRowsThatChange) {
  set({"/a", "/b"});
  EXPECT_EQ(announced, (Lines{"inserted 0-0", "inserted 1-1"}));
  set({"/a", "/b", "/c"});
  EXPECT_EQ(announced, Lines{"inserted 2-2"});
  set({"/a", "/b", "/c"});
  EXPECT_EQ(announced, Lines{});
  set({"/a", "/c"});
  EXPECT_EQ(announced, Lines{"removed 1-1"});
  set({});
  EXPECT_EQ(announced, (Lines{"removed 1-1", "removed 0-0"}));
}

TEST_F(FolderListModelTest, AnnouncesRowsThatMoveAndChangesOfAllKindsAtOnce) {
  set({"/a", "/b", "/c", "/d"});
  set({"/d", "/a", "/b", "/c"});
  EXPECT_EQ(announced, Lines{"moved 3-3"});
  set({"/x", "/c", "/d", "/y"});
  set({"/y", "/d", "/z", "/c", "/x"});
}

TEST_F(FolderListModelTest, TakesSpellingsOfAFolderForDifferentFolders) {
  model.setFolders({FileURL("/a"), FileURL("/a/"), FileURL("/A")});
  EXPECT_EQ(model.rowCount(), 3);
  EXPECT_EQ(text(1, FolderListModel::name), "a");
}

TEST_F(FolderListModelTest, TellsNameParentAndAddress) {
  model.setFolders({FileURL("/home/anna/Bücher & <b>"), FileURL("/"), FileURL("/bytes\xff")});
  EXPECT_EQ(text(0, FolderListModel::name), "Bücher & <b>");
  EXPECT_EQ(text(0, FolderListModel::parentPath), "/home/anna");
  EXPECT_EQ(text(1, FolderListModel::name), "/");
  EXPECT_EQ(text(1, FolderListModel::parentPath), "/");
  EXPECT_EQ(text(2, FolderListModel::name), "bytes\uFFFD");
  const QUrl url = model.data(model.index(2), FolderListModel::url).toUrl();
  EXPECT_EQ(url.toEncoded().toStdString(), "file:///bytes%FF");
}

TEST_F(FolderListModelTest, NamesItsRolesAsTheViewsDo) {
  const QList<QByteArray> names = model.roleNames().values();
  EXPECT_EQ(names.size(), 3);
  for (const char* const name : {"url", "name", "parentPath"})
    EXPECT_TRUE(names.contains(name)) << name;
}

TEST_F(FolderListModelTest, HasNothingOutsideOfItsRows) {
  model.setFolders({FileURL("/a")});
  EXPECT_FALSE(model.data(model.index(1), FolderListModel::name).isValid());
  EXPECT_FALSE(model.data(QModelIndex(), FolderListModel::name).isValid());
  EXPECT_FALSE(model.data(model.index(0), Qt::DisplayRole).isValid());
}

}  // namespace
}  // namespace kestrivane::test
