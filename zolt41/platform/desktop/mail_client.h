#ifndef ZOLT41_PLATFORM_DESKTOP_MAIL_CLIENT_H_
#define ZOLT41_PLATFORM_DESKTOP_MAIL_CLIENT_H_

#include <cstdint>

// Simple mail: its published structures and numbers. The module MAPI32.DLL has MAPISendMail, which
// is reached through late_module.h.

inline constexpr uint32_t SUCCESS_SUCCESS = 0;
inline constexpr uint32_t MAPI_USER_ABORT = 1;
inline constexpr uint32_t MAPI_E_FAILURE = 2;
inline constexpr uint32_t MAPI_E_LOGIN_FAILURE = 3;
inline constexpr uint32_t MAPI_E_INVALID_RECIPS = 25;

inline constexpr uint32_t MAPI_TO = 1;
inline constexpr uint32_t MAPI_LOGON_UI = 1;
inline constexpr uint32_t MAPI_DIALOG = 8;

struct MapiRecipDesc {
  uint32_t ulReserved;
  uint32_t ulRecipClass;
  char *lpszName;
  char *lpszAddress;
  uint32_t ulEIDSize;
  void *lpEntryID;
};

struct MapiFileDesc;

struct MapiMessage {
  uint32_t ulReserved;
  char *lpszSubject;
  char *lpszNoteText;
  char *lpszMessageType;
  char *lpszDateReceived;
  char *lpszConversationID;
  uint32_t flFlags;
  MapiRecipDesc *lpOriginator;
  uint32_t nRecipCount;
  MapiRecipDesc *lpRecips;
  uint32_t nFileCount;
  MapiFileDesc *lpFiles;
};

using MapiSendMail = uint32_t (*)(uintptr_t session, uintptr_t uiParam, MapiMessage *message,
                                  uint32_t flags, uint32_t reserved);

// What the native function does: shows the desktop's mail program with the message if MAPI_DIALOG
// is among the flags and a desktop is there (xdg-email), else hands the message to sendmail. Texts
// are local text. A recipient or subject that begins with '-' or holds control characters is
// refused with MAPI_E_INVALID_RECIPS or MAPI_E_FAILURE.

namespace zolt {

// xdg-email or sendmail is there.
bool HasMailClient();

}  // namespace zolt

// A number of the profile: the file profile.ini in the home has sections in brackets with lines
// KEY=NUMBER. The default where there is none; but "MAPI" of "MAIL" is 1 if HasMailClient.
uint32_t GetProfileIntA(char const *section, char const *key, int32_t defaultValue);

#endif  // ZOLT41_PLATFORM_DESKTOP_MAIL_CLIENT_H_
