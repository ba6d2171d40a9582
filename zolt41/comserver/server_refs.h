#ifndef ZOLT41_COMSERVER_SERVER_REFS_H_
#define ZOLT41_COMSERVER_SERVER_REFS_H_

#include <cstdint>
#include <mutex>

namespace zolt {

// Held while components touch the stores, the list of sections or the section map, so that
// apartments do not meet there. No client's code runs under it, but that of a store of its own on
// which a stream works.
std::recursive_mutex &ServerLock();

// One reference for each component that needs the library. The first starts it, on the tree
// "SOFTWARE:Veltrane:Tessaly:5.0" unless the program has started it before, and the last gives it
// back. Give the new count. Another thread's reference waits until the start or the end is done.
int32_t TakeServerReference();
int32_t ReleaseServerReference();

// How many there are.
int32_t ServerReferences();

// Holds one.
class ServerReference {
 public:
  ServerReference() { TakeServerReference(); }
  ~ServerReference() { ReleaseServerReference(); }
  ServerReference(ServerReference const &) = delete;
  ServerReference &operator=(ServerReference const &) = delete;
};

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_SERVER_REFS_H_
