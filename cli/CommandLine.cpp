#include "cli/CommandLine.hpp"

#include <algorithm>
#include <filesystem>

#include "state/L10n.hpp"

namespace kestrivane {

CommandLine CommandLine::parse(std::span<const std::string_view> arguments) {
  CommandLine line;
  bool optionsMayFollow = true;
  for (const std::string_view argument : arguments) {
    if (!optionsMayFollow || !argument.starts_with('-')) {
      line.folders.emplace_back(argument);
    } else if (argument == "--") {
      optionsMayFollow = false;
    } else if (argument == "--help" || argument == "-h") {
      return {.action = Action::showHelp, .folders = {}, .complaint = {}};
    } else if (argument == "--version") {
      return {.action = Action::showVersion, .folders = {}, .complaint = {}};
    } else {
      return {.action = Action::refuse,
              .folders = {},
              .complaint = L10n::choose("There is no option ", "Нет такого параметра: ")
                               .append(argument)
                               .append(".")};
    }
  }
  if (line.folders.empty()) {
    line.action = Action::refuse;
    line.complaint = L10n::choose("Name at least one folder to watch.",
                                  "Укажите хотя бы одну папку для наблюдения.");
  }
  return line;
}

std::string helpText() {
  return L10n::choose(
      R"(Usage: kestrivane-watch FOLDER...

Watches the folders and everything below them. When a file is renamed so that its
extension changes (a.png to a.jpg), its content is converted to what the new name
says, in place. If that fails, the file gets its old name back and a line tells why.

Pictures: jpg, jpeg, png, heic, tiff, gif, bmp, webp, ico.

Prints "watching FOLDER" once a folder is watched, then a line for each file that
was converted or could not be. The desktop's notification service, if there is one,
shows the same. Ctrl-C ends the program once the conversions under way are done; a
second Ctrl-C ends it at once.

  -h, --help   shows this text
  --version    shows the version

Exit status: 0 after Ctrl-C or SIGTERM, 1 when watching could not go on, 2 when a
folder cannot be watched or the command line is wrong.
)",
      R"(Использование: kestrivane-watch ПАПКА...

Следит за папками и всем, что в них лежит. Если файл переименован так, что меняется
его расширение (a.png в a.jpg), содержимое преобразуется на месте в формат, который
назван новым именем. Если это не удалось, файл получает прежнее имя, а причина
выводится отдельной строкой.

Изображения: jpg, jpeg, png, heic, tiff, gif, bmp, webp, ico.

Когда наблюдение за папкой началось, выводится "watching ПАПКА", затем по строке на
каждый файл, который преобразован или не смог быть преобразован. То же показывает
служба уведомлений рабочего стола, если она есть. Ctrl-C завершает программу после
начатых преобразований; второй Ctrl-C завершает её сразу.

  -h, --help   показать эту справку
  --version    показать версию

Код завершения: 0 после Ctrl-C или SIGTERM, 1 если наблюдение не может продолжаться,
2 если за папкой нельзя следить или в командной строке ошибка.
)");
}

std::string absoluteFolderPath(const std::string& typed) {
  std::filesystem::path path = std::filesystem::absolute(typed);
  // "link/.." is the parent of the link's target, which only the file system knows.
  if (std::ranges::find(path, "..") != path.end()) path = std::filesystem::canonical(path);
  std::string text = path.lexically_normal().native();
  while (text.size() > 1 && text.back() == '/')
    text.pop_back();
  return text;
}

}  // namespace kestrivane
