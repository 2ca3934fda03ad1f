// libdispatch: every queue is the test's loop, every group is empty once the loop is idle.
#include <dispatch/dispatch.h>

#include "tests/macos/fakes/FakeSystem.hpp"

using kestrivane::test::fakeSystem;

struct dispatch_queue_s final : kestrivane::test::FakeObject {
  const char* kind() const override { return "queue"; }
};

struct dispatch_group_s final : kestrivane::test::FakeObject {
  const char* kind() const override { return "group"; }
};

dispatch_queue_t dispatch_queue_create(const char*, dispatch_queue_attr_t) {
  return fakeSystem().create<dispatch_queue_s>();
}

dispatch_group_t dispatch_group_create() {
  return fakeSystem().create<dispatch_group_s>();
}

void dispatch_group_async_f(dispatch_group_t, dispatch_queue_t, void* context,
                            dispatch_function_t work) {
  fakeSystem().loop.post([context, work] { work(context); });
}

intptr_t dispatch_group_wait(dispatch_group_t, dispatch_time_t) {
  return 0;
}

void dispatch_release(dispatch_object_t object) {
  fakeSystem().release(object);
}
