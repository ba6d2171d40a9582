#include "zolt41/library/inspect.h"

#include <algorithm>
#include <iterator>
#include <string>

#include "zolt41/foundation/text_field.h"
#include "zolt41/notify/channel_status.h"
#include "zolt41/platform/kernel/shared_segment.h"
#include "zolt41/platform/registry/hive_status.h"
#include "zolt41/platform/registry/registry.h"
#include "zolt41/platform/system/file_status.h"
#include "zolt41/platform/system/home.h"
#include "zolt41/platform/system/late_module.h"

namespace {

void Fill(std::string const &path, ZOLTFileState *state) {
  zolt::FileStatus const found = zolt::StatusOf(path);
  zolt::FillField(path, state->path);
  state->present = found.present ? 1 : 0;
  state->owner = found.owner;
  state->mode = found.mode;
}

void Fill(HKEY root, std::string const &home, char const *name, ZOLTHiveState *state) {
  zolt::HiveStatus const found = zolt::InspectHive(root);
  Fill(home, &state->directory);
  Fill(home + name, &state->file);
  state->failure = static_cast<int32_t>(found.failure);
  state->layout = found.layout;
  state->writable = found.writable ? 1 : 0;
  state->codePage = found.codePage;
}

ZOLTProcessKind KindOf(zolt::ListenerStatus const &listener) {
  if (listener.lagging) return ZOLTProcessLagging;
  return listener.listening ? ZOLTProcessListening : ZOLTProcessIdle;
}

void FillChannel(ZOLTState *state) {
  ZOLTChannelState &channel = state->channel;
  Fill(zolt::SegmentPathInUse(), &channel.file);
  // To look must not make it.
  channel.usable = 1;
  if (channel.file.present == 0) return;
  zolt::ChannelStatus const found = zolt::InspectChannel();
  channel.usable = found.usable ? 1 : 0;
  channel.announcements = found.announcements;
  channel.holder = found.holder;
  if (found.holder != 0) zolt::FillField(zolt::ProgramOf(found.holder), channel.holderProgram);
  for (zolt::ListenerStatus const &listener : found.listeners) {
    if (state->processCount == std::size(state->processes)) break;
    ZOLTProcessState &process = state->processes[state->processCount++];
    process.process = listener.process;
    process.kind = KindOf(listener);
    process.missed = listener.missed;
    zolt::FillField(zolt::ProgramOf(listener.process), process.program);
  }
}

void FillDoors(ZOLTState *state) {
  constexpr ZOLTDoorKind kKinds[] = {ZOLTDoorNative, ZOLTDoorMissing, ZOLTDoorReplaced};
  for (zolt::LateModuleStatus const &module : zolt::LateModules()) {
    if (state->doorCount == std::size(state->doors)) break;
    ZOLTDoorState &door = state->doors[state->doorCount++];
    zolt::FillField(module.name, door.name);
    door.kind = kKinds[static_cast<size_t>(module.kind)];
  }
}

}  // namespace

int32_t ZOLTInspect(ZOLTState *out) {
  if (out == nullptr) return 0;
  *out = {};
  zolt::Homes const homes = zolt::ResolveHomes();
  Fill(HKEY_CURRENT_USER, homes.user, "/user.hive", &out->user);
  Fill(HKEY_LOCAL_MACHINE, homes.machine, "/machine.hive", &out->machine);
  FillChannel(out);
  FillDoors(out);
  return 1;
}
