// A view model over fakes, with three folders that can be watched, a hand-driven clock and two
// converters for each engine: one that accepts nothing and one that the test controls.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "state/AppViewModel.hpp"
#include "tests/support/FakeBookmarks.hpp"
#include "tests/support/FakeOpenPanel.hpp"
#include "tests/unit/EngineFixture.hpp"

namespace kestrivane::test {

using Lines = std::vector<std::string>;

class ViewModelFixture : public testing::Test {
 protected:
  ViewModelFixture() {
    for (const char* const folder : {"/a", "/b", "/c"})
      files.createDirectory(folder);
  }

  AppViewModel& make() {
    model = AppViewModel::create(
        {files, files, notifications, defaults, bookmarks, panel, log, dispatch, tasks},
        [this] { return makeConverters(); });
    return *model;
  }

  void settle() { dispatch.loop.runUntilIdle(); }

  void add(const Lines& paths) {
    model->addFolders({paths.begin(), paths.end()});
    settle();
  }

  /// Makes a file at `from`, as one that was there all along, or takes the one there, and renames
  /// it.
  void rename(const std::string& from, const std::string& to) {
    if (!files.content(from)) files.writeFile(from, "content");
    files.rename(from, to);
    settle();
  }

  /// Stores the list as an earlier run would have.
  void save(const Lines& paths) {
    auto& array = defaults.storedArrays[std::string(BookmarkManager::userDefaultsKey)];
    array.clear();
    for (const std::string& path : paths)
      array.emplace_back(FakeBookmarks::of(path));
  }

  /// The paths of the stored list.
  Lines saved() {
    Lines paths;
    for (const auto& data : defaults.storedArrays[std::string(BookmarkManager::userDefaultsKey)])
      paths.push_back(textOf(data.value()).substr(std::string_view("bookmark of ").size()));
    return paths;
  }

  Lines folders() const {
    Lines paths;
    for (const FileURL& url : model->monitoredFolders().value())
      paths.push_back(url.path());
    return paths;
  }

  /// The folders of all event streams so far, in the order in which they were made.
  Lines watched() const {
    Lines paths;
    for (const FileEventStreamConfiguration& configuration : files.configurations)
      paths.push_back(configuration.paths.front());
    return paths;
  }

  FakeDispatch dispatch;
  FakeLog log;
  FakeUserDefaults defaults;
  FakeNotificationCenter notifications;
  InMemoryFileSystem files;
  FakeBookmarks bookmarks{files};
  FakeOpenPanel panel;
  std::shared_ptr<ConverterScript> script = std::make_shared<ConverterScript>();
  Lines asked;  ///< the converters that were asked whether they convert "one" to something
  int enginesEquipped = 0;
  TaskScope tasks{dispatch.loop};
  std::shared_ptr<AppViewModel> model;

 private:
  /// Accepts nothing.
  class Spy final : public FileConverter {
   public:
    Spy(Lines& asked, std::string name) : asked_(asked), name_(std::move(name)) {}
    bool canConvert(std::string_view from, std::string_view) const override {
      if (from == "one") asked_.push_back(name_);
      return false;
    }
    Task<void> convert(FileURL, FileURL) const override { co_return; }

   private:
    Lines& asked_;
    std::string name_;
  };

  std::vector<std::shared_ptr<const FileConverter>> makeConverters() {
    ++enginesEquipped;
    return {
        std::make_shared<Spy>(asked, "first"), std::make_shared<Spy>(asked, "second"),
        std::make_shared<ScriptedConverter>(std::vector<std::string>{"png", "jpg"}, files, script)};
  }
};

}  // namespace kestrivane::test
