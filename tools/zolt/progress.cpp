#include "tools/zolt/progress.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <string_view>
#include <utility>

#include "tools/zolt/interruption.h"
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
  ClearLineWhenInterrupted(false);
}

void Progress::Begin(std::string what, size_t steps) {
  std::lock_guard const lock(mutex_);
  what_ = std::move(what);
  steps_ = steps;
  done_ = 0;
  begun_ = Clock::now();
}

// How many steps there were in a second, and how long the rest takes at that rate.
std::string Progress::Rate(size_t done) const {
  double const seconds = std::chrono::duration<double>(Clock::now() - begun_).count();
  if (done == 0 || seconds < kPatience.count() / 1000.0) return "";
  double const rate = static_cast<double>(done) / seconds;
  std::string text = "  " + std::to_string(std::lround(rate)) + "/s";
  if (done >= steps_) return text;
  auto const left = std::lround(static_cast<double>(steps_ - done) / rate);
  return text + "  " + std::to_string(left / 60) + ":" + (left % 60 < 10 ? "0" : "") +
         std::to_string(left % 60) + " left";
}

std::string Progress::LineNow() {
  std::string line = "\r" + what_;
  if (steps_ > 0) {
    size_t const part = std::min(done_.load(std::memory_order_relaxed), steps_);
    size_t const filled = part * kBarWidth / steps_;
    line += " [" + std::string(filled, '#') + std::string(kBarWidth - filled, ' ') + "] " +
            std::to_string(part * 100 / steps_) + "%" + Rate(part);
  } else {
    size_t const done = done_.load(std::memory_order_relaxed);
    line += done > 0 ? " " + std::to_string(done) + Rate(done) : " ...";
  }
  return line + "\033[K";
}

void Progress::Draw() {
  std::unique_lock lock(mutex_);
  auto const ended = [this] { return ended_; };
  if (changed_.wait_for(lock, kPatience, ended)) return;
  drawn_ = true;
  ClearLineWhenInterrupted(true);
  do {
    Write(LineNow());
  } while (!changed_.wait_for(lock, kRedraw, ended));
}

}  // namespace zolt::tool
