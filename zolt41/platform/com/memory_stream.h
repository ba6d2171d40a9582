#ifndef ZOLT41_PLATFORM_COM_MEMORY_STREAM_H_
#define ZOLT41_PLATFORM_COM_MEMORY_STREAM_H_

#include "zolt41/platform/com/com_abi.h"
#include "zolt41/platform/com/ole_storage.h"
#include "zolt41/platform/system/api.h"

// Gives a stream over the bytes of a global block (null: a new, empty one), standing at their
// beginning; it is as long as the block. Writes behind the end make the block larger, which may
// move it. With `deleteOnRelease` not 0 the stream owns the block and frees it with its last
// reference, those of its clones included, which share block and size but not the position; else
// the caller asks for it at the end with GetHGlobalFromStream. E_OUTOFMEMORY without memory.
//
// A position is never negative, and what lies between the end and a write behind it is 0. Commit
// and Revert do nothing; regions cannot be locked. It belongs to one thread at a time.
ZOLT_API HRESULT CreateStreamOnHGlobal(HGLOBAL block, BOOL deleteOnRelease, IStream **out);

// The block of such a stream, as it is now. It stays the stream's, if that owns it. E_INVALIDARG
// for any other stream, and for null.
ZOLT_API HRESULT GetHGlobalFromStream(IStream *stream, HGLOBAL *out);

#endif  // ZOLT41_PLATFORM_COM_MEMORY_STREAM_H_
