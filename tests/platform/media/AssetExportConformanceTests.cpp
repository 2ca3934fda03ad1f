// What every `AssetExporter` does, the one of the unit tests as well as the real one.
#include <functional>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "platform/PlatformError.hpp"
#include "tests/platform/media/MediaTesting.hpp"
#include "tests/support/FakeAssetExporter.hpp"

namespace kestrivane::mediaTesting {
namespace {

/// An exporter and files for it.
class Library {
 public:
  Library() = default;
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
  virtual ~Library() = default;

  virtual const AssetExporter& exporter() const = 0;
  virtual FileURL url(const std::string& name) const = 0;
  virtual void write(const FileURL& url, const std::string& content) = 0;
  virtual std::string read(const FileURL& url) const = 0;
  virtual std::string film() const = 0;
  /// From now on no export succeeds.
  virtual void breakExports() = 0;

  test::VirtualLoop loop;
};

class FakeLibrary final : public Library {
 public:
  const AssetExporter& exporter() const override { return exporter_; }
  FileURL url(const std::string& name) const override { return FileURL("/tmp/" + name); }
  void write(const FileURL& url, const std::string& content) override {
    files_.writeFile(url.path(), content);
  }
  std::string read(const FileURL& url) const override {
    return files_.content(url.path()).value_or("(none)");
  }
  std::string film() const override { return "film of a cat"; }
  void breakExports() override { exporter_.exportFailure = "No space left on device"; }

 private:
  test::InMemoryFileSystem files_;
  test::FakeAssetExporter exporter_{files_};
};

class LinuxLibrary final : public Library {
 public:
  const AssetExporter& exporter() const override { return exporter_; }
  FileURL url(const std::string& name) const override { return folder_.url(prefix_ + name); }
  void write(const FileURL& url, const std::string& content) override {
    folder_.write(url.lastPathComponent(), content);
  }
  std::string read(const FileURL& url) const override { return test::contentOf(url); }
  std::string film() const override { return test::contentOf(sample("silent.mp4")); }
  void breakExports() override { prefix_ = "no such folder/"; }

 private:
  test::TemporaryFolder folder_;
  LinuxAssetExporter exporter_{loop, loop, openMedia};
  std::string prefix_;
};

using MakeLibrary = std::function<std::unique_ptr<Library>()>;

class AssetExportConformance : public testing::TestWithParam<MakeLibrary> {
 protected:
  using Session = std::unique_ptr<AssetExportSession>;

  Session session(const FileURL& url) {
    return test::runTask(library->loop,
                         library->exporter().createSession(url, ExportPreset::highestQuality));
  }

  const std::unique_ptr<Library> library = GetParam()();
};

TEST_P(AssetExportConformance, HasNoSessionForWhatIsNoFilm) {
  const FileURL text = library->url("text.mov");
  library->write(text, "Dear diary");
  EXPECT_EQ(session(text), nullptr);
  EXPECT_EQ(session(library->url("missing.mov")), nullptr);
}

TEST_P(AssetExportConformance, WritesAFileOfEveryTypeAndLeavesTheSource) {
  const FileURL film = library->url("film");
  library->write(film, library->film());
  std::string former;
  for (const MediaFileType fileType :
       {MediaFileType::mpeg4, MediaFileType::quickTimeMovie, MediaFileType::appleM4V}) {
    const FileURL result = library->url("result" + std::to_string(static_cast<int>(fileType)));
    const Session exporting = session(film);
    ASSERT_NE(exporting, nullptr);
    test::runTask(library->loop, exporting->exportAsset(result, fileType));
    EXPECT_NE(library->read(result), "(none)");
    EXPECT_NE(library->read(result), former) << "another type is another file";
    former = library->read(result);
    EXPECT_EQ(library->read(film), library->film());
  }
}

TEST_P(AssetExportConformance, AFailedExportDescribesItself) {
  const FileURL film = library->url("film");
  library->write(film, library->film());
  const Session exporting = session(film);
  ASSERT_NE(exporting, nullptr);
  library->breakExports();
  const FileURL result = library->url("result");
  try {
    test::runTask(library->loop, exporting->exportAsset(result, MediaFileType::mpeg4));
    FAIL() << "no failure";
  } catch (const PlatformError& error) {
    EXPECT_FALSE(error.localizedDescription().empty());
  }
  EXPECT_EQ(library->read(film), library->film());
}

INSTANTIATE_TEST_SUITE_P(
    Libraries, AssetExportConformance,
    testing::Values([] { return std::unique_ptr<Library>(std::make_unique<FakeLibrary>()); },
                    [] { return std::unique_ptr<Library>(std::make_unique<LinuxLibrary>()); }),
    [](const auto& test) { return test.index == 0 ? "Fake" : "Linux"; });

}  // namespace
}  // namespace kestrivane::mediaTesting
