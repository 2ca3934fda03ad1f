// Errors that can describe themselves to the user, and the one that adapters throw.
//
// Thread-safety: immutable values. Ownership: an error owns its texts.
#pragma once

#include <exception>
#include <string>
#include <utility>

namespace kestrivane {

/// An error with a description for the user, in the language that holds when it is read.
class LocalizedError : public std::exception {
 public:
  virtual std::string localizedDescription() const = 0;
};

/// What an adapter throws: the system's or library's own code, and a description of what happened
/// to which file. One mapper for each library makes it.
class PlatformError final : public LocalizedError {
 public:
  PlatformError(int code, std::string description)
      : code_(code), description_(std::move(description)) {}

  /// The code of the domain that threw, an `errno` for instance.
  int code() const { return code_; }
  std::string localizedDescription() const override { return description_; }
  const char* what() const noexcept override { return description_.c_str(); }

 private:
  int code_;
  std::string description_;
};

/// The description of any error: its localised one if it has one, else `what()`.
inline std::string localizedDescription(const std::exception_ptr& error) {
  try {
    std::rethrow_exception(error);
  } catch (const LocalizedError& localized) {
    return localized.localizedDescription();
  } catch (const std::exception& other) {
    return other.what();
  } catch (...) {
    return "Unknown error";
  }
}

}  // namespace kestrivane
