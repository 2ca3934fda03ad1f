#include "tests/macos/dispatch/ThreadedDispatch.hpp"

#include <atomic>
#include <bit>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <memory>
#include <mutex>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <dispatch/dispatch.h>
#include <gtest/gtest.h>

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
std::vector<std::string> queuesAskedFor;

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
  if (queue == globalQueue()) {
    threads.emplace_back([work] { run(work); });
  } else {
    queue->work.push_back(work);
    if (std::exchange(queue->isRunning, true)) return;
    ++queue->references;
    threads.emplace_back([queue] { drain(queue); });
  }
}

}  // namespace

dispatch_queue_t dispatch_get_global_queue(intptr_t identifier, uintptr_t) {
  queuesAskedFor.push_back("global " + std::to_string(identifier));
  ++globalQueue()->references;  // the system ignores a release, here there is one to give back
  return globalQueue();
}

/// The attributes are nothing but the quality of service: all queues that are made are serial.
dispatch_queue_attr_t dispatch_queue_attr_make_with_qos_class(dispatch_queue_attr_t attribute,
                                                              dispatch_qos_class_t qualityOfService,
                                                              int relativePriority) {
  EXPECT_EQ(attribute, DISPATCH_QUEUE_SERIAL);
  EXPECT_EQ(relativePriority, 0);
  return reinterpret_cast<dispatch_queue_attr_t>(std::uintptr_t{qualityOfService});
}

dispatch_queue_t dispatch_queue_create(const char* label, dispatch_queue_attr_t attributes) {
  const std::lock_guard lock(mutex);
  queuesAskedFor.push_back(label +
                           (" " + std::to_string(std::bit_cast<std::uintptr_t>(attributes))));
  return create<dispatch_queue_s>();
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

std::vector<std::string> queues() {
  const std::lock_guard lock(mutex);
  return queuesAskedFor;
}

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
  queuesAskedFor.clear();
  return objectsAlive;
}

}  // namespace kestrivane::test
