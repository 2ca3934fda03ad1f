#include "state/L10n.hpp"

#include <initializer_list>

#include "platform/Locale.hpp"

namespace kestrivane {
namespace {

std::string joined(std::initializer_list<std::string_view> pieces) {
  std::string text;
  for (const std::string_view piece : pieces)
    text += piece;
  return text;
}

}  // namespace

bool L10n::isRussian() {
  return currentLanguageCode() == "ru";
}

std::string L10n::choose(std::string_view english, std::string_view russian) {
  return std::string(isRussian() ? russian : english);
}

std::string L10n::unsupportedFormat(std::string_view from, std::string_view to) {
  if (isRussian()) return joined({"Конвертация из '", from, "' в '", to, "' не поддерживается."});
  return joined({"Conversion from '", from, "' to '", to, "' is not supported."});
}

std::string L10n::conversionError(std::string_view detail) {
  return choose("Conversion error: ", "Ошибка конвертации: ").append(detail);
}

std::string L10n::success(std::string_view from, std::string_view to) {
  return joined({choose("Success: ", "Успешно: "), from, " -> ", to});
}

std::string L10n::reverted(std::string_view file, std::string_view originalExtension) {
  if (isRussian()) {
    return joined({"Конвертация не удалась. Файл '", file, "' возвращен к исходному расширению '",
                   originalExtension, "'."});
  }
  return joined({"Conversion failed. File '", file, "' reverted to original extension '",
                 originalExtension, "'."});
}

std::string L10n::revertFailed(std::string_view file) {
  if (isRussian()) {
    return joined({"Не удалось вернуть файл '", file,
                   "' к исходному расширению. Пожалуйста, проверьте файл вручную."});
  }
  return joined(
      {"Could not revert file '", file, "' to its original extension. Please check it manually."});
}

}  // namespace kestrivane
