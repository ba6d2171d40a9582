#ifndef ZOLT41_NOTIFY_TRANSACTION_H_
#define ZOLT41_NOTIFY_TRANSACTION_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// Announcing the changes that are made through the stores. A transaction is opened on a section;
// each change of a value through WinPrefs then adds a record, and End tells all processes of this
// user and home that listen to the section (see CPrefNotify).
//
// One transaction is open at a time, in all processes together: a Begin function throws away what
// was not announced before it, and the changes of all writers join the transaction that is open. It
// takes 128 records; further ones are not told. Whoever needs more than that writes through
// zolt::Transaction.
//
// `level` and `extra` are carried to the listeners and mean nothing here. All of this works
// quietly, and does nothing where the shared memory cannot be had.

// Wait for the channel mutex without an end.
ZOLT_API void BeginPrefsModify(int32_t id, int32_t level, uint32_t extra);
ZOLT_API void BeginPrefsRemove(int32_t id, int32_t level, uint32_t extra);
ZOLT_API void BeginPrefsCreate(int32_t id, int32_t level, uint32_t extra);

// For the section that is registered under the part of `path` behind its last backslash, or if it
// has none, behind its last colon. If there is no such section no transaction begins, and what
// follows joins the one before.
ZOLT_API void BeginPrefsModify(char const *path, int32_t level, uint32_t extra);

// The same operation under three names. Takes 50 ms, and up to 502 yields more while processes that
// listen have not taken the records; the channel mutex is waited for without an end.
ZOLT_API void EndPrefsModify();
ZOLT_API void EndPrefsRemove();
ZOLT_API void EndPrefsCreate();

#endif  // ZOLT41_NOTIFY_TRANSACTION_H_
