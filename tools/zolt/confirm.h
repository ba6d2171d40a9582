#ifndef ZOLT41_TOOLS_ZOLT_CONFIRM_H_
#define ZOLT41_TOOLS_ZOLT_CONFIRM_H_

#include <string>

#include "tools/zolt/settings.h"

namespace zolt::tool {

// Gets a yes for what cannot be taken back lightly: from -y, or from who sits at the terminal.
// Throws a usage error that names -y where nobody can be asked, and ends the verb with 1 on a no.
// `what` is what would be done, such as "remove 3 values".
void Confirm(std::string const &what, Settings const &settings);

}  // namespace zolt::tool

#endif  // ZOLT41_TOOLS_ZOLT_CONFIRM_H_
