#ifndef ZOLT41_PLATFORM_SYSTEM_MACHINE_ID_H_
#define ZOLT41_PLATFORM_SYSTEM_MACHINE_ID_H_

#include <cstdint>

// What differs from one machine, user and moment to the next.

// Milliseconds since the system started, modulo 2^32.
uint32_t GetTickCount();

// The name of the user who runs the process, cut to `*size` - 1 bytes and ended with a NUL; `*size`
// becomes its length with the NUL. Without a name it is the user's number. Gives 1, or 0 for a null
// argument or no room.
int32_t GetUserNameA(char *buffer, uint32_t *size);

// Of the file system that the current directory lies on (`root` null) or that `root` names; each
// may be null. Numbers that 32 bits do not hold are cut to their low 32. Gives 1, or 0.
int32_t GetDiskFreeSpaceA(char const *root, uint32_t *sectorsPerCluster, uint32_t *bytesPerSector,
                          uint32_t *freeClusters, uint32_t *clusters);

#endif  // ZOLT41_PLATFORM_SYSTEM_MACHINE_ID_H_
