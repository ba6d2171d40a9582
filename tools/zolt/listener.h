#ifndef ZOLT41_TOOLS_ZOLT_LISTENER_H_
#define ZOLT41_TOOLS_ZOLT_LISTENER_H_

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tools/zolt/library_session.h"

namespace zolt::tool {

enum class NewsKind { modified, removed, created, gap };

// "modified" and so on.
char const *NameOf(NewsKind kind);

struct ValueNews {
  std::string name;  // texts in the code page of the stores
  std::string before;
  std::string after;
  bool cut;  // one of the three does not show its end
};

// What was heard of one transaction on one section; of a gap only the time is known.
struct News {
  NewsKind kind;
  int32_t section;
  int32_t level;
  std::chrono::system_clock::time_point time;
  std::vector<ValueNews> values;
};

using Deadline = std::optional<std::chrono::steady_clock::time_point>;

// When the time of --timeout, from now on, is over. Throws a usage error.
Deadline DeadlineFrom(Arguments const &arguments);

// Runs the library and hears, on the thread that makes it, what any process changes from then on.
class Listener {
 public:
  Listener();
  ~Listener();
  Listener(Listener const &) = delete;
  Listener &operator=(Listener const &) = delete;

  // What has come, in its order; waits for it until the deadline, for ever without one. Empty when
  // that has passed, or when a pipe on `output`, if not -1, has lost its reader.
  std::vector<News> Next(Deadline deadline, int output = -1);

 private:
  class Subscriber;

  LibrarySession library_;
  Subscriber *subscriber_;  // ends itself
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_LISTENER_H_
