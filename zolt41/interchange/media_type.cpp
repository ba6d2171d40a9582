#include "zolt41/interchange/media_type.h"

#include <cstddef>

namespace zolt {
namespace {

// A file begins with `start` and has `inner`, which may be empty, at a fixed place.
struct MediaRow {
  std::string_view start;
  std::string_view inner;
  MediaType type;
};

constexpr size_t kInnerPlace = 8;

constexpr MediaRow kMedia[] = {
    {"GIF8", "", {"GIF", "image/gif"}},           {"\x89PNG\r\n\x1A\n", "", {"PNG", "image/png"}},
    {"\xFF\xD8\xFF", "", {"JPEG", "image/jpeg"}}, {"BM", "", {"BMP", "image/bmp"}},
    {"RIFF", "WEBP", {"WEBP", "image/webp"}},     {{"II*\0", 4}, "", {"TIFF", "image/tiff"}},
    {{"MM\0*", 4}, "", {"TIFF", "image/tiff"}},   {"RIFF", "WAVE", {"WAVE", "audio/wav"}},
    {"OggS", "", {"OGG", "audio/ogg"}},           {"ID3", "", {"MPEG", "audio/mpeg"}},
    {"\xFF\xFB", "", {"MPEG", "audio/mpeg"}},     {"\xFF\xF3", "", {"MPEG", "audio/mpeg"}},
    {"\xFF\xF2", "", {"MPEG", "audio/mpeg"}},     {"fLaC", "", {"FLAC", "audio/flac"}},
    {"FORM", "AIFF", {"AIFF", "audio/aiff"}},     {".snd", "", {"BASIC", "audio/basic"}},
};

}  // namespace

MediaType const *MediaTypeOf(std::string_view bytes) {
  std::string_view const inner =
      bytes.substr(bytes.size() < kInnerPlace ? bytes.size() : kInnerPlace);
  for (MediaRow const &row : kMedia) {
    if (bytes.starts_with(row.start) && inner.starts_with(row.inner)) return &row.type;
  }
  return nullptr;
}

}  // namespace zolt
