#ifndef ZOLT41_NOTIFY_ACKNOWLEDGEMENTS_H_
#define ZOLT41_NOTIFY_ACKNOWLEDGEMENTS_H_

#include <chrono>
#include <cstdint>

#include "zolt41/notify/channel_layout.h"

namespace zolt {

// How a writer learns that all who listen have taken its announcement. One that is gone is not
// counted; one that let a writer wait in vain is lagging, and is not counted again before it has
// caught up. An answer says which announcement it is for, so a late one counts for nothing.

// Counts those who are to answer announcement `number`, before it is published. The channel mutex
// is held.
void ExpectAnswers(ChannelArea *channel, uint32_t number);

// Waits for the answers for a millisecond. False if not all have come.
bool AnsweredSoon(ChannelArea *channel, uint32_t number);

// Waits for the answers, until 50 ms after `start` and for 502 yields at most. With `pause` it does
// not come back before the 50 ms are over.
enum class Pause { none, full };
void AwaitAnswers(ChannelArea *channel, uint32_t number, Pause pause,
                  std::chrono::steady_clock::time_point start = std::chrono::steady_clock::now());

// The process of `slot` has taken all announcements up to `number`. A slot that is none answers for
// nobody, and a second answer is none.
void AnswerFor(ChannelArea *channel, uint32_t slot, uint32_t number);

// The process of `slot` does without whatever it is awaited for, be it published or not. It no
// longer shows that it listens, so that nobody awaits it from here on.
void AnswerForAll(ChannelArea *channel, uint32_t slot);

}  // namespace zolt

#endif  // ZOLT41_NOTIFY_ACKNOWLEDGEMENTS_H_
