// The conformance suite of file events over FSEvents, behind which there is a file system in
// memory.
#include "platform/macos/DispatchGroup.hpp"
#include "platform/macos/DispatchQueue.hpp"
#include "platform/macos/MacFileEventService.hpp"
#include "tests/macos/fakes/FakeFSEvents.hpp"
#include "tests/platform/events/FileEventStreamConformance.hpp"

namespace kestrivane::test {
namespace {

class MacWorld final : public FileEventWorld {
 public:
  MacWorld() { system_->files.createDirectory("/w"); }

  std::string root() const override { return "/w"; }
  FileEventService& service() override { return service_; }
  std::shared_ptr<Executor> makeQueue() override {
    return std::make_shared<DispatchQueue>(dispatch_queue_create("test", nullptr), group_);
  }
  void createDirectory(const std::string& path) override { system_->files.createDirectory(path); }
  void writeFile(const std::string& path) override { system_->files.writeFile(path, "x"); }
  void rename(const std::string& from, const std::string& to) override {
    system_->files.rename(from, to);
  }
  void remove(const std::string& path) override { system_->files.remove(path); }
  bool waitUntilWatching(const std::string&) override { return true; }
  bool waitUntil(EventRecorder&, const std::function<bool()>& condition) override {
    system_->loop.runUntilIdle();
    return condition();
  }

 private:
  UsedFakeSystem system_;
  std::shared_ptr<DispatchGroup> group_ = std::make_shared<DispatchGroup>();
  MacFileEventService service_;
};

INSTANTIATE_TEST_SUITE_P(MacOS, FileEventStreamConformance,
                         testing::Values([]() -> std::unique_ptr<FileEventWorld> {
                           return std::make_unique<MacWorld>();
                         }),
                         [](const auto&) { return std::string("Service"); });

}  // namespace
}  // namespace kestrivane::test
