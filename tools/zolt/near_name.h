#ifndef ZOLT41_TOOLS_ZOLT_NEAR_NAME_H_
#define ZOLT41_TOOLS_ZOLT_NEAR_NAME_H_

#include <span>
#include <string>
#include <string_view>

namespace zolt::tool {

// How many letters must be changed, added, left out, or swapped with the next one to make `b` of
// `a`, whatever their case; above `limit` some number above it.
size_t Distance(std::string_view a, std::string_view b, size_t limit);

// The place in `names` of the one that was probably meant by `word`, or names.size().
size_t NearName(std::string_view word, std::span<std::string const> names);

// "did you mean NAME?", or "" if none is near.
std::string DidYouMean(std::string_view word, std::span<std::string const> names);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_NEAR_NAME_H_
