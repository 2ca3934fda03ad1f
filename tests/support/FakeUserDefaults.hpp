// Preferences in memory. Thread-safety: none; used on the test's thread. Ownership: owns its
// values.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/UserDefaults.hpp"

namespace kestrivane::test {

class FakeUserDefaults final : public UserDefaults {
 public:
  std::map<std::string, bool, std::less<>> stored;
  /// An element that is nothing stands for one that is not data.
  std::map<std::string, std::vector<std::optional<Data>>, std::less<>> storedArrays;
  /// The keys of all values that were set, in order.
  std::vector<std::string> writes;
  std::function<void()> onWrite = [] {};  ///< called for each of them

  void registerDefault(std::string_view key, bool value) override {
    registered_.insert_or_assign(std::string(key), value);
  }

  bool boolForKey(std::string_view key) const override {
    if (const auto found = stored.find(key); found != stored.end()) return found->second;
    if (storedArrays.contains(key)) return false;
    const auto found = registered_.find(key);
    return found != registered_.end() && found->second;
  }

  void setBool(std::string_view key, bool value) override {
    writes.emplace_back(key);
    onWrite();
    storedArrays.erase(std::string(key));
    stored.insert_or_assign(std::string(key), value);
  }

  std::optional<std::vector<Data>> dataArrayForKey(std::string_view key) const override {
    const auto found = storedArrays.find(key);
    if (found == storedArrays.end()) return std::nullopt;
    std::vector<Data> array;
    for (const std::optional<Data>& element : found->second) {
      if (!element) return std::nullopt;
      array.push_back(*element);
    }
    return array;
  }

  void setDataArray(std::string_view key, const std::vector<Data>& value) override {
    writes.emplace_back(key);
    onWrite();
    stored.erase(std::string(key));
    storedArrays.insert_or_assign(std::string(key),
                                  std::vector<std::optional<Data>>(value.begin(), value.end()));
  }

 private:
  std::map<std::string, bool, std::less<>> registered_;
};

}  // namespace kestrivane::test
