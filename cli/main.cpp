// kestrivane-watch: the headless companion. See `helpText` for what it does.
#include <cstdlib>
#include <iostream>
#include <string>
#include <string_view>
#include <vector>

#include "cli/CommandLine.hpp"
#include "cli/LineWriter.hpp"
#include "cli/SavedFoldersCommand.hpp"
#include "cli/WatchProgram.hpp"
#include "platform/PlatformError.hpp"
#include "platform/Unicode.hpp"
#include "platform/linux/system/ProcessMemory.hpp"

namespace {

using namespace kestrivane;

constexpr int usageError = 2;

int watchSaved() try { return watchSavedFolders(); } catch (const PlatformError& error) {
  std::cerr << "kestrivane-watch: " << printable(error.localizedDescription()) << '\n';
  return usageError;
}

}  // namespace

int main(int argc, char** argv) {
  returnLargeBlocksWhenFreed();
  const std::vector<std::string_view> arguments(argv + 1, argv + argc);
  const CommandLine line = CommandLine::parse(arguments);
  switch (line.action) {
    case CommandLine::Action::showHelp:
      std::cout << helpText();
      return EXIT_SUCCESS;
    case CommandLine::Action::showVersion:
      std::cout << "kestrivane-watch " KESTRIVANE_VERSION "\n";
      return EXIT_SUCCESS;
    case CommandLine::Action::refuse:
      std::cerr << "kestrivane-watch: " << printable(line.complaint) << '\n' << helpText();
      return usageError;
    case CommandLine::Action::list:
    case CommandLine::Action::remove:
      return runSavedFoldersCommand(line);
    case CommandLine::Action::watchSaved:
      return watchSaved();
    case CommandLine::Action::add:
    case CommandLine::Action::watch:
      break;
  }

  const std::vector<FolderProblem> problems = findFolderProblems(line.folders);
  for (const FolderProblem& problem : problems) {
    std::cerr << "kestrivane-watch: " << printable(problem.folder) << ": " << problem.description
              << '\n';
  }
  if (!problems.empty()) return usageError;
  return line.action == CommandLine::Action::add ? runSavedFoldersCommand(line)
                                                 : watchFolders(line.folders);
}
