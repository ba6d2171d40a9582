#include "tools/zolt/diagnosis.h"

#include <cstdio>
#include <nlohmann/json.hpp>
#include <span>

#include "tools/zolt/errors.h"
#include "tools/zolt/registration.h"

namespace zolt::tool {

namespace {

using Json = nlohmann::ordered_json;

constexpr uint32_t kOthers = 077;

std::string Octal(uint32_t mode) {
  char text[16];
  std::snprintf(text, sizeof text, "%04o", mode);
  return text;
}

std::span<ZOLTProcessState const> ProcessesOf(ZOLTState const &state) {
  return std::span(state.processes).first(state.processCount);
}

void CheckOwner(ZOLTFileState const &file, uint32_t user, std::vector<Problem> *problems) {
  if (file.present == 0 || file.owner == user) return;
  problems->push_back({file.path, "belongs to another user, " + std::to_string(file.owner),
                       "work as that user, or give it away with chown"});
}

void CheckPrivate(ZOLTFileState const &file, uint32_t user, std::vector<Problem> *problems) {
  CheckOwner(file, user, problems);
  if (file.present == 0 || (file.mode & kOthers) == 0) return;
  problems->push_back({file.path, "is open to other users, mode " + Octal(file.mode),
                       "close it with chmod go= on it"});
}

void CheckReadable(ZOLTHiveState const &hive, std::vector<Problem> *problems) {
  if (hive.failure == 0) return;
  FailureWords const &words = WordsOf(hive.failure);
  std::string hint = words.hint;
  if (hint.empty()) hint = "look at the file and the directories above it";
  problems->push_back({hive.file.path, words.message, hint});
}

void CheckWritable(ZOLTHiveState const &hive, std::vector<Problem> *problems) {
  if (hive.file.present == 0 || hive.failure != 0 || hive.writable != 0) return;
  problems->push_back({hive.file.path, "cannot be written",
                       "look at the rights of the file and its directory, and at the file system"});
}

void CheckCodePage(ZOLTHiveState const &hive, std::vector<Problem> *problems) {
  if (hive.codePage == 0 || hive.codePage == ZOLTCodePage()) return;
  std::string const page = std::to_string(hive.codePage);
  problems->push_back({hive.file.path,
                       "holds texts in code page " + page + ", which are read and written in " +
                           std::to_string(ZOLTCodePage()),
                       "set ZOLT_CODEPAGE=" + page + " for all programs"});
}

void CheckChannel(ZOLTState const &state, uint32_t user, std::vector<Problem> *problems) {
  ZOLTChannelState const &channel = state.channel;
  CheckOwner(channel.file, user, problems);
  if (channel.usable == 0) {
    problems->push_back({channel.file.path, "cannot be used, so no program hears of changes",
                         "end the programs that use it, and remove it"});
  }
  for (ZOLTProcessState const &process : ProcessesOf(state)) {
    if (process.kind != ZOLTProcessLagging) continue;
    std::string const number = std::to_string(process.process);
    problems->push_back({"process " + number + " (" + process.program + ")",
                         "does not take the news of changes, and writers wait for it",
                         "kill -CONT " + number + " if it is stopped, else end it"});
  }
}

Json FileObject(ZOLTFileState const &file) {
  Json object;
  object["path"] = file.path;
  object["present"] = file.present != 0;
  if (file.present == 0) return object;
  object["owner"] = file.owner;
  object["mode"] = Octal(file.mode);
  return object;
}

Json HiveObject(ZOLTHiveState const &hive) {
  Json object;
  object["directory"] = FileObject(hive.directory);
  object["file"] = FileObject(hive.file);
  object["failure"] = hive.failure == 0 ? Json() : Json(WordsOf(hive.failure).kind);
  object["layout"] = hive.layout == 0 ? Json() : Json(hive.layout);
  object["writable"] = hive.writable != 0;
  object["codePage"] = hive.codePage == 0 ? Json() : Json(hive.codePage);
  return object;
}

Json ChannelObject(ZOLTChannelState const &channel) {
  Json object;
  object["file"] = FileObject(channel.file);
  object["usable"] = channel.usable != 0;
  object["announcements"] = channel.announcements;
  object["holder"] = nullptr;
  if (channel.holder != 0) {
    object["holder"] = {{"process", channel.holder}, {"program", channel.holderProgram}};
  }
  return object;
}

}  // namespace

std::string ServiceOf(ZOLTDoorState const &door) {
  struct Row {
    char const *module;
    char const *service;
  };
  static constexpr Row kRows[] = {{"MAPI32.DLL", "mail"},
                                  {"Shell32", "links"},
                                  {"Wininet.dll", "network"},
                                  {"Rasapi32.dll", "dial-up"}};
  for (Row const &row : kRows)
    if (std::string_view(row.module) == door.name) return row.service;
  return door.name;
}

char const *NameOf(ZOLTDoorKind kind) {
  static constexpr char const *kNames[] = {"native", "missing", "replaced"};
  return kNames[static_cast<size_t>(kind)];
}

char const *NameOf(ZOLTProcessKind kind) {
  static constexpr char const *kNames[] = {"idle", "listening", "lagging"};
  return kNames[kind];
}

std::vector<Problem> Diagnose(ZOLTState const &state, uint32_t user) {
  std::vector<Problem> problems;
  CheckPrivate(state.user.directory, user, &problems);
  CheckPrivate(state.user.file, user, &problems);
  CheckReadable(state.user, &problems);
  CheckWritable(state.user, &problems);
  CheckReadable(state.machine, &problems);
  CheckCodePage(state.user, &problems);
  CheckCodePage(state.machine, &problems);
  CheckChannel(state, user, &problems);
  return problems;
}

std::string StateDocument(ZOLTState const &state, Registration const &registration,
                          std::vector<Problem> const &problems) {
  Json document;
  document["schema"] = 1;
  document["user"] = HiveObject(state.user);
  document["machine"] = HiveObject(state.machine);
  document["channel"] = ChannelObject(state.channel);
  document["processes"] = Json::array();
  for (ZOLTProcessState const &process : ProcessesOf(state)) {
    document["processes"].push_back({{"process", process.process},
                                     {"program", process.program},
                                     {"state", NameOf(process.kind)},
                                     {"missed", process.missed}});
  }
  document["services"] = Json::array();
  for (uint32_t i = 0; i < state.doorCount; i++) {
    document["services"].push_back(
        {{"service", ServiceOf(state.doors[i])}, {"state", NameOf(state.doors[i].kind)}});
  }
  document["component"] = {{"scope", registration.scope}, {"module", registration.module}};
  document["problems"] = Json::array();
  for (Problem const &each : problems) {
    document["problems"].push_back(
        {{"subject", each.subject}, {"problem", each.problem}, {"hint", each.hint}});
  }
  return document.dump(-1, ' ', false, Json::error_handler_t::replace) + "\n";
}

}  // namespace zolt::tool
