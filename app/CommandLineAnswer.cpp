#include "app/CommandLineAnswer.hpp"

#include "state/L10n.hpp"

namespace kestrivane {
namespace {

std::string helpText() {
  return L10n::choose(
      R"(Usage: kestrivane [FOLDER...]

Sits in the tray and watches folders. When a file in one of them is renamed so that
its extension changes (a.png to a.jpg), its content is converted to what the new name
says, in place.

The folders that are named are added to those that are watched at every start. If the
program runs already it takes them over and opens its window.

  -h, --help   shows this text
  --version    shows the version

kestrivane-watch does the same without a desktop.
)",
      R"(Использование: kestrivane [ПАПКА...]

Следит за папками и показывает значок в панели. Если файл в одной из них переименован
так, что меняется его расширение (a.png в a.jpg), содержимое преобразуется на месте в
формат, который назван новым именем.

Названные папки добавляются к тем, за которыми программа следит при каждом запуске.
Если программа уже запущена, она принимает их и открывает своё окно.

  -h, --help   показать эту справку
  --version    показать версию

kestrivane-watch делает то же без рабочего стола.
)");
}

}  // namespace

std::optional<std::string> commandLineAnswer(std::span<const std::string_view> arguments,
                                             std::string_view version) {
  for (const std::string_view argument : arguments) {
    if (argument == "--") break;
    if (argument == "--help" || argument == "-h") return helpText();
    if (argument == "--version") return "kestrivane " + std::string(version) + "\n";
  }
  return std::nullopt;
}

}  // namespace kestrivane
