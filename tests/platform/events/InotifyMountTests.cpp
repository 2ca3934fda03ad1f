#include <atomic>
#include <string>

#include <sys/mount.h>

#include "tests/platform/events/Namespaces.hpp"
#include "tests/platform/events/WatchFixture.hpp"

namespace kestrivane::test {
namespace {

/// A folder to which a disk with a folder on it is mounted.
class MountFixture : public WatchFixture {
 protected:
  MountFixture() {
    makeDirectories("place");
    makeDirectories("elsewhere");
  }

  void mountDisk() {
    const std::string elsewhere = path("elsewhere");
    ASSERT_EQ(0, ::mount("disk", elsewhere.c_str(), "tmpfs", 0, nullptr));
    makeDirectories("elsewhere/sub");
    ASSERT_EQ(0, ::mount(elsewhere.c_str(), path("place").c_str(), nullptr, MS_MOVE, nullptr));
  }
  void unmountDisk() { ASSERT_EQ(0, ::umount(path("place").c_str())); }

  [[nodiscard]] static bool becomeWatches(std::size_t count) {
    return eventually([count] { return kernelWatchCount() == count; });
  }
};

template <typename Test>
void runWithMounts() {
  runInNamespaces<Test>(CLONE_NEWNS, [user = ::geteuid(), group = ::getegid()] {
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream users("/proc/self/uid_map");
    std::ofstream groups("/proc/self/gid_map");
    users << "0 " << user << " 1" << std::flush;
    groups << "0 " << group << " 1" << std::flush;
    return users && groups;
  });
}

TEST(InotifyMountTest, AFolderWhoseDiskComesAndGoesIsWatchedEachTime) {
  class Mounted : public MountFixture {
   public:
    void TestBody() override {
      const auto watched = watch(path("place"));
      for (const std::string name : {"one", "two"}) {
        mountDisk();
        ASSERT_TRUE(becomeWatches(2));
        makeFile("place/sub/" + name + ".png");
        move("place/sub/" + name + ".png", "place/sub/" + name + ".jpg");
        EXPECT_TRUE(watched->recorder.waitForRename(path("place/sub/" + name + ".png"),
                                                    path("place/sub/" + name + ".jpg")));
        unmountDisk();
        ASSERT_TRUE(becomeWatches(1));
        makeFile("place/" + name);
        EXPECT_TRUE(watched->recorder.waitFor(path("place/" + name), modified | file));
      }
    }
  };
  runWithMounts<Mounted>();
}

TEST(InotifyMountTest, AFolderThatIsOnlyOnTheDiskIsWatchedOnceItIsThereAndMissedOnlyOnce) {
  class Mounted : public MountFixture {
   public:
    void TestBody() override {
      Watched watched(service, makeQueue(), path("place/sub"));
      watched.stream->start();
      EXPECT_EQ(WatchCoverage::none, waitForAnnouncement(path("place/sub")));
      for (int i = 0; i < 2; ++i) {
        mountDisk();
        ASSERT_TRUE(becomeWatches(1));
        unmountDisk();
        ASSERT_TRUE(becomeWatches(0));
      }
      EXPECT_EQ(1U, log.messages(LogLevel::error).size());
    }
  };
  runWithMounts<Mounted>();
}

TEST(InotifyMountTest, ObserversAreToldOfEveryMount) {
  class Mounted : public MountFixture {
   public:
    void TestBody() override {
      std::atomic<int> changes = 0;
      InotifyFileEventService observed(log, {}, [&changes] { ++changes; });
      const Watched watched(observed, makeQueue(), path("elsewhere"));
      ASSERT_NE(nullptr, watched.stream);
      const std::string place = path("place");
      ASSERT_EQ(0, ::mount(place.c_str(), place.c_str(), nullptr, MS_BIND, nullptr));
      EXPECT_TRUE(eventually([&changes] { return changes == 1; }));
      unmountDisk();
      EXPECT_TRUE(eventually([&changes] { return changes == 2; }));
    }
  };
  runWithMounts<Mounted>();
}

}  // namespace
}  // namespace kestrivane::test
