// What every `Process` does, the one of the unit tests as well as the real one.

#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "platform/linux/system/LinuxProcess.hpp"
#include "tests/support/FakeProcess.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

/// A `Process` and programs for it.
class Programs {
 public:
  Programs() = default;
  Programs(const Programs&) = delete;
  Programs& operator=(const Programs&) = delete;
  virtual ~Programs() = default;

  virtual Process& process() = 0;
  virtual FileURL nothing() = 0;
  virtual FileURL noProgram() = 0;
  virtual FileURL exiting(int status) = 0;
  virtual FileURL killed(int signal) = 0;
  /// The arguments of the last run of `exiting`.
  virtual std::vector<std::string> lastArguments() = 0;
};

class FakePrograms final : public Programs {
 public:
  Process& process() override { return process_; }
  FileURL nothing() override { return FileURL("/tmp/nothing"); }
  FileURL noProgram() override { return write("a letter"); }
  FileURL exiting(int status) override { return write("exit " + std::to_string(status)); }
  FileURL killed(int signal) override { return write("killed " + std::to_string(signal)); }
  std::vector<std::string> lastArguments() override { return process_.runs.back().arguments; }

 private:
  FileURL write(std::string content) {
    files_.writeFile("/tmp/program", std::move(content));
    return FileURL("/tmp/program");
  }

  InMemoryFileSystem files_;
  FakeProcess process_{files_};
};

class RealPrograms final : public Programs {
 public:
  Process& process() override { return process_; }
  FileURL nothing() override { return folder_.url("nothing"); }
  FileURL noProgram() override { return write("a letter"); }
  FileURL exiting(int status) override {
    return write("#!/bin/sh\nprintf '%s\\n' \"$@\" > " + arguments().path() + "\nexit " +
                 std::to_string(status) + "\n");
  }
  FileURL killed(int signal) override {
    return write("#!/bin/sh\nkill -" + std::to_string(signal) + " $$\n");
  }
  std::vector<std::string> lastArguments() override {
    std::ifstream file(arguments().path());
    std::vector<std::string> lines;
    for (std::string line; std::getline(file, line);)
      lines.push_back(line);
    return lines;
  }

 private:
  FileURL arguments() const { return folder_.url("arguments"); }
  FileURL write(const std::string& content) {
    FileURL program = folder_.write("program", content);
    std::filesystem::permissions(program.path(), std::filesystem::perms::owner_all);
    return program;
  }

  TemporaryFolder folder_;
  LinuxProcess process_;
};

struct ProcessFactory {
  std::string name;
  std::function<std::unique_ptr<Programs>()> make;
};

class ProcessConformance : public testing::TestWithParam<ProcessFactory> {
 protected:
  int run(const FileURL& program, const std::vector<std::string>& arguments = {}) {
    return programs->process().run(program, arguments);
  }

  int errorOf(const FileURL& program) {
    try {
      run(program);
    } catch (const PlatformError& error) {
      EXPECT_NE(error.localizedDescription(), "");
      return error.code();
    }
    return 0;
  }

  std::unique_ptr<Programs> programs = GetParam().make();
};

TEST_P(ProcessConformance, ReturnsTheExitStatus) {
  EXPECT_EQ(run(programs->exiting(0)), 0);
  EXPECT_EQ(run(programs->exiting(1)), 1);
  EXPECT_EQ(run(programs->exiting(255)), 255);
}

TEST_P(ProcessConformance, AProgramThatWasKilledHasNotSucceeded) {
  EXPECT_EQ(run(programs->killed(9)), 137);
  EXPECT_EQ(run(programs->killed(15)), 143);
}

TEST_P(ProcessConformance, HandsOverTheArgumentsAsTheyStand) {
  const std::vector<std::string> arguments = {"-y", "", "two words", "$HOME *", "\xFF'\"", "кадр"};
  run(programs->exiting(0), arguments);
  EXPECT_EQ(programs->lastArguments(), arguments);
}

TEST_P(ProcessConformance, WhatCannotBeStartedIsAnError) {
  EXPECT_EQ(errorOf(programs->nothing()), ENOENT);
  EXPECT_EQ(errorOf(programs->noProgram()), ENOEXEC);
}

INSTANTIATE_TEST_SUITE_P(
    All, ProcessConformance,
    testing::Values(ProcessFactory{"Fake", [] { return std::make_unique<FakePrograms>(); }},
                    ProcessFactory{"Linux", [] { return std::make_unique<RealPrograms>(); }}),
    [](const auto& parameter) { return parameter.param.name; });

}  // namespace
}  // namespace kestrivane::test
