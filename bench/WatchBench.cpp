// Watches one folder with the file-event service of this program and reports on it, in the manner
// of the programs that it is compared with.
//
// Prints `watching`, once everything is watched; then `OLD -> NEW`, for each rename; ends with its
// standard input.
#include <condition_variable>
#include <cstdio>
#include <deque>
#include <iostream>
#include <memory>
#include <mutex>
#include <string>
#include <thread>

#include <unistd.h>

#include "platform/linux/events/InotifyFileEventService.hpp"

namespace {

using namespace kestrivane;

class StandardErrorLog final : public UnifiedLog {
 public:
  std::unique_ptr<Logger> makeLogger(std::string_view, std::string_view) override {
    return std::make_unique<StandardErrorLogger>();
  }

 private:
  class StandardErrorLogger final : public Logger {
   public:
    void log(LogLevel, std::string_view message) noexcept override {
      std::fprintf(stderr, "%.*s\n", static_cast<int>(message.size()), message.data());
    }
  };
};

class SerialQueue final : public Executor {
 public:
  ~SerialQueue() override {
    post({});
    thread_.join();
  }
  void post(Job job) override {
    {
      const std::lock_guard lock(mutex_);
      jobs_.push_back(std::move(job));
    }
    changed_.notify_one();
  }

 private:
  void run() {
    for (;;) {
      std::unique_lock lock(mutex_);
      changed_.wait(lock, [this] { return !jobs_.empty(); });
      const Job job = std::move(jobs_.front());
      jobs_.pop_front();
      lock.unlock();
      if (!job) return;
      job();
    }
  }

  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Job> jobs_;
  std::thread thread_{[this] { run(); }};
};

void printRenames(std::span<const std::string> paths, std::span<const std::uint32_t> flags) {
  std::string lines;
  for (std::size_t i = 0; i + 1 < paths.size(); ++i) {
    if ((flags[i] & flags[i + 1] & fileEventItemRenamed) == 0) continue;
    lines.append(paths[i]).append(" -> ").append(paths[i + 1]).append("\n");
    ++i;
  }
  std::cout << lines << std::flush;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  if (argumentCount != 2) {
    std::cerr << "usage: watch-bench FOLDER\n";
    return 2;
  }
  StandardErrorLog log;
  InotifyFileEventService service(log, [](const std::string&, WatchCoverage coverage) {
    std::cout << (coverage == WatchCoverage::complete ? "watching" : "incomplete") << std::endl;
  });
  const auto stream = service.createStream(
      {.paths = {arguments[1]},
       .latency = std::chrono::milliseconds(100),
       .flags = fileEventStreamNoDefer | fileEventStreamWatchRoot | fileEventStreamFileEvents},
      std::make_shared<SerialQueue>(), printRenames);
  if (!stream) return 1;
  stream->start();
  std::cin.ignore(std::numeric_limits<std::streamsize>::max());
  stream->stop();
}
