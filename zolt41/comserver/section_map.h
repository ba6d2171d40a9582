#ifndef ZOLT41_COMSERVER_SECTION_MAP_H_
#define ZOLT41_COMSERVER_SECTION_MAP_H_

#include <cstdint>

#include "zolt41/comserver/section_object.h"
#include "zolt41/platform/com/com_abi.h"

namespace zolt {

// The section objects of the process by the id of their section, without references, so that two
// opens of a section meet in one object. Called with the ServerLock held.

// One that lives, with a reference for the caller, or null.
SectionObject *FindSectionObject(int32_t id);
// The first of an id stays until it is removed.
void KeepSectionObject(SectionObject *object);
// Nothing happens if another object, or none, is kept for its id.
void DropSectionObject(SectionObject const *object);

// Gives an interface of the section `name` in the section `parent` (0: at the top) of the user's
// store (`kind` 1) or the system's (2), making its keys where they are missing. Where an object is
// open for the section, of either store, that is the one. A null name is the root.
//
// E_POINTER without `out`; E_INVALIDARG for another kind, a card's 0 too; E_FAIL if the section
// cannot be opened, if one above it is no longer registered, or if its name has the root's id.
HRESULT OpenSection(int32_t parent, char const *name, int32_t kind, REFIID iid, void **out);

}  // namespace zolt

#endif  // ZOLT41_COMSERVER_SECTION_MAP_H_
