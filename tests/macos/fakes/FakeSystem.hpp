// What stands behind the C functions of macOS in tests: it records the calls, makes chosen ones
// fail, and counts the references to every object.
//
// The functions have no argument to carry it, so one is in use at a time, for as long as a
// `UsedFakeSystem` lives. Thread-safety: none; used on the test's thread. Ownership: owns the
// objects; a reference too few or too many is a failure of the test.
#pragma once

#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "tests/support/InMemoryFileSystem.hpp"
#include "tests/support/VirtualLoop.hpp"

namespace kestrivane::test {

/// What all objects of the fake system have in common.
struct FakeObject {
  virtual ~FakeObject() = default;
  virtual const char* kind() const = 0;
};

class FakeSystem {
 public:
  InMemoryFileSystem files;
  VirtualLoop loop;

  /// One line for each call of interest, in their order.
  std::vector<std::string> calls;
  /// The names of functions that return nothing, or false.
  std::set<std::string> failing;

  bool fails(const char* function) const { return failing.contains(function); }

  /// Makes an object with one reference, owned by the caller.
  template <typename Object, typename... Arguments>
  Object* create(Arguments&&... arguments) {
    auto object = std::make_unique<Object>(std::forward<Arguments>(arguments)...);
    Object* const address = object.get();
    objects_.emplace(address, Entry{std::move(object), 1});
    return address;
  }

  /// The object at `address`, which must be alive.
  FakeObject& object(const void* address) { return *entry(address).object; }
  void retain(const void* address) { ++entry(address).references; }
  void release(const void* address);

  /// The kinds of the objects that somebody still refers to.
  std::vector<std::string> objectsAlive() const;

 private:
  struct Entry {
    std::unique_ptr<FakeObject> object;
    int references;
  };

  Entry& entry(const void* address);

  std::map<const void*, Entry> objects_;
};

/// The one in use.
FakeSystem& fakeSystem();

/// Puts a system to use for as long as it lives.
class UsedFakeSystem {
 public:
  UsedFakeSystem();
  UsedFakeSystem(const UsedFakeSystem&) = delete;
  UsedFakeSystem& operator=(const UsedFakeSystem&) = delete;
  /// Fails the test when a reference is left.
  ~UsedFakeSystem();

  FakeSystem* operator->() { return &system_; }
  FakeSystem& operator*() { return system_; }

 private:
  FakeSystem system_;
};

}  // namespace kestrivane::test
