#include "zolt41/interchange/legacy_names.h"

#include <algorithm>

#include "zolt41/foundation/az_compare.h"
#include "zolt41/prefs/section_name_hash.h"

namespace zolt {
namespace {

constexpr auto kConnection = static_cast<uint32_t>(SectionLetters("COPR"));
constexpr auto kFormat = static_cast<uint32_t>(SectionLetters("FORP"));
constexpr auto kGeneral = static_cast<uint32_t>(SectionLetters("GNRL"));

constexpr LegacyName kLegacyNames[] = {
    {"MaxCap", "Flow Control", "Max Transmission Rate", kConnection, false},
    {"MinCap", "Flow Control", "Min Transmission Rate", kConnection, false},
    {"MaxRecvCap", "Flow Control", "Max Reception Rate", kConnection, false},
    {"MinRecvCap", "Flow Control", "Min Reception Rate", kConnection, false},
    {"CurrentRecvCap", "Flow Control", "Current Receive Cap", kConnection, false},
    {"IWillSendVideo", "Connect Options", "Send Video", kConnection, false},
    {"IWillRecvVideo", "Connect Options", "Receive Video", kConnection, false},
    {"IWillRecvAudio", "Connect Options", "Receive Audio", kConnection, false},
    {"CompressorType", "Compressor Settings", "VideoCodec", kFormat, false},
    {"Encoding Method", "Audio Settings", "AudioCodecIndex", kFormat, true},
    {"AutoOpen", "Settings", "AutoOpen", kGeneral, false},
    {"UseFlowControl", "Flow Control", "Use Flow Control", kConnection, false},
    {"DefaultPerformance", "Audio Settings", "AudioHighRedundancy", kGeneral, false},
    {"Enabled", "Multicast", "Multicast Enabled", kGeneral, false},
};

// By the second letter of the codec's name.
struct CodecRow {
  char letter;
  char const *number;
};

constexpr CodecRow kCodecs[] = {{'e', "2"}, {'i', "1"}, {'n', "3"}, {'o', "0"}};

}  // namespace

LegacyName const *FindLegacyName(char const *name, char const *section) {
  auto const *const found = std::ranges::find_if(kLegacyNames, [&](LegacyName const &row) {
    return AZStrEqual(row.name, name) != 0 && AZStrEqual(row.section, section) != 0;
  });
  return found == std::end(kLegacyNames) ? nullptr : found;
}

bool IsLegacySection(char const *section) {
  return std::ranges::any_of(
      kLegacyNames, [&](LegacyName const &row) { return AZStrEqual(row.section, section) != 0; });
}

std::string CodecOfEncodingMethod(std::string const &method) {
  for (CodecRow const &row : kCodecs) {
    if (method.size() > 1 && (method[1] | 0x20) == row.letter) return row.number;
  }
  return method.substr(0, 1);
}

}  // namespace zolt
