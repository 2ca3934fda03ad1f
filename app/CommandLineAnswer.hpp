// What the application answers to on its command line without starting: `--help` and `--version`.
//
// Thread-safety: a pure function but for the language of the moment. Ownership: none.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

namespace kestrivane {

/// The text to print, with its last line feed, instead of starting; nothing for a command line that
/// starts the program. `arguments` are those after the program's name; what follows "--" are
/// folders.
std::optional<std::string> commandLineAnswer(std::span<const std::string_view> arguments,
                                             std::string_view version);

}  // namespace kestrivane
