// The streams of the fake FSEvents, for tests that call back into the adapter by hand.
// Thread-safety and ownership: as `FakeSystem`.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <CoreServices/CoreServices.h>

#include "tests/macos/fakes/FakeSystem.hpp"

struct FSEventStreamObject final : kestrivane::test::FakeObject {
  const char* kind() const override { return "event stream"; }

  FSEventStreamCallback callback = nullptr;
  FSEventStreamContext context{};
  std::vector<std::string> paths;
  std::unique_ptr<kestrivane::FileEventStream> events;
};

namespace kestrivane::test {

/// Calls `callback` as the system does, with an array of strings.
void callBack(FSEventStreamCallback callback, void* info, const std::vector<std::string>& paths,
              const std::vector<std::uint32_t>& flags);

/// The stream that was made last; it must be alive.
FSEventStreamObject& lastEventStream();

}  // namespace kestrivane::test
