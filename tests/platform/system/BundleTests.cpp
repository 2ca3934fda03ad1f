// What every `Bundle` does, and where the real one looks.

#include <filesystem>
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/system/LinuxBundle.hpp"
#include "tests/support/FakeBundle.hpp"
#include "tests/support/TemporaryFolder.hpp"

namespace kestrivane::test {
namespace {

/// A bundle with the auxiliary executable "tool" and the resource "icon.svg".
class Installation {
 public:
  Installation() = default;
  Installation(const Installation&) = delete;
  Installation& operator=(const Installation&) = delete;
  virtual ~Installation() = default;

  virtual const Bundle& bundle() const = 0;
};

class FakeInstallation final : public Installation {
 public:
  FakeInstallation() {
    bundle_.auxiliaryExecutables.emplace("tool", FileURL("/app/tool"));
    bundle_.resources.emplace("icon.svg", FileURL("/app/icon.svg"));
  }
  const Bundle& bundle() const override { return bundle_; }

 private:
  FakeBundle bundle_;
};

class LinuxInstallation final : public Installation {
 public:
  LinuxInstallation() {
    for (const std::string name : {"bin", "libexec/kestrivane", "share/kestrivane"})
      std::filesystem::create_directories(folder_.path() + "/" + name);
    folder_.write("libexec/kestrivane/tool", "");
    folder_.write("share/kestrivane/icon.svg", "");
  }
  const Bundle& bundle() const override { return bundle_; }
  const TemporaryFolder& folder() const { return folder_; }

 private:
  TemporaryFolder folder_;
  LinuxBundle bundle_{folder_.url("bin/program")};
};

struct BundleFactory {
  std::string name;
  std::function<std::unique_ptr<Installation>()> make;
};

class BundleConformance : public testing::TestWithParam<BundleFactory> {
 protected:
  std::unique_ptr<Installation> installation = GetParam().make();
  const Bundle& bundle = installation->bundle();
};

TEST_P(BundleConformance, FindsWhatIsThereByItsWholeName) {
  ASSERT_TRUE(bundle.auxiliaryExecutable("tool"));
  EXPECT_EQ(bundle.auxiliaryExecutable("tool")->lastPathComponent(), "tool");
  ASSERT_TRUE(bundle.resource("icon.svg"));
  EXPECT_EQ(bundle.resource("icon.svg")->lastPathComponent(), "icon.svg");
}

TEST_P(BundleConformance, FindsNothingUnderOtherNames) {
  EXPECT_FALSE(bundle.auxiliaryExecutable("too"));
  EXPECT_FALSE(bundle.auxiliaryExecutable("icon.svg"));
  EXPECT_FALSE(bundle.resource("icon"));
  EXPECT_FALSE(bundle.resource("tool"));
}

INSTANTIATE_TEST_SUITE_P(
    All, BundleConformance,
    testing::Values(BundleFactory{"Fake", [] { return std::make_unique<FakeInstallation>(); }},
                    BundleFactory{"Linux", [] { return std::make_unique<LinuxInstallation>(); }}),
    [](const auto& parameter) { return parameter.param.name; });

TEST(LinuxBundle, LooksBesideTheFolderOfTheProgram) {
  const LinuxInstallation installation;
  EXPECT_EQ(installation.bundle().auxiliaryExecutable("tool"),
            installation.folder().url("libexec/kestrivane/tool"));
  EXPECT_EQ(installation.bundle().resource("icon.svg"),
            installation.folder().url("share/kestrivane/icon.svg"));
}

TEST(LinuxBundle, LooksAnewAtEveryCallAndBehindLinks) {
  const LinuxInstallation installation;
  const std::string link = installation.folder().path() + "/libexec/kestrivane/linked";
  EXPECT_FALSE(installation.bundle().auxiliaryExecutable("linked"));
  std::filesystem::create_symlink("tool", link);
  EXPECT_TRUE(installation.bundle().auxiliaryExecutable("linked"));
  std::filesystem::remove(installation.folder().path() + "/libexec/kestrivane/tool");
  EXPECT_FALSE(installation.bundle().auxiliaryExecutable("linked"));
}

TEST(LinuxBundle, FindsTheConvertingToolInTheBuildTree) {
  const auto tool = LinuxBundle::ofThisProgram().auxiliaryExecutable("ffmpeg");
  ASSERT_TRUE(tool);
  EXPECT_EQ(access(tool->path().c_str(), X_OK), 0);
}

}  // namespace
}  // namespace kestrivane::test
