#ifndef ZOLT41_FOUNDATION_MEM_BLOCK_H_
#define ZOLT41_FOUNDATION_MEM_BLOCK_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Memory blocks that know their own size.
//
// A block is known by the pointer to its first data byte; its size lies hidden before that. Whoever
// made a block owns it, until it is given to _DisposeMem or handed over where a function says so.
// Only pointers that NewMem, NewMemClear or SetMemSize gave are blocks. The data is aligned for
// 32-bit numbers and nothing wider. Any thread may dispose of a block that another one made.

// A new block of `size` bytes, which may be 0; its contents are undefined, or all 0 with
// NewMemClear. Null when there is no memory, and for a size above 0xFFFFFFFB.
ZOLT_API char *NewMem(uint32_t size);
ZOLT_API char *NewMemClear(uint32_t size);

// The size that was last asked for, in bytes. Null gives 0.
ZOLT_API uint32_t GetMemSize(char const *block);

// Makes the block at `*block` `size` bytes long and gives 0. The block may move: `*block` is its
// new place, and every other pointer into it is stale. The bytes up to the smaller of the two sizes
// are kept, those behind are undefined. Gives -108, with all as it was, when there is no memory or
// `size` is above 0xFFFFFFFB; -1 if `block` or `*block` is null.
ZOLT_API int32_t SetMemSize(char **block, uint32_t size);

// Gives the block back. Null does nothing.
ZOLT_API void _DisposeMem(char *block);

#endif  // ZOLT41_FOUNDATION_MEM_BLOCK_H_
