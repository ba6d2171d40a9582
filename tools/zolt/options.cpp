#include "tools/zolt/options.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace zolt::tool {

namespace {

constexpr std::array kOptions = {
    Option{OptionId::home, 0, "home", "DIR", true, "the home of the hives, as ZOLT_HOME"},
    Option{OptionId::tree, 0, "tree", "PATH", true, "the preference tree, instead of the default"},
    Option{OptionId::level, 'L', "level", "LEVEL", true,
           "user (the default), system, shared-user or shared-system:\n"
           "the store that a write goes to and a read begins at"},
    Option{OptionId::only, 0, "only", "", true, "read that store alone, not along its chain"},
    Option{OptionId::json, 0, "json", "", true, "one JSON document"},
    Option{OptionId::color, 0, "color", "WHEN", true, "auto, always or never"},
    Option{OptionId::progress, 0, "progress", "WHEN", true, "auto, always or never"},
    Option{OptionId::wait, 0, "wait", "S", true,
           "seconds to wait for a lock (5; 0: not at all);\n"
           "for another program that announces changes, one at most"},
    Option{OptionId::quiet, 'q', "quiet", "", true, "no chatter"},
    Option{OptionId::yes, 'y', "yes", "", true, "yes to every question"},
    Option{OptionId::dryRun, 'n', "dry-run", "", true, "say what would change and change nothing"},
    Option{OptionId::exitCode, 0, "exit-code", "", true,
           "with -n: end with 1 if something would change"},
    Option{OptionId::nul, 'z', "null", "", true, "raw fields, each ended by a NUL"},
    Option{OptionId::help, 'h', "help", "", true, "this text"},
    Option{OptionId::version, 0, "version", "", true, "the version of zolt"},
    Option{OptionId::type, 't', "type", "TYPE", false,
           "of a preference text (the default), num, bool or bytes;\n"
           "of a card's property unicode (the default), ascii, url, ..."},
    Option{OptionId::defaultValue, 0, "default", "VALUE", false,
           "what to print where there is no such value"},
    Option{OptionId::parentFirst, 0, "parent-first", "", false,
           "ask the stores of the chain before the one of -L"},
    Option{OptionId::output, 'o', "output", "FILE", false,
           "write to FILE; - is standard output, a terminal too"},
    Option{OptionId::from, 0, "from", "FILE", false,
           "take the value from FILE, or with - from standard input;\n"
           "of a text, one line end at its end is dropped"},
    Option{OptionId::ifValue, 0, "if", "OLD", false, "only if this store holds exactly OLD"},
    Option{OptionId::ifAbsent, 0, "if-absent", "", false, "only if this store holds nothing"},
    Option{OptionId::recursive, 'r', "recursive", "", false, "also the sections below"},
    Option{OptionId::initial, 0, "initial", "", false, "first the values that are there now"},
    Option{OptionId::eventCount, 0, "count", "N", false,
           "end after N lines; with --json after N events"},
    Option{OptionId::timeout, 0, "timeout", "S", false, "end with 5 after S seconds"},
    Option{OptionId::asCommands, 0, "as-commands", "", false,
           "as commands for a shell that make the same changes"},
    Option{OptionId::exclude, 0, "exclude", "GLOB", false,
           "leave out sections and values of this name, such as\n"
           "'Conferencing:Audio' or '*:Recent*'; may be given several times"},
    Option{OptionId::replace, 0, "replace", "", false,
           "in the sections that FILE names, remove what it does not"},
    Option{OptionId::undo, 0, "undo", "FILE", false,
           "save to FILE what brings the old values back"},
    Option{OptionId::patch, 0, "patch", "", false, "in a form that prefs load takes"},
    Option{OptionId::add, 0, "add", "VALUE", false,
           "put VALUE at the end; may be given several times"},
    Option{OptionId::remove, 0, "remove", "N", false,
           "take out the item of this number; may be given several\n"
           "times"},
    Option{OptionId::flags, 0, "flags", "LIST", false,
           "flags with commas between: HOME,WORK,FAX,..."},
    Option{OptionId::to, 0, "to", "FORM", false, "card or text"},
    Option{OptionId::profile, 0, "profile", "NAME", false, "classic, 3.0 (the default) or 4.0"},
    Option{OptionId::subject, 0, "subject", "TEXT", false, "the subject of the message"},
    Option{OptionId::text, 0, "text", "TEXT", false, "the text of the message"},
    Option{OptionId::compose, 0, "compose", "", false,
           "show it in the desktop's mail program first"},
    Option{OptionId::file, 'f', "file", "FILE", false, "the book"},
    Option{OptionId::first, 0, "first", "", false, "of several cards the first"},
    Option{OptionId::all, 0, "all", "", false, "all cards that are so named"},
    Option{OptionId::category, 0, "category", "CATEGORY", false,
           "cards in this category; may be given several times"},
    Option{OptionId::email, 0, "email", "ADDRESS", false, "an e-mail address; several times"},
    Option{OptionId::tel, 0, "tel", "NUMBER", false, "a telephone number; several times"},
    Option{OptionId::prune, 0, "prune", "", false, "also remove what the other side does not have"},
    Option{OptionId::format, 0, "format", "FORM", false, "card (the default), text or vcard"},
    Option{OptionId::repair, 0, "repair", "", false,
           "mend the file, and keep the old one beside it"},
    Option{OptionId::machine, 0, "machine", "", false, "for all users of this machine"},
    Option{OptionId::module, 0, "module", "PATH", false, "the library's file"},
};

constexpr bool InOrder() {
  for (size_t i = 0; i < kOptions.size(); i++)
    if (static_cast<size_t>(kOptions[i].id) != i) return false;
  return kOptions.size() == static_cast<size_t>(OptionId::count);
}
static_assert(InOrder());

Option const *Found(std::array<Option, kOptions.size()>::const_iterator place) {
  return place == kOptions.end() ? nullptr : &*place;
}

}  // namespace

std::span<Option const> Options() {
  return kOptions;
}

Option const &OptionOf(OptionId id) {
  return kOptions[static_cast<size_t>(id)];
}

Option const *FindOption(std::string_view name) {
  return Found(std::ranges::find(kOptions, name, &Option::name));
}

Option const *FindOption(char letter) {
  return letter == 0 ? nullptr : Found(std::ranges::find(kOptions, letter, &Option::letter));
}

}  // namespace zolt::tool
