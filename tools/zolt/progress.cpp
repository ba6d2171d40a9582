#include "tools/zolt/progress.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <string_view>
#include <utility>

#include "tools/zolt/output.h"

namespace zolt::tool {

namespace {

constexpr std::chrono::milliseconds kPatience{500};
constexpr std::chrono::milliseconds kRedraw{100};
constexpr size_t kBarWidth = 30;

void Write(std::string_view text) {
  // Nothing depends on it.
  [[maybe_unused]] ssize_t const written = write(STDERR_FILENO, text.data(), text.size());
}

}  // namespace

Progress::Progress(Settings const &settings, std::string what, size_t steps)
    : what_(std::move(what)), steps_(steps) {
  bool const shown = settings.progress == When::automatic
                         ? ErrorIsTerminal() && !settings.quiet && !settings.json
                         : settings.progress == When::always;
  if (shown) thread_ = std::thread([this] { Draw(); });
}

Progress::~Progress() {
  if (!thread_.joinable()) return;
  {
    std::lock_guard const lock(mutex_);
    ended_ = true;
  }
  changed_.notify_one();
  thread_.join();
  if (drawn_) Write("\r\033[K");
}

void Progress::Begin(std::string what, size_t steps) {
  std::lock_guard const lock(mutex_);
  what_ = std::move(what);
  steps_ = steps;
  done_ = 0;
}

std::string Progress::LineNow() {
  std::string line = "\r" + what_;
  if (steps_ > 0) {
    size_t const part = std::min(done_.load(std::memory_order_relaxed), steps_);
    size_t const filled = part * kBarWidth / steps_;
    line += " [" + std::string(filled, '#') + std::string(kBarWidth - filled, ' ') + "] " +
            std::to_string(part * 100 / steps_) + "%";
  } else {
    size_t const done = done_.load(std::memory_order_relaxed);
    line += done > 0 ? " " + std::to_string(done) : " ...";
  }
  return line + "\033[K";
}

void Progress::Draw() {
  std::unique_lock lock(mutex_);
  auto const ended = [this] { return ended_; };
  if (changed_.wait_for(lock, kPatience, ended)) return;
  drawn_ = true;
  do {
    Write(LineNow());
  } while (!changed_.wait_for(lock, kRedraw, ended));
}

}  // namespace zolt::tool
