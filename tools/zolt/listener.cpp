#include "tools/zolt/listener.h"

#include <poll.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <limits>
#include <utility>

#include "tools/zolt/errors.h"
#include "zolt41/zolt41.h"

namespace zolt::tool {

namespace {

constexpr int32_t kGapId = -1;

template <size_t size>
std::string TextIn(char const (&field)[size], bool *cut) {
  std::string text(field, strnlen(field, size));
  *cut = *cut || text.size() == size - 1;
  return text;
}

ValueNews NewsOf(NotificationInfo const &record) {
  bool cut = false;
  ValueNews news = {TextIn(record.name, &cut), TextIn(record.oldValue, &cut),
                    TextIn(record.newValue, &cut), false};
  news.cut = cut;
  return news;
}

int MillisecondsTo(Deadline deadline) {
  if (!deadline) return -1;
  auto const left =
      std::chrono::ceil<std::chrono::milliseconds>(*deadline - std::chrono::steady_clock::now());
  return static_cast<int>(std::clamp<int64_t>(left.count(), 0, std::numeric_limits<int>::max()));
}

}  // namespace

char const *NameOf(NewsKind kind) {
  static constexpr char const *kNames[] = {"modified", "removed", "created", "gap"};
  return kNames[static_cast<size_t>(kind)];
}

Deadline DeadlineFrom(Arguments const &arguments) {
  if (!arguments.Has(OptionId::timeout)) return std::nullopt;
  return std::chrono::steady_clock::now() +
         std::chrono::milliseconds(MillisecondsOf(arguments, OptionId::timeout));
}

// Only keeps what it hears: a failure must not leave a callback.
class Listener::Subscriber : public CPrefNotify {
 public:
  void OnKeyChanged() override { Keep(NewsKind::modified); }
  void OnKeyRemoved() override { Keep(NewsKind::removed); }
  void OnKeyCreated() override { Keep(NewsKind::created); }

  std::vector<News> Take() { return std::exchange(news_, {}); }

 private:
  void Keep(NewsKind kind) {
    bool const gap = changedId == kGapId && changedRecords.GetSize() == 0;
    News news = {
        gap ? NewsKind::gap : kind, changedId, changedLevel, std::chrono::system_clock::now(), {}};
    for (int32_t i = 0; i < changedRecords.GetSize(); i++)
      news.values.push_back(NewsOf(*static_cast<NotificationInfo const *>(changedRecords[i])));
    news_.push_back(std::move(news));
  }

  std::vector<News> news_;
};

Listener::Listener() : subscriber_(new Subscriber) {
  subscriber_->AddNotificationAll();
  AddNotificationObject(subscriber_);
}

Listener::~Listener() {
  RemoveNotificationObject(subscriber_);
  subscriber_->Release();
  ZOLTDeliver();
}

std::vector<News> Listener::Next(Deadline deadline, int output) {
  std::array<pollfd, 2> waits = {pollfd{ZOLTQueueDescriptor(), POLLIN, 0}, pollfd{output, 0, 0}};
  for (;;) {
    int const ready = poll(waits.data(), waits.size(), MillisecondsTo(deadline));
    if (ready < 0 && errno == EINTR) continue;
    if (ready < 0) throw SystemFailure("queue of changes", errno);
    ZOLTDeliver();
    std::vector<News> news = subscriber_->Take();
    bool const over = MillisecondsTo(deadline) == 0 || (waits[1].revents & POLLERR) != 0;
    if (!news.empty() || over) return news;
  }
}

}  // namespace zolt::tool
