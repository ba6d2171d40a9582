#ifndef ZOLT41_TOOLS_ZOLT_CARD_LOCK_H_
#define ZOLT41_TOOLS_ZOLT_CARD_LOCK_H_

#include <cstdint>
#include <string>

namespace zolt::tool {

// Keeps other runs of this tool from changing a file between the time that it is read and the time
// that it is written. Where the file system has no such locks, or there is no file, it does
// nothing.
class CardLock {
 public:
  // Throws if another one has it for longer than `wait` milliseconds.
  CardLock(std::string const &path, uint32_t wait);
  ~CardLock();
  CardLock(CardLock const &) = delete;
  CardLock &operator=(CardLock const &) = delete;

 private:
  int file_ = -1;
};

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CARD_LOCK_H_
