// The error of every failed conversion; its description is what the user is shown.
//
// Thread-safety: an immutable value. Ownership: owns its payload, the underlying error included.
#pragma once

#include <exception>
#include <string>
#include <variant>

#include "platform/FileURL.hpp"
#include "platform/PlatformError.hpp"

namespace kestrivane {

class ConversionError final : public LocalizedError {
 public:
  /// The index of the payload. The order is part of the type.
  enum class Case { unsupportedFormat, conversionFailed, fileNotFound, revertFailed };

  /// The converter cannot produce the target format; the extensions are kept as they stand.
  static ConversionError unsupportedFormat(std::string from, std::string to);
  /// The conversion was attempted and failed; `reason` is shown to the user.
  static ConversionError conversionFailed(std::string reason);
  /// The file to convert does not exist.
  static ConversionError fileNotFound(FileURL url);
  /// The file could not be renamed back after a failure.
  static ConversionError revertFailed(FileURL url, std::exception_ptr underlying);

  Case caseIndex() const { return static_cast<Case>(payload_.index()); }

  /// The description, in the language that holds now. Every case has one.
  std::string errorDescription() const;

  std::string localizedDescription() const override { return errorDescription(); }
  /// For logs and debuggers: the name of the case.
  const char* what() const noexcept override;

 private:
  struct UnsupportedFormat {
    std::string from;
    std::string to;
  };
  struct ConversionFailed {
    std::string reason;
  };
  struct FileNotFound {
    FileURL url;
  };
  struct RevertFailed {
    FileURL url;
    std::exception_ptr underlying;
  };
  using Payload = std::variant<UnsupportedFormat, ConversionFailed, FileNotFound, RevertFailed>;

  explicit ConversionError(Payload payload) : payload_(std::move(payload)) {}

  Payload payload_;
};

}  // namespace kestrivane
