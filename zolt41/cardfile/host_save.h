#ifndef ZOLT41_CARDFILE_HOST_SAVE_H_
#define ZOLT41_CARDFILE_HOST_SAVE_H_

class CallCard;

namespace zolt {

// Saves a card through the host program's function; false if there is none, or it fails.
bool SaveOnHost(CallCard *card);

}  // namespace zolt

#endif  // ZOLT41_CARDFILE_HOST_SAVE_H_
