#include "zolt41/notify/pending_change.h"

#include <cstring>
#include <new>

namespace zolt {
namespace {

template <size_t size>
void CopyText(char const (&from)[size], char (&to)[size]) {
  size_t const length = strnlen(from, size - 1);
  std::memcpy(to, from, length);
  to[length] = '\0';
}

}  // namespace

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
    CopyText(records[i].name, copy->name);
    CopyText(records[i].newValue, copy->newValue);
    CopyText(records[i].oldValue, copy->oldValue);
  }
  return change;
} catch (std::bad_alloc const &) {
  return nullptr;
}

}  // namespace zolt
