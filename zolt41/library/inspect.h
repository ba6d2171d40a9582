#ifndef ZOLT41_LIBRARY_INSPECT_H_
#define ZOLT41_LIBRARY_INSPECT_H_

#include <cstdint>

#include "zolt41/platform/system/api.h"

// What the library finds at this moment, for diagnosis. Failures are the numbers of
// ZOLTLastFailure; texts end with a NUL and are cut to their fields.

// A file, or a folder.
struct ZOLTFileState {
  char path[1024];  // where it is looked for
  int32_t present;  // 1 if it is there
  uint32_t owner;   // the user's id
  uint32_t mode;    // the lower nine bits
};

// The tree of the user, or of the machine.
struct ZOLTHiveState {
  ZOLTFileState directory;
  ZOLTFileState file;
  int32_t failure;    // why it cannot be read; 0 also where there is no file yet
  uint32_t layout;    // 0 where there is no file, or it could not be read
  int32_t writable;   // as far as can be told without writing
  uint32_t codePage;  // of the texts in it; 0 where there is no file, or it could not be read
};

// A process that has started the library (InitPrefs).
enum ZOLTProcessKind : int32_t {
  ZOLTProcessIdle = 0,       // it has no subscribers
  ZOLTProcessListening = 1,  // it has, and answers
  ZOLTProcessLagging = 2,    // it let a writer wait in vain: stopped, or out of time
};

// One of the processes that have started the library.
struct ZOLTProcessState {
  uint32_t process;  // its id
  char program[16];
  ZOLTProcessKind kind;
  uint32_t missed;  // announcements that it lost
};

// What processes tell each other of changes by; docs/channel.md.
struct ZOLTChannelState {
  ZOLTFileState file;      // not present while no process uses the channel
  int32_t usable;          // this process is or could be attached
  uint32_t announcements;  // how many there were, modulo 2^32
  uint32_t holder;         // the process that holds the channel mutex, or 0
  char holderProgram[16];
};

// A service of the machine that is reached late, and what it stands on.
enum ZOLTDoorKind : int32_t {
  ZOLTDoorNative = 0,
  ZOLTDoorMissing = 1,   // the machine lacks what it stands on
  ZOLTDoorReplaced = 2,  // by a trial
};

// Such a service, by its name.
struct ZOLTDoorState {
  char name[32];
  ZOLTDoorKind kind;
};

// All of it. Of the arrays as many records are filled in as the counts say.
struct ZOLTState {
  ZOLTHiveState user;
  ZOLTHiveState machine;
  ZOLTChannelState channel;
  uint32_t processCount;
  ZOLTProcessState processes[256];
  uint32_t doorCount;
  ZOLTDoorState doors[8];
};

// Fills in `*out` and gives 1; 0 for null. Needs no InitPrefs, makes no file, and waits only as
// long as any read does. Each part is as true as it was when it was looked at.
ZOLT_API int32_t ZOLTInspect(ZOLTState *out);

#endif  // ZOLT41_LIBRARY_INSPECT_H_
