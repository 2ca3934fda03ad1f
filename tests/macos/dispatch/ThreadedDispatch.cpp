#include "tests/macos/dispatch/ThreadedDispatch.hpp"

#include <atomic>
#include <condition_variable>
#include <deque>
#include <memory>
#include <mutex>
#include <thread>
#include <utility>
#include <vector>

#include <dispatch/dispatch.h>

namespace {

/// A function with its context, and the group that counts it.
struct Work {
  dispatch_function_t function;
  void* context;
  dispatch_group_t group;
};

struct Object {
  virtual ~Object() = default;
  std::atomic<int> references = 1;
};

std::mutex mutex;
std::condition_variable changed;
std::vector<std::thread> threads;
std::atomic<int> objectsAlive = 0;

void release(Object* object) {
  if (--object->references > 0) return;
  --objectsAlive;
  delete object;
}

template <typename Kind>
Kind* create() {
  ++objectsAlive;
  return std::make_unique<Kind>().release();
}

}  // namespace

struct dispatch_queue_s final : Object {
  bool isSerial = false;
  bool isRunning = false;
  std::deque<Work> work;
};

struct dispatch_group_s final : Object {
  int count = 0;
};

namespace {

/// Never released for good: its own reference is never given back.
dispatch_queue_s* globalQueue() {
  static dispatch_queue_s queue;
  return &queue;
}

void run(const Work& work) {
  work.function(work.context);
  const std::lock_guard lock(mutex);
  --work.group->count;
  changed.notify_all();
  release(work.group);
}

void drain(dispatch_queue_t queue) {
  std::unique_lock lock(mutex);
  while (!queue->work.empty()) {
    const Work work = queue->work.front();
    queue->work.pop_front();
    lock.unlock();
    run(work);
    lock.lock();
  }
  queue->isRunning = false;
  release(queue);
}

/// With the mutex held.
void enqueue(dispatch_queue_t queue, Work work) {
  if (!queue->isSerial) {
    threads.emplace_back([work] { run(work); });
  } else {
    queue->work.push_back(work);
    if (std::exchange(queue->isRunning, true)) return;
    ++queue->references;
    threads.emplace_back([queue] { drain(queue); });
  }
}

}  // namespace

dispatch_queue_t dispatch_get_global_queue(intptr_t, uintptr_t) {
  ++globalQueue()->references;  // the system ignores a release, here there is one to give back
  return globalQueue();
}

dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t attribute,
                                                              dispatch_qos_class_t, int) {
  return attribute;
}

dispatch_queue_t dispatch_queue_create(const char*, dispatch_queue_attr_t attribute) {
  dispatch_queue_t queue = create<dispatch_queue_s>();
  queue->isSerial = attribute == DISPATCH_QUEUE_SERIAL;
  return queue;
}

dispatch_group_t dispatch_group_create() {
  return create<dispatch_group_s>();
}

void dispatch_group_async_f(dispatch_group_t group, dispatch_queue_t queue, void* context,
                            dispatch_function_t function) {
  const std::lock_guard lock(mutex);
  ++group->references;
  ++group->count;
  enqueue(queue, {function, context, group});
}

intptr_t dispatch_group_wait(dispatch_group_t group, dispatch_time_t timeout) {
  std::unique_lock lock(mutex);
  if (timeout == DISPATCH_TIME_NOW) return group->count == 0 ? 0 : 1;
  changed.wait(lock, [group] { return group->count == 0; });
  return 0;
}

void dispatch_release(dispatch_object_t object) {
  release(static_cast<Object*>(object));
}

namespace kestrivane::test {

int endDispatch() {
  std::vector<std::thread> ended;
  do {
    ended.clear();
    {
      const std::lock_guard lock(mutex);
      ended.swap(threads);
    }
    for (std::thread& thread : ended)
      thread.join();
  } while (!ended.empty());
  return objectsAlive;
}

}  // namespace kestrivane::test
