#include "benchmarks/news_gdbus.h"

#include <unistd.h>

#include "benchmarks/heard.h"
#include "benchmarks/measure.h"
#include "benchmarks/watchers.h"

namespace zolt::bench {
namespace {

constexpr char kName[] = "org.zolt.BenchService";
constexpr char kPath[] = "/org/zolt/bench/service";
constexpr char kInterface[] = "org.zolt.BenchService";
constexpr char kSignal[] = "Changed";
constexpr char kMethod[] = "Set";
constexpr char kDescription[] =
    "<node><interface name='org.zolt.BenchService'>"
    "<method name='Set'><arg type='s' direction='in'/></method>"
    "<signal name='Changed'><arg type='s'/></signal>"
    "</interface></node>";
constexpr unsigned kDoNotQueue = 4;

GDBusConnection *Connect() {
  GDBusConnection *const connection = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, nullptr);
  Require(connection != nullptr, "GDBus has no bus");
  return connection;
}

void Call(GDBusConnection *connection, char const *name, char const *path, char const *interface,
          char const *method, GVariant *arguments) {
  GVariant *const answer =
      g_dbus_connection_call_sync(connection, name, path, interface, method, arguments, nullptr,
                                  G_DBUS_CALL_FLAGS_NONE, -1, nullptr, nullptr);
  Require(answer != nullptr, "a call over GDBus failed");
  g_variant_unref(answer);
}

void CallBus(GDBusConnection *connection, char const *method, GVariant *arguments) {
  constexpr char kBus[] = "org.freedesktop.DBus";
  Call(connection, kBus, "/org/freedesktop/DBus", kBus, method, arguments);
}

void Set(GDBusConnection *connection, gchar const *, gchar const *, gchar const *, gchar const *,
         GVariant *arguments, GDBusMethodInvocation *invocation, gpointer) {
  Require(g_dbus_connection_emit_signal(connection, nullptr, kPath, kInterface, kSignal, arguments,
                                        nullptr) != FALSE,
          "GDBus sent no signal");
  g_dbus_method_invocation_return_value(invocation, nullptr);
}

void Note(GDBusConnection *, gchar const *, gchar const *, gchar const *, gchar const *,
          GVariant *arguments, gpointer heard) {
  gchar const *text = nullptr;
  g_variant_get(arguments, "(&s)", &text);
  static_cast<Heard *>(heard)->Note(text);
}

void RunUntilEnd() {
  ReadyUntil([] { _exit(0); });
  g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}

}  // namespace

GDBusNews::GDBusNews() : connection_(Connect()) {}

void GDBusNews::Send(char const *text) {
  Call(connection_, kName, kPath, kInterface, kMethod, g_variant_new("(s)", text));
}

void ServeGDBus() {
  GDBusConnection *const connection = Connect();
  GDBusNodeInfo *const node = g_dbus_node_info_new_for_xml(kDescription, nullptr);
  GDBusInterfaceVTable const methods{Set, nullptr, nullptr, {}};
  Require(g_dbus_connection_register_object(connection, kPath, node->interfaces[0], &methods,
                                            nullptr, nullptr, nullptr) != 0,
          "GDBus has no service");
  CallBus(connection, "RequestName", g_variant_new("(su)", kName, kDoNotQueue));
  RunUntilEnd();
}

void WatchGDBus() {
  Heard heard = Heard::OfThisWatcher();
  GDBusConnection *const connection = Connect();
  g_dbus_connection_signal_subscribe(connection, nullptr, kInterface, kSignal, kPath, nullptr,
                                     G_DBUS_SIGNAL_FLAGS_NONE, Note, &heard, nullptr);
  RunUntilEnd();
}

}  // namespace zolt::bench
