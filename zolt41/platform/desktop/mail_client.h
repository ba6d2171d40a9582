#ifndef ZOLT41_PLATFORM_DESKTOP_MAIL_CLIENT_H_
#define ZOLT41_PLATFORM_DESKTOP_MAIL_CLIENT_H_

#include <cstdint>
#include <string_view>

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
// is among the flags and CanShowMail (xdg-email), else hands the message to sendmail, which has a
// minute for it. Texts are local text.

namespace zolt {

// What the native function gives at once for these texts, which are UTF-8: MAPI_E_INVALID_RECIPS if
// the recipient is not one address, MAPI_E_FAILURE for control characters in the subject, else
// SUCCESS_SUCCESS.
uint32_t MailRefusal(std::string_view recipient, std::string_view subject);

// A desktop and xdg-email are there.
bool CanShowMail();

// A message can be shown, or sendmail is there.
bool HasMailClient();

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_DESKTOP_MAIL_CLIENT_H_
