#include "state/AppViewModel.hpp"

#include <algorithm>
#include <exception>
#include <string_view>
#include <utility>

#include "monitor/FolderMonitor.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

constexpr std::string_view showSuccessNotificationsKey = "showSuccessNotifications";

/// How many files of one folder are converted at once.
constexpr long maxConcurrentConversions = 2;

bool contains(const std::vector<FileURL>& urls, const FileURL& url) {
  return std::ranges::find(urls, url) != urls.end();
}

bool registeredBool(UserDefaults& userDefaults, std::string_view key, bool value) {
  userDefaults.registerDefault(key, value);
  return userDefaults.boolForKey(key);
}

}  // namespace

std::shared_ptr<AppViewModel> AppViewModel::create(const Services& services,
                                                   ConverterFactory makeConverters) {
  std::shared_ptr<AppViewModel> viewModel(new AppViewModel(services, std::move(makeConverters)));
  services.dispatch.mainLoop().post([weak = std::weak_ptr(viewModel)] {
    if (const auto self = weak.lock()) self->loadSavedFolders();
  });
  return viewModel;
}

AppViewModel::AppViewModel(const Services& services, ConverterFactory makeConverters)
    : services_(services),
      makeConverters_(std::move(makeConverters)),
      showSuccessNotifications_(
          registeredBool(services.userDefaults, showSuccessNotificationsKey, true)),
      bookmarkManager_(services.userDefaults, services.bookmarks, services.log),
      logger_(services.log.makeLogger(logSubsystem, "AppViewModel")) {}

void AppViewModel::setShowSuccessNotifications(bool shows) {
  showSuccessNotifications_.set(shows);
  services_.userDefaults.setBool(showSuccessNotificationsKey, shows);
}

void AppViewModel::loadSavedFolders() {
  for (const FileURL& url : bookmarkManager_.load()) {
    if (!isListed(url)) append(url);
    if (!isMonitored(url)) startMonitoring(url);
  }
}

void AppViewModel::followSavedFolders() {
  const auto saved = bookmarkManager_.loadAll();
  if (!saved) return;
  for (const FileURL& url : saved->accessible) {
    if (isListed(url)) {
      services_.bookmarks.stopAccessing(url);  // which was open already
    } else {
      append(url);
      startMonitoring(url);
    }
  }
  std::erase_if(unsavedFolders_, [&](const FileURL& url) { return contains(saved->named, url); });
  const std::vector<FileURL> listed = monitoredFolders_.value();
  for (const FileURL& url : listed)
    if (!contains(saved->named, url) && !contains(unsavedFolders_, url)) drop(url);
}

void AppViewModel::selectFolders() {
  const OpenPanelResult result =
      services_.openPanel.runModal({.canChooseFiles = false,
                                    .canChooseDirectories = true,
                                    .allowsMultipleSelection = true,
                                    .prompt = L10n::choose("Add folders", "Добавить папки")});
  if (result.response == ModalResponse::ok) addFolders(result.urls);
}

void AppViewModel::addFolders(const std::vector<FileURL>& urls) {
  for (const FileURL& url : urls) {
    if (services_.fileManager.kindOfItem(url) != ItemKind::directory || isListed(url)) continue;
    append(url);
    startMonitoring(url);
  }
  save();
}

void AppViewModel::removeFolder(std::size_t index) {
  if (index >= monitoredFolders_.value().size()) std::terminate();
  drop(FileURL(monitoredFolders_.value()[index]));
  save();
}

void AppViewModel::startMonitoring(const FileURL& url) {
  const auto monitor =
      FolderMonitor::create(url, {services_.fileEvents, services_.fileManager, services_.log,
                                  services_.dispatch, watchedFolders_});
  const auto engine =
      ConversionEngine::create(monitor, maxConcurrentConversions,
                               {services_.fileManager, services_.notificationCenter,
                                services_.userDefaults, services_.log, services_.dispatch});
  engine->onStatusChange = [weak = weak_from_this(),
                            &mainLoop = services_.dispatch.mainLoop()](bool isStarting) {
    mainLoop.post([weak, isStarting] {
      if (const auto self = weak.lock()) self->handleStatusChange(isStarting);
    });
  };
  const TaskHandle task = services_.tasks.spawn(run(engine, makeConverters_()));
  activeEngines_.insert_or_assign(url, RunningEngine{engine, task});
}

Task<void> AppViewModel::run(std::shared_ptr<ConversionEngine> engine,
                             std::vector<std::shared_ptr<const FileConverter>> converters) {
  for (const auto& converter : converters)
    co_await engine->registerConverter(converter);
  co_await engine->start();
}

void AppViewModel::stopMonitoring(const FileURL& url) {
  const auto found = activeEngines_.extract(url);
  if (!found) return;
  found.mapped().task.cancel();
  found.mapped().engine->stop();
}

void AppViewModel::stopAllMonitoring() {
  for (auto& [url, running] : std::exchange(activeEngines_, {})) {
    running.task.cancel();
    running.engine->stop();
  }
}

void AppViewModel::handleStatusChange(bool isStarting) {
  activeConversionCount_ =
      std::max<std::int64_t>(0, activeConversionCount_ + (isStarting ? 1 : -1));
  isProcessing_.set(activeConversionCount_ > 0);
}

bool AppViewModel::isListed(const FileURL& url) const {
  return contains(monitoredFolders_.value(), url);
}

void AppViewModel::append(const FileURL& url) {
  monitoredFolders_.modify([&url](auto& folders) { folders.push_back(url); });
}

void AppViewModel::drop(const FileURL& url) {
  monitoredFolders_.modify([&url](auto& folders) { std::erase(folders, url); });
  stopMonitoring(url);
  services_.bookmarks.stopAccessing(url);
}

void AppViewModel::save() {
  unsavedFolders_ = bookmarkManager_.save(monitoredFolders_.value());
}

}  // namespace kestrivane
