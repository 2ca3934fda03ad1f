#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/FileUserDefaults.hpp"

#include <algorithm>
#include <cerrno>
#include <system_error>
#include <utility>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/PosixError.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

using Array = std::vector<Data>;

bool contains(const Array& array, const Data& element) {
  return std::ranges::find(array, element) != array.end();
}

/// `value`, with the changes by which others have made `stored` of `known`.
Array merged(const Array& known, Array value, const Array& stored) {
  std::erase_if(value, [&](const Data& element) {
    return contains(known, element) && !contains(stored, element);
  });
  for (const Data& element : stored)
    if (!contains(known, element) && !contains(value, element)) value.push_back(element);
  return value;
}

}  // namespace

FileUserDefaults::FileUserDefaults(const FileURL& file, UnifiedLog& log)
    : logger_(log.makeLogger(logSubsystem, "UserDefaults")), file_(file) {}

void FileUserDefaults::registerDefault(std::string_view key, bool value) {
  const std::lock_guard lock(mutex_);
  registered_.insert_or_assign(std::string(key), value);
}

bool FileUserDefaults::boolForKey(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  refresh();
  if (document_.contains(key)) return document_.boolean(key).value_or(false);
  const auto registered = registered_.find(key);
  return registered != registered_.end() && registered->second;
}

void FileUserDefaults::setBool(std::string_view key, bool value) {
  const std::lock_guard lock(mutex_);
  makeChange(
      [key = std::string(key), value](DefaultsDocument& document) { document.set(key, value); });
}

std::optional<std::vector<Data>> FileUserDefaults::dataArrayForKey(std::string_view key) const {
  const std::lock_guard lock(mutex_);
  refresh();
  auto array = document_.dataArray(key);
  known_.insert_or_assign(std::string(key), array.value_or(Array{}));
  return array;
}

void FileUserDefaults::setDataArray(std::string_view key, const std::vector<Data>& value) {
  const std::lock_guard lock(mutex_);
  std::optional<Array> known;
  if (const auto found = known_.find(key); found != known_.end()) known = found->second;
  makeChange([key = std::string(key), known, value](DefaultsDocument& document) {
    const auto stored = document.dataArray(key);
    document.set(key, known && stored ? merged(*known, value, *stored) : value);
  });
  known_.insert_or_assign(std::string(key), value);
}

void FileUserDefaults::updateDataArray(
    std::string_view key, const std::function<void(std::vector<Data>& array)>& change) {
  const std::lock_guard lock(mutex_);
  try {
    store([&](DefaultsDocument& document) {
      auto array = document.dataArray(key);
      if (!array && document.contains(key)) {
        throw PlatformError(EBADMSG,
                            L10n::choose("Something in it is not what the program has written: ",
                                         "В нём есть то, что записано не программой: ")
                                .append(key));
      }
      if (!array) array.emplace();
      change(*array);
      document.set(key, *array);
    });
  } catch (const std::system_error& error) {
    throw posixError(error.code().value(), FileOperation::saveDefaults, file_.url());
  }
}

/// Takes over what another process has written.
void FileUserDefaults::refresh() const {
  if (!file_.hasChanged()) return;
  try {
    try {
      document_ = DefaultsDocument::parse(file_.read());
    } catch (const PlatformError&) {
      const FileLock lock = file_.lock();
      document_ = readAgain();
    }
  } catch (const std::system_error& error) {
    document_ = {};
    const PlatformError described =
        posixError(error.code().value(), FileOperation::readDefaults, file_.url());
    logger_->log(LogLevel::error,
                 "Не удалось прочитать настройки: " + described.localizedDescription());
  }
  for (const Change& change : unsaved_)
    change(document_);
}

/// What the file holds under its lock. A damaged one is set aside.
DefaultsDocument FileUserDefaults::readAgain() const {
  const std::string text = file_.read();
  try {
    return DefaultsDocument::parse(text);
  } catch (const PlatformError& error) {
    const FileURL aside = file_.setAside();
    logger_->log(LogLevel::error, "Файл настроек повреждён и сохранён под именем " + aside.path() +
                                      ": " + error.localizedDescription());
    return {};
  }
}

/// Stores a change, or holds it until it can be stored.
void FileUserDefaults::makeChange(const Change& change) {
  try {
    store(change);
  } catch (const std::system_error& error) {
    change(document_);
    unsaved_.push_back(change);
    const PlatformError described =
        posixError(error.code().value(), FileOperation::saveDefaults, file_.url());
    logger_->log(LogLevel::error,
                 "Не удалось сохранить настройки: " + described.localizedDescription());
  }
}

/// Stores `change` with what could not be stored before.
void FileUserDefaults::store(const Change& change) {
  const FileLock lock = file_.lock();
  document_ = readAgain();
  for (const Change& unsaved : unsaved_)
    unsaved(document_);
  DefaultsDocument changed = document_;
  change(changed);
  file_.replace(changed.text());
  document_ = std::move(changed);
  unsaved_.clear();
}

}  // namespace kestrivane
