#ifndef ZOLT41_CARDFILE_CALL_CARD_H_
#define ZOLT41_CARDFILE_CALL_CARD_H_

#include <array>
#include <cstdint>
#include <memory>
#include <optional>

#include "zolt41/cards/card_prefs.h"
#include "zolt41/cards/property_storage.h"
#include "zolt41/platform/system/api.h"

// How a card is saved.
enum CardFormat : int32_t {
  CardFormatNone = 0,    // not at all: SaveCard writes nothing and succeeds
  CardFormatBinary = 1,  // a card file, see docs/formats/card_file.md
  CardFormatText = 2,    // card text, see docs/formats/card_text.md
  CardFormatHost = 3,    // by the function that SetSaveCallCardProc was given
};

namespace zolt {
enum class Failure : int32_t;
}  // namespace zolt

// A card as a user holds it: a property list, a preference store of its own, and what ties it to a
// file: a name, a format, a key that stays with the card, and a version that counts saves.
//
// The store's bytes are the property "L-BRNDL-TYPREFS"; the store is the form to work with, and
// goes into the list by SavePrefs, which every save begins with. What takes a new list, such as
// Load and Set, builds the store anew; where there is no memory for both of them, both stay. A card
// belongs to one thread at a time and is not copied but by Copy.
class ZOLT_API CallCard final : public PCardStorage {
 public:
  // An empty card, one with a copy of the property list of `size` bytes at `data`, and one of the
  // file `name`, as Load reads it. Without memory for the card they throw std::bad_alloc.
  explicit CallCard(int32_t format = CardFormatNone);
  CallCard(void const *data, int32_t size, int32_t format);
  explicit CallCard(char const *name);
  ~CallCard();

  // A new card, which the caller deletes, with the same format, list, name, key and version. What
  // has not gone through SavePrefs is not copied, nor are Private and ParentalControl. Null without
  // memory.
  CallCard *Copy();

  // Reads the file that the card is named for. A card file makes the format CardFormatBinary and
  // replaces all that the file holds; any other is taken for card text: then the format is
  // CardFormatText, and the list is replaced by what the text holds, or stays if it cannot be read.
  // A file that cannot be opened changes nothing but the format. One that is opened and cannot be
  // read whole, or not without more memory, changes nothing either, and SaveCard gives 0 until it
  // is loaded, or the card is given a name or a format, and so it does where memory lacks to open
  // the file; the format is CardFormatNone till then if it is a card file. ZOLTLastFailure has the
  // reason. What the store had and SavePrefs did not take is gone, but still counts as modified. Of
  // text, the first two lines make no property where they only repeat one, or say that there is
  // none.
  void Load();

  // Saves the card as its format says. The file is written as a whole beside the old one and put in
  // its place, so it is never half written; links are followed, and mode and owner stay. A
  // file of several names, or of another owner, is written in place, after room for it was had. 1,
  // and the card counts as not modified; 0 if anything fails, a write on a full disk too: then the
  // old file is whole, and the card as it was. A list of more than 2,147,483,591 bytes, which Load
  // could not take, is too much for a card file. The first binary save gives the card its key.
  int32_t SaveCard();
  // The same under another name and in another format, which the card keeps only on success.
  int32_t SaveCardAs(int32_t format, char const *name);
  // Puts the store's content into the list, if it has changed.
  void SavePrefs();

  int32_t Modified() override;
  void Recalculate() override;

  // The form of the file, of the CardFormat numbers, that SaveCard writes.
  int32_t Format() const { return format_; }
  void SetFormat(int32_t format) {
    format_ = format;
    unread_ = false;
  }
  // A number for the host program, which is stored nowhere.
  int32_t Private() const { return private_; }
  void SetPrivate(int32_t value) { private_ = value; }
  // A number that is stored in a card file. Setting it counts as a change.
  int32_t ParentalControl() const { return parentalControl_; }
  void SetParentalControl(int32_t value);
  // The path of the card's file, of which 255 bytes are kept; null is the empty name.
  char const *GetName() const;
  void SetName(char const *name);
  // 32 bytes, as a rule 24 characters and NULs, and a NUL; all are 0 if there is no key. SetKey
  // takes 32 bytes.
  char const *GetKey() const;
  void SetKey(char const *key);
  // The number of saves that the file told when it was loaded.
  int32_t GetVersion() const { return version_; }
  // The card stays its owner.
  TYPrefs *Prefs() { return prefs_.get(); }

 private:
  static constexpr int32_t kNameSize = 256;
  static constexpr int32_t kKeySize = 32;  // and a NUL behind it

  ZOLT_HIDDEN bool SaveAsFormatSays();
  ZOLT_HIDDEN bool SaveBinary();
  ZOLT_HIDDEN void LoadBinary(uint32_t file, char const *head);
  ZOLT_HIDDEN void LoadText(uint32_t file);
  ZOLT_HIDDEN bool TakeList(char const *list, int32_t size);
  ZOLT_HIDDEN void LeaveUnread(zolt::Failure failure);

  int32_t format_;
  bool unread_ = false;  // the file could not be read, and is not saved over
  std::optional<std::array<char, kNameSize>> name_;
  int32_t private_ = 0;
  std::unique_ptr<TYUserPrefs> prefs_;
  int32_t parentalControl_ = 0;
  std::optional<std::array<char, kKeySize + 1>> key_;
  int32_t version_ = 0;
};

// What saves a card of CardFormatHost: gives 0 if it fails. One for the process, to be set before
// cards are saved; null takes it away.
ZOLT_API void SetSaveCallCardProc(int32_t (*proc)(CallCard *));

#endif  // ZOLT41_CARDFILE_CALL_CARD_H_
