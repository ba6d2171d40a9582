#ifndef ZOLT41_COMSERVER_SELF_REGISTER_H_
#define ZOLT41_COMSERVER_SELF_REGISTER_H_

#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// Enters the class among the machine's classes or the user's, or takes it away; what is missing is
// no failure. See ZOLTRegisterServer for the results.
HRESULT RegisterClass(bool machine);
HRESULT UnregisterClass(bool machine);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_SELF_REGISTER_H_
