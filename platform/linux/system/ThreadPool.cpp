#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/ThreadPool.hpp"

#include <utility>

#include <pthread.h>

#include "platform/linux/SignalMask.hpp"

namespace kestrivane {

std::shared_ptr<ThreadPool> ThreadPool::create(const std::string& name, unsigned threadCount) {
  std::shared_ptr<ThreadPool> pool(new ThreadPool);
  const SignalMask mask;
  for (unsigned i = 0; i < threadCount; ++i) {
    std::thread& thread = pool->threads_.emplace_back([&pool = *pool] { pool.work(); });
    pthread_setname_np(thread.native_handle(), name.substr(0, 15).c_str());
  }
  return pool;
}

ThreadPool::~ThreadPool() {
  finish();
}

void ThreadPool::post(Job job) {
  const std::lock_guard lock(mutex_);
  if (finished_) return;
  jobs_.push_back(std::move(job));
  changed_.notify_one();
}

void ThreadPool::finish() {
  {
    const std::lock_guard lock(mutex_);
    finishing_ = true;
    changed_.notify_all();
  }
  for (std::thread& thread : threads_)
    thread.join();
  threads_.clear();

  // Somebody else may have posted after the last thread had looked.
  std::deque<Job> dropped;
  const std::lock_guard lock(mutex_);
  finished_ = true;
  dropped.swap(jobs_);
}

void ThreadPool::work() {
  std::unique_lock lock(mutex_);
  while (true) {
    changed_.wait(lock, [this] { return finishing_ || !jobs_.empty(); });
    if (jobs_.empty()) return;
    Job job = std::move(jobs_.front());
    jobs_.pop_front();
    lock.unlock();
    job();
    job = nullptr;  // what the job owns is released without the lock
    lock.lock();
  }
}

}  // namespace kestrivane
