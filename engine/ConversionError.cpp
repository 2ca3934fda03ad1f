#include "engine/ConversionError.hpp"

#include <array>
#include <utility>

#include "state/L10n.hpp"

namespace kestrivane {

ConversionError ConversionError::unsupportedFormat(std::string from, std::string to) {
  return ConversionError(UnsupportedFormat{std::move(from), std::move(to)});
}

ConversionError ConversionError::conversionFailed(std::string reason) {
  return ConversionError(ConversionFailed{std::move(reason)});
}

ConversionError ConversionError::fileNotFound(FileURL url) {
  return ConversionError(FileNotFound{std::move(url)});
}

ConversionError ConversionError::revertFailed(FileURL url, std::exception_ptr underlying) {
  return ConversionError(RevertFailed{std::move(url), std::move(underlying)});
}

std::string ConversionError::errorDescription() const {
  struct Describe {
    std::string operator()(const UnsupportedFormat& error) const {
      return L10n::unsupportedFormat(error.from, error.to);
    }
    std::string operator()(const ConversionFailed& error) const {
      return L10n::conversionError(error.reason);
    }
    std::string operator()(const FileNotFound& error) const {
      return error.url.lastPathComponent();
    }
    std::string operator()(const RevertFailed& error) const {
      return error.url.lastPathComponent() + ": " +
             kestrivane::localizedDescription(error.underlying);
    }
  };
  return std::visit(Describe{}, payload_);
}

const char* ConversionError::what() const noexcept {
  constexpr std::array names = {"unsupportedFormat", "conversionFailed", "fileNotFound",
                                "revertFailed"};
  return names[payload_.index()];
}

}  // namespace kestrivane
