#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/PosixError.hpp"

#include <cerrno>
#include <cstring>
#include <string>

#include "platform/Locale.hpp"
#include "platform/Unicode.hpp"

namespace kestrivane {
namespace {

struct Text {
  const char* english;
  const char* russian;
};

Text introduction(FileOperation operation) {
  switch (operation) {
    case FileOperation::move:
      return {"Could not rename '", "Не удалось переименовать '"};
    case FileOperation::replace:
      return {"Could not replace '", "Не удалось заменить '"};
    case FileOperation::makeTemporaryDirectory:
      return {"Could not make the temporary folder '", "Не удалось создать временную папку '"};
    case FileOperation::readDefaults:
      return {"Could not read the settings in '", "Не удалось прочитать настройки в файле '"};
    case FileOperation::saveDefaults:
      return {"Could not save the settings in '", "Не удалось сохранить настройки в файле '"};
    case FileOperation::findFolder:
      return {"Could not find the folder '", "Не удалось найти папку '"};
  }
  return {"'", "'"};
}

/// Why, and what helps; null texts for an error without a sentence of its own.
Text explanation(int errnoValue) {
  switch (errnoValue) {
    case ENOENT:
      return {"it is no longer there. It was renamed, moved or deleted meanwhile.",
              "объекта больше нет на месте. Его переименовали, переместили или удалили."};
    case EEXIST:
      return {"the name is already taken. Rename the other item first.",
              "имя уже занято. Сначала переименуйте другой объект."};
    case EACCES:
    case EPERM:
      return {"permission denied. Check the permissions of the file and of its folder.",
              "нет прав доступа. Проверьте права на файл и на его папку."};
    case EROFS:
      return {"the disk is read-only. Make it writable and try again.",
              "диск доступен только для чтения. Разрешите запись и повторите попытку."};
    case ENOSPC:
      return {"the disk is full. Free some space and try again.",
              "на диске нет места. Освободите место и повторите попытку."};
    case EDQUOT:
      return {"your disk quota is used up. Free some space and try again.",
              "дисковая квота исчерпана. Освободите место и повторите попытку."};
    case EFBIG:
      return {"it would be larger than this disk or the limit for files allows.",
              "файл был бы больше, чем допускает диск или ограничение на размер файлов."};
    case EXDEV:
      return {"the new place is on another disk. Move it by hand.",
              "новое место находится на другом диске. Переместите вручную."};
    case EISDIR:
      return {"it is a folder.", "это папка."};
    case ENOTDIR:
      return {"part of its path is not a folder.", "часть пути не является папкой."};
    case EOPNOTSUPP:
      return {"it is not an ordinary file.", "это не обычный файл."};
    case ENAMETOOLONG:
      return {"the name is too long for this disk. Choose a shorter one.",
              "имя слишком длинное для этого диска. Выберите имя короче."};
    case ESTALE:
      return {"it was changed meanwhile. Rename it again to convert it as it is now.",
              "файл был изменён. Переименуйте его ещё раз, чтобы конвертировать новую версию."};
    case EIO:
      return {"the disk reports a fault. Save your files elsewhere and check it.",
              "диск сообщает о сбое. Сохраните файлы в другом месте и проверьте его."};
    default:
      return {nullptr, nullptr};
  }
}

}  // namespace

PlatformError posixError(int errnoValue, FileOperation operation, const FileURL& url) {
  const bool isRussian = currentLanguageCode() == "ru";
  const auto inLanguage = [isRussian](Text text) {
    return isRussian ? text.russian : text.english;
  };

  std::string description = inLanguage(introduction(operation));
  description += validUTF8(url.lastPathComponent()) + "': ";
  if (const char* sentence = inLanguage(explanation(errnoValue))) {
    description += sentence;
  } else {
    const char* const reason = strerrordesc_np(errnoValue);
    description += inLanguage({"system error ", "системная ошибка "});
    description += std::to_string(errnoValue);
    if (reason != nullptr) description += std::string(" (") + reason + ")";
    description += ".";
  }
  return PlatformError(errnoValue, std::move(description));
}

}  // namespace kestrivane
