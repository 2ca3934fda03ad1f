// The log on standard error and in a journal.

#include <array>
#include <cstdint>
#include <cstring>
#include <optional>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "platform/linux/FileDescriptor.hpp"
#include "platform/linux/system/LinuxLog.hpp"
#include "tests/platform/system/ChildProcess.hpp"
#include "tests/platform/system/EnvironmentGuard.hpp"
#include "tests/platform/system/MountNamespace.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

void logAll(UnifiedLog& log) {
  const auto logger = log.makeLogger("com.kestrivane", "FolderMonitor");
  logger->log(LogLevel::debug, "ignored");
  logger->log(LogLevel::info, "Старт");
  logger->log(LogLevel::error, "a\nb\x1b[31m\xff\u009b");
}

/// What `work` writes to standard error, in a process without a journal.
std::optional<std::string> standardErrorOf(void (*work)(UnifiedLog&)) {
  const TemporaryFolder folder;
  const std::string report = reportOfChild([&]() -> std::string {
    if (access("/run/systemd/journal/socket", F_OK) == 0 &&
        !(enterMountNamespace() && mountMemory("/run", "size=64k")))
      return "no mount";
    if (freopen(folder.url("stderr").path().c_str(), "a", stderr) == nullptr) return "no file";
    work(*LinuxLog::create());
    return "done";
  });
  if (report != "done") return std::nullopt;
  return contentOf(folder.url("stderr"));
}

TEST(StandardErrorLog, HasOneLineForEachMessageAndNoControlCharacters) {
  const EnvironmentGuard environment("KESTRIVANE_DEBUG", std::nullopt);
  const auto output = standardErrorOf(logAll);
  if (!output) GTEST_SKIP() << "the journal is here and this user may not hide it";
  EXPECT_EQ(*output,
            "info FolderMonitor: Старт\n"
            "error FolderMonitor: a\\nb\\x1b[31m\uFFFD\\x9b\n");
}

TEST(StandardErrorLog, HasDebugMessagesWhenAskedTo) {
  const EnvironmentGuard environment("KESTRIVANE_DEBUG", "1");
  const auto output = standardErrorOf(logAll);
  if (!output) GTEST_SKIP() << "the journal is here and this user may not hide it";
  EXPECT_TRUE(output->starts_with("debug FolderMonitor: ignored\n")) << *output;
}

TEST(StandardErrorLog, KeepsTheLinesOfManyThreadsApart) {
  const auto output = standardErrorOf([](UnifiedLog& log) {
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&log] {
        const auto logger = log.makeLogger("com.kestrivane", "Test");
        for (int n = 0; n < 200; ++n)
          logger->log(LogLevel::info, std::string(100, 'x'));
      });
    }
    for (std::thread& thread : threads)
      thread.join();
  });
  if (!output) GTEST_SKIP() << "the journal is here and this user may not hide it";
  const std::string line = "info Test: " + std::string(100, 'x') + "\n";
  ASSERT_EQ(output->size(), 800 * line.size());
  for (std::size_t i = 0; i < 800; ++i)
    ASSERT_EQ(output->substr(i * line.size(), line.size()), line);
}

/// The fields of one message in the journal's native protocol: "NAME=value\n", or
/// "NAME\n", the length in eight bytes, and the value.
std::set<std::string> fieldsOf(std::string_view datagram) {
  std::set<std::string> fields;
  while (!datagram.empty()) {
    const std::size_t lineEnd = datagram.find('\n');
    std::string field(datagram.substr(0, lineEnd));
    datagram.remove_prefix(lineEnd + 1);
    if (field.find('=') == std::string::npos) {
      std::uint64_t length = 0;
      std::memcpy(&length, datagram.data(), sizeof length);
      field += "=" + std::string(datagram.substr(sizeof length, length));
      datagram.remove_prefix(sizeof length + length + 1);
    }
    fields.insert(field);
  }
  return fields;
}

TEST(JournalLog, SendsEachMessageAsOneRecordWithItsFields) {
  const EnvironmentGuard environment("KESTRIVANE_DEBUG", std::nullopt);
  const std::string report = reportOfChild([]() -> std::string {
    if (!enterMountNamespace() || !mountMemory("/run", "size=64k")) return "no mount";
    mkdir("/run/systemd", 0755);
    mkdir("/run/systemd/journal", 0755);
    const FileDescriptor journal(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "/run/systemd/journal/socket"};
    if (bind(journal.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
      return "no socket";
    logAll(*LinuxLog::create());

    std::string records;
    std::array<char, 4096> buffer{};
    for (ssize_t count = 0; (count = recv(journal.get(), buffer.data(), buffer.size(), 0)) > 0;) {
      for (const std::string& field : fieldsOf({buffer.data(), static_cast<std::size_t>(count)}))
        records += field + ";";
      records += "|";
    }
    return records;
  });
  if (report == "no mount") GTEST_SKIP() << "this user may not mount";
  EXPECT_EQ(report,
            "KESTRIVANE_CATEGORY=FolderMonitor;KESTRIVANE_SUBSYSTEM=com.kestrivane;MESSAGE=Старт;"
            "PRIORITY=6;SYSLOG_IDENTIFIER=kestrivane;|"
            "KESTRIVANE_CATEGORY=FolderMonitor;KESTRIVANE_SUBSYSTEM=com.kestrivane;"
            "MESSAGE=a\nb\x1b[31m\uFFFD\u009b;PRIORITY=3;SYSLOG_IDENTIFIER=kestrivane;|");
}

TEST(JournalLog, FallsBackToStandardErrorWhenTheJournalHasGone) {
  const TemporaryFolder folder;
  const std::string report = reportOfChild([&]() -> std::string {
    if (!enterMountNamespace() || !mountMemory("/run", "size=64k")) return "no mount";
    mkdir("/run/systemd", 0755);
    mkdir("/run/systemd/journal", 0755);
    FileDescriptor journal(socket(AF_UNIX, SOCK_DGRAM, 0));
    sockaddr_un address{.sun_family = AF_UNIX, .sun_path = "/run/systemd/journal/socket"};
    if (bind(journal.get(), reinterpret_cast<const sockaddr*>(&address), sizeof address) != 0)
      return "no socket";
    const auto log = LinuxLog::create();
    journal.reset();
    if (freopen(folder.url("stderr").path().c_str(), "a", stderr) == nullptr) return "no file";
    log->makeLogger("com.kestrivane", "Test")->log(LogLevel::error, "lost?");
    return contentOf(folder.url("stderr"));
  });
  if (report == "no mount") GTEST_SKIP() << "this user may not mount";
  EXPECT_EQ(report, "error Test: lost?\n");
}

}  // namespace
}  // namespace kestrivane::test
