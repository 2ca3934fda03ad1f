#ifndef __linux__
#error "This adapter is for Linux."
#endif

#include "platform/linux/system/LinuxDispatch.hpp"

#include <algorithm>
#include <thread>
#include <utility>

#include "platform/linux/system/SerialQueue.hpp"

namespace kestrivane {

std::unique_ptr<LinuxDispatch> LinuxDispatch::create(EventLoop& mainLoop) {
  // Two at least: an engine runs two conversions at once.
  const unsigned workerCount = std::max(2U, std::thread::hardware_concurrency());
  return std::unique_ptr<LinuxDispatch>(new LinuxDispatch(
      mainLoop, ThreadPool::create("worker", workerCount), ThreadPool::create("serial", 2)));
}

LinuxDispatch::LinuxDispatch(EventLoop& mainLoop, std::shared_ptr<ThreadPool> workers,
                             std::shared_ptr<ThreadPool> serialThreads)
    : mainLoop_(mainLoop), workers_(std::move(workers)), serialThreads_(std::move(serialThreads)) {}

LinuxDispatch::~LinuxDispatch() {
  longWork_.finish();
  workers_->finish();
  serialThreads_->finish();
}

Executor& LinuxDispatch::globalQueue(QualityOfService) {
  return *workers_;
}

std::shared_ptr<Executor> LinuxDispatch::makeSerialQueue(std::string_view label, QualityOfService) {
  return std::make_shared<SerialQueue>(serialThreads_, label);
}

}  // namespace kestrivane
