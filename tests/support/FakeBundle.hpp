// A bundle of what a test names. Thread-safety: none. Ownership: owns its names.
#pragma once

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>

#include "platform/Bundle.hpp"

namespace kestrivane::test {

class FakeBundle final : public Bundle {
 public:
  using Items = std::map<std::string, FileURL, std::less<>>;

  Items auxiliaryExecutables;
  Items resources;

  std::optional<FileURL> auxiliaryExecutable(std::string_view name) const override {
    return find(auxiliaryExecutables, name);
  }
  std::optional<FileURL> resource(std::string_view name) const override {
    return find(resources, name);
  }

 private:
  static std::optional<FileURL> find(const Items& items, std::string_view name) {
    const auto item = items.find(name);
    if (item == items.end()) return std::nullopt;
    return item->second;
  }
};

}  // namespace kestrivane::test
