#ifndef ZOLT41_PLATFORM_DESKTOP_PROFILE_H_
#define ZOLT41_PLATFORM_DESKTOP_PROFILE_H_

#include <cstdint>

// A number of the profile: the file profile.ini in the home has sections in brackets with lines
// KEY=NUMBER. Names are equal without regard to the case of ASCII letters, and blanks around names
// and numbers do not count. The default where there is none; but "MAPI" of "MAIL" is 1 if
// HasMailClient.
uint32_t GetProfileIntA(char const *section, char const *key, int32_t defaultValue);

#endif  // ZOLT41_PLATFORM_DESKTOP_PROFILE_H_
