#include "tests/macos/fakes/FakeSystem.hpp"

#include <stdexcept>

#include <gtest/gtest.h>

namespace kestrivane::test {
namespace {

FakeSystem* systemInUse = nullptr;

}  // namespace

FakeSystem& fakeSystem() {
  if (systemInUse == nullptr) throw std::logic_error("no fake system is in use");
  return *systemInUse;
}

FakeSystem::Entry& FakeSystem::entry(const void* address) {
  const auto found = objects_.find(address);
  if (found == objects_.end()) throw std::logic_error("there is no such object, or no longer");
  return found->second;
}

void FakeSystem::release(const void* address) {
  const auto found = objects_.find(address);
  if (found == objects_.end()) {
    ADD_FAILURE() << "released once too often";
    return;
  }
  if (--found->second.references > 0) return;
  const std::unique_ptr<FakeObject> object = std::move(found->second.object);
  objects_.erase(found);  // first: the object may release others
}

std::vector<std::string> FakeSystem::objectsAlive() const {
  std::vector<std::string> kinds;
  for (const auto& [address, entry] : objects_)
    kinds.emplace_back(entry.object->kind());
  return kinds;
}

UsedFakeSystem::UsedFakeSystem() {
  systemInUse = &system_;
}

UsedFakeSystem::~UsedFakeSystem() {
  system_.loop.runUntilIdle();
  EXPECT_EQ(system_.objectsAlive(), std::vector<std::string>());
  systemInUse = nullptr;
}

}  // namespace kestrivane::test
