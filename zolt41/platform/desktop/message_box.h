#ifndef ZOLT41_PLATFORM_DESKTOP_MESSAGE_BOX_H_
#define ZOLT41_PLATFORM_DESKTOP_MESSAGE_BOX_H_

#include <cstdint>

// Shows a message: by the dialog helper of a desktop, whose user is not waited for, else, and where
// the helper fails at once, as a line on standard error. A standard error that takes nothing at the
// moment, or has no reader, gets nothing. Texts are local text; `flags` and `owner` have no effect,
// a null caption is "zolt41". Gives 1.
int32_t MessageBoxA(uintptr_t owner, char const *text, char const *caption, uint32_t flags);

#endif  // ZOLT41_PLATFORM_DESKTOP_MESSAGE_BOX_H_
