#ifndef ZOLT41_EXAMPLES_EPOLL_LOOP_H_
#define ZOLT41_EXAMPLES_EPOLL_LOOP_H_

#include <sys/epoll.h>
#include <unistd.h>

#include <cstdio>

#include "zolt41/zolt41.h"

// A plain loop that takes messages until the standard input ends.
inline void ListenUntilInputEnds() {
  int const loop = epoll_create1(EPOLL_CLOEXEC);
  for (int const descriptor : {ZOLTQueueDescriptor(), STDIN_FILENO}) {
    epoll_event event = {EPOLLIN, {}};
    event.data.fd = descriptor;
    epoll_ctl(loop, EPOLL_CTL_ADD, descriptor, &event);
  }
  std::puts("listening; end the input to stop");
  std::fflush(stdout);
  for (;;) {
    epoll_event event{};
    if (epoll_wait(loop, &event, 1, -1) != 1) continue;
    if (event.data.fd == STDIN_FILENO) {
      char bytes[256];
      if (read(STDIN_FILENO, bytes, sizeof bytes) <= 0) break;
    } else {
      ZOLTDeliver();
    }
  }
  close(loop);
}

#endif  // ZOLT41_EXAMPLES_EPOLL_LOOP_H_
