#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/LongWorkQueue.hpp"

#include <utility>

#include <pthread.h>

#include "platform/linux/SignalMask.hpp"

namespace kestrivane {
namespace {

void joinAll(std::list<std::thread>& threads) {
  for (std::thread& thread : threads)
    thread.join();
  threads.clear();
}

}  // namespace

LongWorkQueue::~LongWorkQueue() {
  finish();
}

void LongWorkQueue::post(Job job) {
  Threads fresh(1);
  Threads ended;
  {
    const std::lock_guard lock(mutex_);
    if (finished_) return;
    const auto thread = fresh.begin();
    const SignalMask mask;
    *thread = std::thread(
        [this, thread, moved = std::move(job)]() mutable { work(thread, std::move(moved)); });
    running_.splice(running_.end(), fresh);
    ended.swap(ended_);
  }
  joinAll(ended);
}

void LongWorkQueue::finish() {
  Threads ended;
  {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [this] { return running_.empty(); });
    finished_ = true;
    ended.swap(ended_);
  }
  joinAll(ended);
}

void LongWorkQueue::work(Threads::iterator self, Job job) {
  pthread_setname_np(pthread_self(), "long work");
  job();
  job = nullptr;  // what the job owns is released before the queue may go
  const std::lock_guard lock(mutex_);
  ended_.splice(ended_.end(), running_, self);
  changed_.notify_all();
}

}  // namespace kestrivane
