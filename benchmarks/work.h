#ifndef ZOLT41_BENCH_WORK_H_
#define ZOLT41_BENCH_WORK_H_

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace zolt::bench {

// The same for every store: 240 values of about thirty bytes in one section.
inline constexpr size_t kValues = 240;
inline constexpr size_t kTextSize = 256;
inline constexpr char kSectionName[] = "Bench";

// What the names of one section are for the values 0 to count - 1: value-000000 and so on.
std::vector<std::string> Names(size_t count);

// The text of a value; each call gives another one. Good until the next call in this thread.
char const *NextText(std::string const &name);

// Whether `text` is one that NextText gave for `name`.
bool IsTextOf(std::string const &name, std::string_view text);

}  // namespace zolt::bench

#endif  // ZOLT41_BENCH_WORK_H_
