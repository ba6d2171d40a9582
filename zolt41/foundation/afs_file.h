#ifndef ZOLT41_FOUNDATION_AFS_FILE_H_
#define ZOLT41_FOUNDATION_AFS_FILE_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Files. A handle is a number from 1 on that is not given out again; 0xFFFFFFFF means no file. A
// name is UTF-8, or else text of the local code page; only plain files are opened. Nothing is
// buffered. Positions and sizes are in bytes, below 2^31. A handle has one position, and belongs to
// one thread at a time.
//
// Results below 0 are
//   -1     the system refused a read, a write, a seek or a change of the size
//   -8990  the file could not be made
//   -8991  the file could not be opened
//   -8993  no file to close
//   -8995  the file ended before all was read
//   -8996  the position or the size cannot be told
//   -8997  no such origin
//   -8999  no file, in any other function
// ZOLTLastFailure tells why the system refused.

// Opens a file that exists: `mode` 1 to read, 2 to write, any other to do both. Two that read may
// have the file open at once, in one process or in several; every other pair is refused. Gives 0
// and stores the handle, or -8991 and leaves `*file`.
ZOLT_API int32_t AFS_LZOpenFile(char const *name, int32_t mode, uint32_t *file);

// Makes an empty file, for its user alone, and leaves it closed. Gives 0, or -8990, also for a file
// that exists, which stays as it is. The two numbers have no effect.
ZOLT_API int32_t AFS_LZCreateFile(char const *name, int32_t creator, int32_t type);

// Gives 0, or -8993.
ZOLT_API int32_t AFS_CloseFile(uint32_t file);

// Returns when what was written is on the disk.
ZOLT_API void AFS_FlushFile(uint32_t file);

// Read or write `*count` bytes from the position on, which moves behind what was done; `*count`
// becomes how many that were. Give 0, -8999, -1, and for a read that ends early -8995.
ZOLT_API int32_t AFS_Read(uint32_t file, uint32_t *count, void *buffer);
ZOLT_API int32_t AFS_Write(uint32_t file, uint32_t *count, void const *buffer);

// The position, or -8999 or -8996.
ZOLT_API int32_t AFS_GetFPos(uint32_t file);

// Moves the position to `offset`, counted from the start (`origin` 1), the end (2) or where it
// stands (3); of `origin` the low 8 bits count. Gives 0, -8999, -8997 or -1.
ZOLT_API int32_t AFS_SetFPos(uint32_t file, int32_t offset, int32_t origin);

// The size, or -8999 or -8996. The position stays.
ZOLT_API int32_t AFS_GetEOF(uint32_t file);

// Makes the file `size` bytes long; what is new is 0. The position stays if it is below `size`,
// else it becomes `size`. Gives 0, -8999 or -1.
ZOLT_API int32_t AFS_SetEOF(uint32_t file, int32_t size);

#endif  // ZOLT41_FOUNDATION_AFS_FILE_H_
