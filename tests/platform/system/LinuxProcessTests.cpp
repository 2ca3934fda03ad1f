// What a child process gets from this one, and what is left of it.

#include <array>
#include <cerrno>
#include <chrono>
#include <csignal>
#include <filesystem>
#include <iterator>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/InheritedState.hpp"
#include "platform/linux/system/LinuxProcess.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

std::size_t openDescriptors() {
  const std::filesystem::directory_iterator descriptors("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(descriptors), end(descriptors)));
}

sigset_t currentMask() {
  sigset_t mask;
  pthread_sigmask(SIG_SETMASK, nullptr, &mask);
  return mask;
}

/// Changes the mask of the thread for as long as it lives.
class BlockedSignal {
 public:
  explicit BlockedSignal(int signal) {
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, signal);
    pthread_sigmask(SIG_BLOCK, &set, &former_);
  }
  BlockedSignal(const BlockedSignal&) = delete;
  BlockedSignal& operator=(const BlockedSignal&) = delete;
  ~BlockedSignal() { pthread_sigmask(SIG_SETMASK, &former_, nullptr); }

 private:
  sigset_t former_;
};

class LinuxProcessTest : public testing::Test {
 protected:
  /// Runs a shell with `script`; "$1" is the path of the report.
  int runShell(const std::string& script) {
    return process.run(FileURL("/bin/sh"), {"-c", script, "sh", report.path()});
  }

  std::string errorOf(const FileURL& program) {
    try {
      process.run(program, {});
    } catch (const PlatformError& error) {
      return error.localizedDescription();
    }
    return "no error";
  }

  FileURL writeProgram(const std::string& content, std::filesystem::perms permissions) {
    FileURL program = folder.write("program", content);
    std::filesystem::permissions(program.path(), permissions);
    return program;
  }

  TemporaryFolder folder;
  FileURL report = folder.url("report");
  LinuxProcess process;
};

TEST_F(LinuxProcessTest, DescribesWhatCannotBeStartedAsTheCLibraryDoes) {
  using std::filesystem::perms;
  EXPECT_EQ(errorOf(folder.url("nothing")), "No such file or directory");
  EXPECT_EQ(errorOf(FileURL(folder.path())), "Permission denied");
  EXPECT_EQ(errorOf(writeProgram("#!/bin/sh\n", perms::owner_read)), "Permission denied");
  EXPECT_EQ(errorOf(writeProgram("#!/no/such/shell\n", perms::owner_all)),
            "No such file or directory");
  EXPECT_EQ(errorOf(writeProgram("\x7f"
                                 "ELF",
                                 perms::owner_all)),
            "Exec format error");
}

TEST_F(LinuxProcessTest, AProgramThatWritesTenMegabytesOfDiagnosticsIsNotHeldUp) {
  EXPECT_EQ(runShell("i=0; while [ $i -lt 2560 ]; do printf %4096d $i >&2; i=$((i+1)); done;"
                     "echo $i > \"$1\"; exit 7"),
            7);
  EXPECT_EQ(contentOf(report), "2560\n");
}

TEST_F(LinuxProcessTest, NeitherIsTheConvertingTool) {
  // Five megabytes of tracing, where a pipe holds 64 kilobytes.
  EXPECT_EQ(process.run(FileURL("/usr/bin/ffmpeg"),
                        {"-v", "trace", "-debug_ts", "-f", "lavfi", "-i",
                         "testsrc=size=16x16:duration=200", "-f", "null", "-"}),
            0);
}

TEST_F(LinuxProcessTest, AChildGetsNoDescriptorButTheStandardStreams) {
  const FileDescriptor passedOn(open("/dev/null", O_RDONLY));  // not closed by exec
  ASSERT_TRUE(passedOn);
  EXPECT_EQ(runShell("exec > \"$1\"; exec ls -m /proc/self/fd"), 0);
  EXPECT_EQ(contentOf(report), "0, 1, 2, 3\n") << "the last one is that of the listing itself";
}

TEST_F(LinuxProcessTest, AChildInheritsInputAndOutputAndGetsAPipeForErrors) {
  const auto fileAt = [](const std::string& descriptor) {
    return std::filesystem::read_symlink("/proc/self/fd/" + descriptor).native();
  };
  EXPECT_EQ(
      runShell("cd /proc/$$/fd; input=$(readlink 0); output=$(readlink 1); errors=$(readlink 2);"
               "echo $input $output $errors > \"$1\""),
      0);
  std::istringstream lines(contentOf(report));
  std::string input, output, errors;
  lines >> input >> output >> errors;
  EXPECT_EQ(input, fileAt("0"));
  EXPECT_EQ(output, fileAt("1"));
  EXPECT_TRUE(errors.starts_with("pipe:")) << errors;
  EXPECT_NE(errors, fileAt("2"));
}

TEST_F(LinuxProcessTest, AChildBlocksAndIgnoresNoSignalThoughThisProgramDoes) {
  const BlockedSignal blocked(SIGTERM);
  const auto formerHandler = std::signal(SIGPIPE, SIG_IGN);
  EXPECT_EQ(runShell("exec > \"$1\"; exec grep -E 'Sig(Blk|Ign)' /proc/self/status"), 0);
  std::signal(SIGPIPE, formerHandler);
  EXPECT_EQ(contentOf(report), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n");
}

TEST_F(LinuxProcessTest, AChildIsInAProcessGroupOfItsOwn) {
  EXPECT_EQ(runShell("cut -d' ' -f1,5 /proc/$$/stat > \"$1\""), 0);
  std::istringstream numbers(contentOf(report));
  pid_t child = 0;
  pid_t group = 0;
  numbers >> child >> group;
  EXPECT_NE(child, 0);
  EXPECT_EQ(child, group);
}

TEST_F(LinuxProcessTest, LeavesNothingBehind) {
  const std::size_t descriptors = openDescriptors();
  const BlockedSignal blocked(SIGUSR1);
  const sigset_t mask = currentMask();
  for (int i = 0; i < 50; ++i) {
    EXPECT_EQ(runShell("echo diagnostics >&2; exit 3"), 3);
    EXPECT_EQ(errorOf(folder.url("nothing")), "No such file or directory");
  }
  EXPECT_EQ(openDescriptors(), descriptors);
  const sigset_t maskAfterwards = currentMask();
  for (int signal = 1; signal <= SIGRTMAX; ++signal)
    EXPECT_EQ(sigismember(&mask, signal), sigismember(&maskAfterwards, signal)) << signal;
  EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1) << "no child is left";
  EXPECT_EQ(errno, ECHILD);
}

TEST_F(LinuxProcessTest, IsAnErrorWhereThereAreNoDescriptorsLeft) {
  EXPECT_EQ(reportOfChild([this] {
              // UBSan looks at each type once, and opens a pipe for that.
              errorOf(FileURL("/nonexistent"));
              while (open("/dev/null", O_RDONLY | O_CLOEXEC) >= 0) {
              }
              return errorOf(FileURL("/bin/true"));
            }),
            "Too many open files");
}

TEST_F(LinuxProcessTest, LeavesTheOtherChildrenOfThisProgramAlone) {
  const pid_t other = fork();
  if (other == 0) _exit(9);
  EXPECT_EQ(runShell("exit 4"), 4);
  int status = 0;
  EXPECT_EQ(waitpid(other, &status, 0), other);
  EXPECT_EQ(WEXITSTATUS(status), 9);
}

TEST_F(LinuxProcessTest, SeveralThreadsMayRunProgramsAtOnce) {
  std::vector<std::thread> threads;
  for (int status = 1; status <= 8; ++status) {
    threads.emplace_back([status] {
      LinuxProcess own;
      for (int i = 0; i < 10; ++i)
        EXPECT_EQ(own.run(FileURL("/bin/sh"), {"-c", "exit " + std::to_string(status)}), status);
    });
  }
  for (std::thread& thread : threads)
    thread.join();
}

/// A program that runs another one and is killed meanwhile. Orphans become children of the test.
class OrphanTest : public LinuxProcessTest {
 protected:
  void SetUp() override { ASSERT_EQ(prctl(PR_SET_CHILD_SUBREAPER, 1), 0); }
  void TearDown() override { prctl(PR_SET_CHILD_SUBREAPER, 0); }

  pid_t waitForReportedChild() const {
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (std::chrono::steady_clock::now() < deadline) {
      const std::string content = contentOf(report);
      if (content.ends_with('\n')) return std::stoi(content);
      std::this_thread::yield();
    }
    return -1;
  }
};

TEST_F(OrphanTest, AChildIsKilledWhenTheProgramIsKilled) {
  const pid_t program = fork();
  if (program == 0) {
    runShell("echo $$ > \"$1\"; exec sleep 1000");
    _exit(0);
  }
  const pid_t child = waitForReportedChild();
  ASSERT_GT(child, 0);
  kill(program, SIGKILL);
  EXPECT_EQ(waitpid(program, nullptr, 0), program);
  int status = 0;
  EXPECT_EQ(waitpid(child, &status, 0), child);
  EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL) << status;
}

TEST(InheritedState, IsReplacedByWhatTheProgramNeeds) {
  EXPECT_EQ(reportOfChild([] {
              std::array<int, 2> typed{};
              if (pipe(typed.data()) != 0 || write(typed[1], "y", 1) != 1)
                return std::string("no pipe");
              dup2(typed[0], STDIN_FILENO);
              close(STDOUT_FILENO);
              std::signal(SIGCHLD, SIG_IGN);
              replaceInheritedState();

              char character = 0;
              std::string result = std::to_string(read(STDIN_FILENO, &character, 1)) + " bytes";
              result += fcntl(STDOUT_FILENO, F_GETFD) == 0 ? ", output" : ", no output";
              LinuxProcess process;
              result += ", status " +
                        std::to_string(process.run(FileURL("/bin/sh"), {"-c", "read x; exit $?"}));
              return result;
            }),
            "0 bytes, output, status 1");
}

}  // namespace
}  // namespace kestrivane::test
