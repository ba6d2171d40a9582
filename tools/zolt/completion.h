#ifndef ZOLT41_TOOLS_ZOLT_COMPLETION_H_
#define ZOLT41_TOOLS_ZOLT_COMPLETION_H_

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "tools/zolt/output.h"

namespace zolt::tool {

// A word that would go on with a command line, and what it is, in a few words.
struct Candidate {
  std::string word;
  std::string_view note = {};
};

// What the last of the words, which may be empty, can become behind those before it: groups, verbs,
// options and their values, and from the live data sections, names of values, properties of cards
// and cards of a book. Nothing where a file's name belongs, or where the words make no sense.
// `words` are without the program's name; there is at least one. Waits for no lock.
std::vector<Candidate> CandidatesFor(std::span<std::string_view const> words, Output &out);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_COMPLETION_H_
