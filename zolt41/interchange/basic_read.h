#ifndef ZOLT41_INTERCHANGE_BASIC_READ_H_
#define ZOLT41_INTERCHANGE_BASIC_READ_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// A source of bytes for ImportCard, whose line ends all read as CR LF, whether they are an LF, a CR
// or both. A reader is for one import, on one thread, and is not copied.
class ZOLT_API FBasicRead {
 public:
  virtual ~FBasicRead();
  FBasicRead(FBasicRead const &) = delete;
  FBasicRead &operator=(FBasicRead const &) = delete;

  // 1 if what the buffer holds has been given out and no more is to be had.
  virtual int32_t AtEnd() = 0;
  // Reads up to `*size` bytes into `buffer`, and sets `*size` to how many that were. Called by
  // GetByte when all in the buffer has been given out and AtEnd gives 0.
  virtual void Fill(uint32_t file, int32_t *size, char *buffer) = 0;

  // The next byte; behind the end 0, again and again.
  char GetByte();
  // GetByte gives this one next, unless it is 0. There is room for one.
  void PushBack(char byte) { pushedBack_ = byte; }

 protected:
  static constexpr int32_t kBlock = 4096;  // what the buffer has room for

  FBasicRead() = default;

  uint32_t file_ = 0;       // 0 if there is none
  char *buffer_ = nullptr;  // the reader's own, made at the first need
  int32_t position_ = 0;    // of the next byte in the buffer
  int32_t size_ = 0;        // of what the buffer holds
  char crSeen_ = 0;         // not 0 if a CR has been given out and an LF is due
  char pushedBack_ = 0;     // 0 if there is none
};

// Reads a file. One that cannot be opened reads as an empty one; ZOLTLastFailure tells why.
class ZOLT_API FFileRead final : public FBasicRead {
 public:
  // A name as AFS_LZOpenFile takes it. The file stays open for as long as the reader lives.
  explicit FFileRead(char const *path);
  // Reads an open file from its beginning, and closes it in the end.
  explicit FFileRead(uint32_t file);
  ~FFileRead() override;

  int32_t AtEnd() override;
  void Fill(uint32_t file, int32_t *size, char *buffer) override;
  // The file was opened, and ended before its end because it could not be read.
  bool failed() const { return failed_; }

 private:
  ZOLT_HIDDEN void Begin();

  bool failed_ = false;
};

// Reads `size` bytes at `data`, which stay the caller's and must live as long as the reader. Null,
// and a `size` below 1, read as nothing.
class ZOLT_API FMemoryRead final : public FBasicRead {
 public:
  FMemoryRead(void const *data, int32_t size);

  int32_t AtEnd() override;
  void Fill(uint32_t file, int32_t *size, char *buffer) override;
};

#endif  // ZOLT41_INTERCHANGE_BASIC_READ_H_
