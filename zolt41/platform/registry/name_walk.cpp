#include "zolt41/platform/registry/name_walk.h"

#include <cstring>
#include <string>

#include "zolt41/platform/registry/hives.h"

namespace zolt {

bool NameWalk::StillGood(HKEY key) const {
  if (hive_ == nullptr || !hive_->StillGood(held_)) return false;
  Hives const &hives = TheHives();
  OpenKey open{};
  return hives.handles.Find(key, &open) && open.key == held_.key && &hives.At(open.hive) == hive_;
}

int32_t NameWalk::At(HKEY key, uint32_t index, std::string const **name) {
  bool const good = StillGood(key);
  *name = good ? held_.names->At(index) : nullptr;
  if (*name != nullptr) {
    ClearFailure();
    return ERROR_SUCCESS;
  }
  if (good && held_.names->Tells(index)) {
    ClearFailure();
    return ERROR_NO_MORE_ITEMS;
  }
  if (int32_t const result = NamesAt(key, index); result != ERROR_SUCCESS) {
    held_ = {};
    return result;
  }
  *name = held_.names->At(index);
  return *name == nullptr ? ERROR_NO_MORE_ITEMS : ERROR_SUCCESS;
}

int32_t NameWalk::At(HKEY key, uint32_t index, char *name, uint32_t *length) {
  std::string const *found = nullptr;
  if (int32_t const result = At(key, index, &found); result != ERROR_SUCCESS) return result;
  if (name == nullptr || length == nullptr) return ERROR_INVALID_PARAMETER;
  if (found->size() + 1 > *length) return ERROR_MORE_DATA;
  std::memcpy(name, found->c_str(), found->size() + 1);
  *length = static_cast<uint32_t>(found->size());
  return ERROR_SUCCESS;
}

}  // namespace zolt
