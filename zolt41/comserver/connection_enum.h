#ifndef ZOLT41_COMSERVER_CONNECTION_ENUM_H_
#define ZOLT41_COMSERVER_CONNECTION_ENUM_H_

#include "zolt41/comserver/sink_array.h"
#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// Give a walk over what is in the array at this moment, with a reference on each element.
// E_POINTER without a place for it, E_OUTOFMEMORY without memory.
//
// Skip to or past the end stands on the last element with S_FALSE. A clone begins anew. Next with a
// count other than 1 needs a place for the number.
HRESULT WalkConnections(SinkArray const &sinks, IEnumConnections **out);
HRESULT WalkConnectionPoints(SinkArray const &points, IEnumConnectionPoints **out);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_CONNECTION_ENUM_H_
