#include "cli/CommandLine.hpp"

#include <algorithm>
#include <filesystem>
#include <optional>
#include <utility>

#include "state/L10n.hpp"

namespace kestrivane {
namespace {

using Action = CommandLine::Action;

std::optional<Action> actionNamed(std::string_view option) {
  if (option == "--add") return Action::add;
  if (option == "--remove") return Action::remove;
  if (option == "--list") return Action::list;
  return std::nullopt;
}

CommandLine refusal(std::string complaint) {
  return {.action = Action::refuse, .folders = {}, .complaint = std::move(complaint)};
}

}  // namespace

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
    } else if (const auto action = actionNamed(argument); !action) {
      return refusal(
          L10n::choose("There is no option ", "Нет такого параметра: ").append(argument) + ".");
    } else if (line.action != Action::watchSaved && line.action != *action) {
      return refusal(L10n::choose("Take one of --add, --remove and --list at a time.",
                                  "Укажите что-то одно: --add, --remove или --list."));
    } else {
      line.action = *action;
    }
  }
  if (line.action == Action::watchSaved && !line.folders.empty()) line.action = Action::watch;
  const bool needsFolders = line.action == Action::add || line.action == Action::remove;
  if (needsFolders && line.folders.empty()) {
    return refusal(L10n::choose("Name at least one folder.", "Укажите хотя бы одну папку."));
  }
  if (line.action == Action::list && !line.folders.empty()) {
    return refusal(L10n::choose("--list takes no folder.", "--list не принимает папок."));
  }
  return line;
}

std::string helpText() {
  return L10n::choose(
      R"(Usage: kestrivane-watch [FOLDER...]
       kestrivane-watch --add FOLDER... | --remove FOLDER... | --list

Watches the folders and everything below them. When a file is renamed so that its
extension changes (a.png to a.jpg), its content is converted to what the new name
says, in place. If that fails, the file gets its old name back and a line tells why.

Pictures: jpg, jpeg, png, heic, tiff, gif, bmp, webp, ico.
Videos: mp4, mov, m4v, webm. Sound: mp3 from these and from mkv, avi and flv.

Without a FOLDER the saved ones are watched, and changes of the list take effect at
once. Only one program of a user does that at a time. A FOLDER that is named is
watched without being saved.

Prints "watching FOLDER" once a folder is watched, then a line for each file that
was converted or could not be. The desktop's notification service, if there is one,
shows the same. Ctrl-C ends the program once the conversions under way are done; a
second Ctrl-C ends it at once.

  --add        saves the folders; prints "added FOLDER" for each new one
  --remove     removes the folders from the saved ones; prints "removed FOLDER"
  --list       prints the saved folders, and which of them cannot be watched now
  -h, --help   shows this text
  --version    shows the version

Exit status: 0 after Ctrl-C or SIGTERM, 1 when watching could not go on, 2 when a
folder cannot be watched, added or removed, when another program watches the saved
folders, or when the command line is wrong.
)",
      R"(Использование: kestrivane-watch [ПАПКА...]
               kestrivane-watch --add ПАПКА... | --remove ПАПКА... | --list

Следит за папками и всем, что в них лежит. Если файл переименован так, что меняется
его расширение (a.png в a.jpg), содержимое преобразуется на месте в формат, который
назван новым именем. Если это не удалось, файл получает прежнее имя, а причина
выводится отдельной строкой.

Изображения: jpg, jpeg, png, heic, tiff, gif, bmp, webp, ico.
Видео: mp4, mov, m4v, webm. Звук: mp3 из них, а также из mkv, avi и flv.

Без имени папки программа следит за сохранёнными папками; изменения списка действуют
сразу. Так работает только одна программа пользователя одновременно. Названная ПАПКА
не сохраняется.

Когда наблюдение за папкой началось, выводится "watching ПАПКА", затем по строке на
каждый файл, который преобразован или не смог быть преобразован. То же показывает
служба уведомлений рабочего стола, если она есть. Ctrl-C завершает программу после
начатых преобразований; второй Ctrl-C завершает её сразу.

  --add        сохранить папки; выводит "added ПАПКА" для каждой новой
  --remove     убрать папки из сохранённых; выводит "removed ПАПКА"
  --list       показать сохранённые папки и те из них, за которыми сейчас нельзя следить
  -h, --help   показать эту справку
  --version    показать версию

Код завершения: 0 после Ctrl-C или SIGTERM, 1 если наблюдение не может продолжаться,
2 если за папкой нельзя следить, её нельзя добавить или убрать, если за сохранёнными
папками следит другая программа или если в командной строке ошибка.
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
