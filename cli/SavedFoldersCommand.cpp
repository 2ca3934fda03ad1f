#include "cli/SavedFoldersCommand.hpp"

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <string>

#include <unistd.h>

#include "cli/LineWriter.hpp"
#include "cli/SavedFolders.hpp"
#include "platform/PlatformError.hpp"
#include "platform/linux/system/FileUserDefaults.hpp"
#include "platform/linux/system/LinuxLog.hpp"
#include "platform/linux/system/SavedFoldersLock.hpp"
#include "state/L10n.hpp"

namespace kestrivane {
namespace {

class SavedFoldersCommand {
 public:
  int run(const CommandLine& line) {
    if (line.action == CommandLine::Action::list) {
      list();
    } else {
      for (const std::string& folder : line.folders)
        change(line.action, folder);
    }
    return hasFailed_ ? 2 : EXIT_SUCCESS;
  }

 private:
  void list() {
    for (const SavedFolders::Entry& entry : folders_.entries()) {
      if (!entry.path.empty()) output_.writeLine(entry.path);
      if (!entry.problem.empty()) complain(entry.path, entry.problem);
    }
  }

  void change(CommandLine::Action action, const std::string& folder) {
    try {
      const FileURL url(absoluteFolderPath(folder));
      if (action == CommandLine::Action::add) {
        if (folders_.add(url)) output_.writeLine("added " + url.path());
      } else if (folders_.remove(url)) {
        output_.writeLine("removed " + url.path());
      } else {
        fail(folder, L10n::choose("This folder is not in the list.", "Этой папки нет в списке."));
      }
    } catch (const PlatformError& error) {
      fail(folder, error.localizedDescription());
    } catch (const std::filesystem::filesystem_error&) {
      fail(folder, L10n::choose("There is no such folder.", "Такой папки нет."));
    }
  }

  void fail(const std::string& folder, const std::string& problem) {
    hasFailed_ = true;
    complain(folder, problem);
  }

  void complain(const std::string& folder, const std::string& problem) {
    const std::string name = folder.empty() ? std::string() : folder + ": ";
    complaints_.writeLine("kestrivane-watch: " + name + problem);
  }

  LineWriter output_{STDOUT_FILENO};
  LineWriter complaints_{STDERR_FILENO};
  std::unique_ptr<LinuxLog> log_ = LinuxLog::create();
  FileUserDefaults userDefaults_{userDefaultsFile(), *log_};
  SavedFolders folders_{userDefaults_};
  bool hasFailed_ = false;
};

}  // namespace

int runSavedFoldersCommand(const CommandLine& line) {
  return SavedFoldersCommand().run(line);
}

}  // namespace kestrivane
