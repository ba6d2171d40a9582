#ifndef ZOLT41_PLATFORM_SYSTEM_FILE_H_
#define ZOLT41_PLATFORM_SYSTEM_FILE_H_

#include <cstdint>

// Files by handles of this process, which begin at 1 and are not given out again. Only plain files
// are opened: not directories, pipes or devices. A name is as SystemPath takes it. Positions and
// sizes are those of 31 bits: what would lie beyond fails. A failure leaves its reason for
// ZOLTLastFailure.
//
// Sharing is kept by locks on the file, between the processes of all users of this system and
// within one: a file that is open for reading with FILE_SHARE_READ can be opened once more so, and
// every other pair is refused. Programs that do not use these functions are not kept out. On a file
// system without locks nobody is.

inline constexpr uint32_t INVALID_HANDLE_VALUE = 0xFFFFFFFF;
inline constexpr uint32_t GENERIC_READ = 0x80000000;
inline constexpr uint32_t GENERIC_WRITE = 0x40000000;
inline constexpr uint32_t FILE_SHARE_READ = 1;
inline constexpr uint32_t CREATE_NEW = 1;     // fails if there is such a file
inline constexpr uint32_t OPEN_EXISTING = 3;  // fails if there is none
inline constexpr uint32_t FILE_ATTRIBUTE_NORMAL = 0x80;
inline constexpr uint32_t FILE_FLAG_RANDOM_ACCESS = 0x10000000;
inline constexpr uint32_t FILE_BEGIN = 0;
inline constexpr uint32_t FILE_CURRENT = 1;
inline constexpr uint32_t FILE_END = 2;

// Gives a handle, or INVALID_HANDLE_VALUE. A new file belongs to its user alone (mode 0600).
// `security`, `flags` and `pattern` have no effect.
uint32_t CreateFileA(char const *name, uint32_t access, uint32_t share, void *security,
                     uint32_t disposition, uint32_t flags, uint32_t pattern);

// The following give 1, or 0 on failure.
int32_t CloseHandle(uint32_t file);
// What was written is on the disk.
int32_t FlushFileBuffers(uint32_t file);
// From the position on, which moves behind what was done. `*done` says how much that is, also on
// failure: less than asked for at the end of the file, and on a full disk.
int32_t ReadFile(uint32_t file, void *buffer, uint32_t count, uint32_t *done, void *overlapped);
int32_t WriteFile(uint32_t file, void const *buffer, uint32_t count, uint32_t *done,
                  void *overlapped);
// Cuts or extends the file to the position.
int32_t SetEndOfFile(uint32_t file);

// Moves the position and gives it from the start, or 0xFFFFFFFF; `high` has no effect.
uint32_t SetFilePointer(uint32_t file, int32_t distance, int32_t *high, uint32_t method);

int32_t DeleteFileA(char const *name);

namespace zolt {

// The descriptor behind a handle, which stays the handle's; -1 if there is none.
int DescriptorOf(uint32_t file);

// A new file at exactly this path, open for reading and writing and for nobody else. Gives its
// handle, or INVALID_HANDLE_VALUE with errno telling why.
uint32_t AdoptNewFile(char const *path);

// The handle `file` becomes that of the other's file; its own is closed, and `other` is no handle
// any more.
void TakeHandle(uint32_t file, uint32_t other);

// As ReadFile, WriteFile and SetEndOfFile, but at a position that is given, and without regard to
// the one that the handle has.
int32_t ReadFileAt(uint32_t file, uint32_t position, void *buffer, uint32_t count, uint32_t *done);
int32_t WriteFileAt(uint32_t file, uint32_t position, void const *buffer, uint32_t count,
                    uint32_t *done);
int32_t ResizeFile(uint32_t file, uint32_t size);

// -1 on failure.
int64_t SizeOfFile(uint32_t file);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_SYSTEM_FILE_H_
