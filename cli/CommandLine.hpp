// The command line of `kestrivane-watch`. Thread-safety and ownership: plain values.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace kestrivane {

struct CommandLine {
  enum class Action { watch, watchSaved, add, remove, list, showHelp, showVersion, refuse };

  Action action = Action::watchSaved;
  /// As they were typed; not empty when the action is `watch`, `add` or `remove`.
  std::vector<std::string> folders;
  std::string complaint;  ///< why the command line is refused

  /// `arguments` are those after the program's name.
  static CommandLine parse(std::span<const std::string_view> arguments);
};

/// What `--help` prints.
std::string helpText();

/// The absolute form of a folder that was typed: relative ones are taken from the working folder,
/// slashes at the end and "." fall away, and where there is a ".." the links before it are
/// resolved. Throws `std::filesystem::filesystem_error` if that cannot be done.
std::string absoluteFolderPath(const std::string& typed);

}  // namespace kestrivane
