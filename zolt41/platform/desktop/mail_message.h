#ifndef ZOLT41_PLATFORM_DESKTOP_MAIL_MESSAGE_H_
#define ZOLT41_PLATFORM_DESKTOP_MAIL_MESSAGE_H_

#include <string>
#include <string_view>

namespace zolt {

// A message as mail programs take it; all texts are UTF-8.

// One address and nothing that a mail program could take for a list, an option, or a way around the
// address: visible ASCII, no '-' at the beginning, none of , ; : < > ( ) [ ] " and backslash.
bool IsOneAddress(std::string_view recipient);

// The URI that a desktop's mail program opens. Empty fields are left out; of the recipient all is
// encoded that could end it.
std::string MailtoUri(std::string_view recipient, std::string_view subject, std::string_view note);

// Head and text with lines that end with LF, as sendmail reads them. The recipient is one address
// and the subject holds no control characters. Lines are never longer than mail may have them: a
// subject or a text that would need it is encoded.
std::string MessageText(std::string const &recipient, std::string const &subject,
                        std::string_view note);

}  // namespace zolt

#endif  // ZOLT41_PLATFORM_DESKTOP_MAIL_MESSAGE_H_
