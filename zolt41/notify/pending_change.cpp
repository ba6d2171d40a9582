#include "zolt41/notify/pending_change.h"

#include <new>

#include "zolt41/foundation/text_field.h"

namespace zolt {
void FreeRecords(ZOLTXPtrArray *records) {
  for (int32_t i = 0; i < records->GetSize(); i++) {
    delete static_cast<NotificationInfo *>(records->GetAt(i));
  }
  records->RemoveAll();
}

std::unique_ptr<PendingChange> PendingChange::Copy(int32_t id, int32_t level,
                                                   NotificationInfo const *records, int32_t count,
                                                   uint32_t extra, int32_t type) try {
  auto change = std::make_unique<PendingChange>();
  change->id = id;
  change->level = level;
  change->extra = extra;
  change->type = type;
  if (count > 0) change->records.SetSize(count, -1);
  for (int32_t i = 0; i < count; i++) {
    auto *const copy = new NotificationInfo;
    change->records.SetAt(i, copy);
    FillField(TextIn(records[i].name), copy->name);
    FillField(TextIn(records[i].newValue), copy->newValue);
    FillField(TextIn(records[i].oldValue), copy->oldValue);
  }
  return change;
} catch (std::bad_alloc const &) {
  return nullptr;
}

}  // namespace zolt
