#include "tools/zolt/card_source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tools/zolt/card_damage.h"
#include "tools/zolt/errors.h"
#include "tools/zolt/input.h"
#include "tools/zolt/library_session.h"

namespace zolt::tool {

namespace {

constexpr size_t kLongestPath = 255;

void CheckPath(std::string const &path) {
  if (path.empty()) Refuse("", "names no file");
  if (path.size() > kLongestPath) Refuse(path, "a card's path has at most 255 bytes");
}

// The system's own words, where the library knows of an I/O failure only.
void CheckReadable(std::string const &path) {
  int const file = open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) throw SystemFailure(path, errno);
  struct stat status {};
  bool const plain = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
  close(file);
  if (!plain) throw ToolError(kFailed, "io", path, "is no plain file");
}

}  // namespace

ToolError FileFailure(std::string const &path) {
  ToolError failure = StoreFailure(path);
  if (failure.code == kLocked) failure.hint = "it is open in another program";
  return failure;
}

void NeedSectionNames(Call const &call) {
  PrepareLibrary(call.arguments, call.settings);
  // Until the process ends, whose end the library notices by itself.
  static auto const *const session = new LibrarySession;
  static_cast<void>(session);
}

std::unique_ptr<CallCard> LoadCard(Call const &call, std::string_view operand) {
  std::string const path(operand);
  CheckPath(path);
  CheckReadable(path);
  std::string const bytes = ReadInput(path);
  if (!IsCardFile(bytes)) NeedSectionNames(call);
  auto card = std::make_unique<CallCard>(CardFormatNone);
  card->SetName(path.c_str());
  card->Load();
  if (ZOLTLastFailure(nullptr, 0) != 0) throw FileFailure(path);
  std::vector<CardDamage> const damage = DamageOf(path, bytes);
  if (!damage.empty()) {
    throw ToolError(kDamaged, "damaged", path + ":" + damage.front().place, damage.front().what,
                    "zolt card check tells all");
  }
  return card;
}

void SaveCard(CallCard *card) {
  if (card->SaveCard() == 0) throw FileFailure(card->GetName());
}

void SaveCardAs(CallCard *card, int32_t format, std::string const &path) {
  CheckPath(path);
  if (card->SaveCardAs(format, path.c_str()) == 0) throw FileFailure(path);
}

void SaveVCard(CallCard *card, VCardProfile profile, std::string const &path) {
  if (ExportVCardAs(card, path.c_str(), profile, card->GetKey()) == 0) throw FileFailure(path);
}

}  // namespace zolt::tool
