#ifndef ZOLT41_INTERCHANGE_MEDIA_TYPE_H_
#define ZOLT41_INTERCHANGE_MEDIA_TYPE_H_

#include <string_view>

namespace zolt {

struct MediaType {
  std::string_view vcard3;  // as a vCard of 3.0 names it
  std::string_view name;    // type and subtype
};

// What a picture or a sound is, by its first bytes; null if that is not known.
MediaType const *MediaTypeOf(std::string_view bytes);

}  // namespace zolt

#endif  // ZOLT41_INTERCHANGE_MEDIA_TYPE_H_
