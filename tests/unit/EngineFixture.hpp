// An engine on `/w` in a file system in memory, with a hand-driven clock and a converter that the
// test controls.
#pragma once

#include <algorithm>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "async/Sleep.hpp"
#include "async/TaskScope.hpp"
#include "engine/ConversionEngine.hpp"
#include "engine/ConversionError.hpp"
#include "tests/support/FakeDispatch.hpp"
#include "tests/support/FakeLog.hpp"
#include "tests/support/FakeNotificationCenter.hpp"
#include "tests/support/FakeUserDefaults.hpp"
#include "tests/support/InMemoryFileSystem.hpp"

namespace kestrivane::test {

/// What the scripted converter saw and does. Shared, as converters are immutable.
struct ConverterScript {
  std::chrono::nanoseconds duration{0};                        ///< of one conversion
  std::exception_ptr failure;                                  ///< thrown instead of writing
  bool leavesPartialFile = false;                              ///< with `failure`
  std::vector<std::pair<std::string, std::string>> questions;  ///< asked of `canConvert`
  std::vector<std::string> sources;
  std::vector<std::string> destinations;
};

/// Accepts pairs of the extensions that it is made with; writes "EXTENSION of CONTENT".
class ScriptedConverter final : public FileConverter {
 public:
  ScriptedConverter(std::vector<std::string> extensions, InMemoryFileSystem& files,
                    std::shared_ptr<ConverterScript> script)
      : extensions_(std::move(extensions)), files_(&files), script_(std::move(script)) {}

  bool canConvert(std::string_view from, std::string_view to) const override {
    script_->questions.emplace_back(from, to);
    return std::ranges::find(extensions_, from) != extensions_.end() &&
           std::ranges::find(extensions_, to) != extensions_.end();
  }

  Task<void> convert(FileURL sourceURL, FileURL destinationURL) const override {
    script_->sources.push_back(sourceURL.path());
    script_->destinations.push_back(destinationURL.path());
    const std::string content = files_->content(sourceURL.path()).value_or("nothing");
    if (script_->duration.count() > 0) co_await sleepFor(script_->duration);
    if (script_->leavesPartialFile) files_->writeFile(destinationURL.path(), "half");
    if (script_->failure) std::rethrow_exception(script_->failure);
    files_->writeFile(destinationURL.path(), destinationURL.pathExtension() + " of " + content);
  }

 private:
  std::vector<std::string> extensions_;
  InMemoryFileSystem* files_;
  std::shared_ptr<ConverterScript> script_;
};

inline Task<void> runEngine(std::shared_ptr<ConversionEngine> engine, bool* finished) {
  co_await engine->start();
  *finished = true;
}

class EngineTest : public testing::Test {
 protected:
  EngineTest() {
    files.createDirectory("/w");
    engine->onStatusChange = [this](bool isStarting) { statuses.push_back(isStarting); };
  }

  std::shared_ptr<ConverterScript> addConverter(std::vector<std::string> extensions) {
    auto script = std::make_shared<ConverterScript>();
    scope.spawn(engine->registerConverter(
        std::make_shared<ScriptedConverter>(std::move(extensions), files, script)));
    dispatch.loop.runUntilIdle();
    return script;
  }

  void startEngine() {
    task = scope.spawn(runEngine(engine, &finished));
    dispatch.loop.runUntilIdle();
  }

  /// Makes the file at `from`, as one that was there all along, and renames it.
  void rename(const std::string& from, const std::string& to) {
    files.writeFile(from, "content of " + from);
    files.rename(from, to);
    dispatch.loop.runUntilIdle();
  }

  void turnSuccessNotificationsOn() { defaults.stored["showSuccessNotifications"] = true; }

  FakeDispatch dispatch;
  FakeLog log;
  FakeUserDefaults defaults;
  FakeNotificationCenter notifications;
  InMemoryFileSystem files;
  TaskScope scope{dispatch.loop};
  std::shared_ptr<FolderMonitor> monitor =
      FolderMonitor::create(FileURL("/w"), {files, files, log, dispatch});
  std::shared_ptr<ConversionEngine> engine =
      ConversionEngine::create(monitor, 2, {files, notifications, defaults, log, dispatch});
  TaskHandle task;
  std::vector<bool> statuses;
  bool finished = false;
};

}  // namespace kestrivane::test
