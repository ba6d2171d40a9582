#ifndef ZOLT41_PLATFORM_SYSTEM_GLOBAL_BLOCK_H_
#define ZOLT41_PLATFORM_SYSTEM_GLOBAL_BLOCK_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Global memory blocks: what functions hand over that give a block of bytes and its size. Who gets
// a block frees it, on any thread.

inline constexpr uint32_t GMEM_MOVEABLE = 0x2;
inline constexpr uint32_t GMEM_ZEROINIT = 0x40;
inline constexpr uint32_t GMEM_DISCARDABLE = 0x100;
inline constexpr uint32_t GHND = GMEM_MOVEABLE | GMEM_ZEROINIT;

// A block of `size` bytes, aligned for any object; all 0 with GMEM_ZEROINIT among the flags, which
// have no other effect. Null if there is no memory.
ZOLT_API void *GlobalAlloc(uint32_t flags, uint64_t size);

// The address of the block's first byte, good until the block is freed. Locks are not counted:
// GlobalUnlock gives 0. Null gives null.
ZOLT_API void *GlobalLock(void *block);
ZOLT_API int32_t GlobalUnlock(void *block);

// The size that was asked for. Null gives 0.
ZOLT_API uint64_t GlobalSize(void const *block);

// Makes the block `size` bytes long, keeping what fits; with GMEM_ZEROINIT what is new is 0. Gives
// the block, which may be another one then, or null, with all as it was, if there is no memory.
ZOLT_API void *GlobalReAlloc(void *block, uint64_t size, uint32_t flags);

// Gives null. Null is let pass.
ZOLT_API void *GlobalFree(void *block);

#endif  // ZOLT41_PLATFORM_SYSTEM_GLOBAL_BLOCK_H_
