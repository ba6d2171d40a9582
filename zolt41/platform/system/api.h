#ifndef ZOLT41_PLATFORM_SYSTEM_API_H_
#define ZOLT41_PLATFORM_SYSTEM_API_H_

// Marks what the shared library shows to its clients; everything else is hidden.
#define ZOLT_API __attribute__((visibility("default")))

// Marks a private member of a class that is shown.
#define ZOLT_HIDDEN __attribute__((visibility("hidden")))

#endif  // ZOLT41_PLATFORM_SYSTEM_API_H_
