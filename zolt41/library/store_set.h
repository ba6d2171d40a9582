#ifndef ZOLT41_LIBRARY_STORE_SET_H_
#define ZOLT41_LIBRARY_STORE_SET_H_

namespace zolt {

// Builds the four stores on `path` (null: the default paths) and makes them those of the process.
// The former ones are left alone. False without memory, and then a store is null.
bool BuildStores(char const *path);

}  // namespace zolt

#endif  // ZOLT41_LIBRARY_STORE_SET_H_
