#ifndef ZOLT41_ZOLT41_H_
#define ZOLT41_ZOLT41_H_

// All that the library offers its clients.

#include "zolt41/foundation/a_string.h"
#include "zolt41/foundation/az_compare.h"
#include "zolt41/foundation/l_string.h"
#include "zolt41/foundation/mem_block.h"
#include "zolt41/foundation/u_compare.h"
#include "zolt41/foundation/u_convert.h"
#include "zolt41/foundation/u_string.h"
#include "zolt41/foundation/zoltx_list.h"
#include "zolt41/foundation/zoltx_ptr_array.h"
#include "zolt41/foundation/zoltx_string.h"
#include "zolt41/foundation/zoltx_string_array.h"
#include "zolt41/library/inspect.h"
#include "zolt41/library/library.h"
#include "zolt41/library/pref_tree.h"
#include "zolt41/notify/notification_info.h"
#include "zolt41/notify/pref_notify.h"
#include "zolt41/notify/transaction.h"
#include "zolt41/platform/kernel/message_loop.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/last_failure.h"
#include "zolt41/prefs/enum_prefs.h"
#include "zolt41/prefs/list_enum_data.h"
#include "zolt41/prefs/list_enum_prefs.h"
#include "zolt41/prefs/pref_level.h"
#include "zolt41/prefs/pref_sections.h"
#include "zolt41/prefs/section.h"
#include "zolt41/prefs/section_name_hash.h"
#include "zolt41/prefs/standard_sections.h"
#include "zolt41/prefs/stores.h"
#include "zolt41/prefs/typed_prefs.h"
#include "zolt41/prefs/win_prefs.h"
#include "zolt41/prefs/write_transaction.h"

#endif  // ZOLT41_ZOLT41_H_
