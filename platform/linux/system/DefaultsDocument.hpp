// The content of a file of preferences: a JSON object (RFC 8259) with a member for each key.
//
// Booleans are those of JSON; data is an object {"data": TEXT} with the bytes in base 64. Members
// that have been written by hand keep their values and their places. Thread-safety: none.
// Ownership: owns its values.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/Data.hpp"

namespace kestrivane {

class DefaultsDocument {
 public:
  /// Without values.
  DefaultsDocument();
  DefaultsDocument(const DefaultsDocument& other);
  DefaultsDocument(DefaultsDocument&&) noexcept;
  DefaultsDocument& operator=(const DefaultsDocument&) = delete;
  DefaultsDocument& operator=(DefaultsDocument&&) noexcept;
  ~DefaultsDocument();

  /// Text of nothing but blanks has no values. Throws `PlatformError`, which says where, if `text`
  /// is not a JSON object.
  static DefaultsDocument parse(std::string_view text);
  std::string text() const;

  bool contains(std::string_view key) const;
  /// Nothing if there is no value or one of another kind.
  std::optional<bool> boolean(std::string_view key) const;
  /// Nothing if there is no value, one that is no array, or an array with an element that is not
  /// data.
  std::optional<std::vector<Data>> dataArray(std::string_view key) const;

  /// `key` is valid UTF-8.
  void set(std::string_view key, bool value);
  void set(std::string_view key, const std::vector<Data>& value);

 private:
  struct Values;

  std::unique_ptr<Values> values_;
};

}  // namespace kestrivane
