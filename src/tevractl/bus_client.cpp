#include "tevractl/bus_client.h"

#include <gio/gio.h>

#include <memory>

namespace tevra::ctl::bus {
namespace {

constexpr const char* kName = "com.kestrum.Tevra";
constexpr const char* kPath = "/com/kestrum/Tevra";
constexpr const char* kInterface = "com.kestrum.Tevra1";
constexpr const char* kRefused = "com.kestrum.Tevra1.Error.Refused";
// Long enough for a Tevra that the bus starts on demand to come up.
constexpr int kTimeoutMs = 15000;

struct Unref {
    void operator()(GDBusConnection* c) const { g_object_unref(c); }
    void operator()(GVariant* v) const { g_variant_unref(v); }
};

Reply fromError(GError* error) {
    Reply reply;
    gchar* remote = g_dbus_error_get_remote_error(error);
    const std::string remoteName = remote ? remote : "";
    g_free(remote);
    g_dbus_error_strip_remote_error(error);
    reply.message = error->message;
    if (remoteName == kRefused) {
        reply.status = Reply::Status::refused;
    } else if (g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN) ||
               g_error_matches(error, G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER) ||
               remoteName == "org.freedesktop.DBus.Error.ServiceUnknown" ||
               remoteName == "org.freedesktop.DBus.Error.NameHasNoOwner") {
        reply.status = Reply::Status::notRunning;
    } else {
        reply.status = Reply::Status::failed;
    }
    g_error_free(error);
    return reply;
}

Reply callOn(const char* interface, const char* method, GVariant* parameters, bool startIfNeeded,
             GVariant** result) {
    GError* error = nullptr;
    std::unique_ptr<GDBusConnection, Unref> connection(
        g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, &error));
    if (!connection) {
        Reply reply{Reply::Status::noBus, error ? error->message : "no session bus", {}};
        if (error) {
            g_error_free(error);
        }
        if (parameters) {
            g_variant_unref(g_variant_ref_sink(parameters));
        }
        return reply;
    }
    GVariant* answer = g_dbus_connection_call_sync(
        connection.get(), kName, kPath, interface, method, parameters, nullptr,
        startIfNeeded ? G_DBUS_CALL_FLAGS_NONE : G_DBUS_CALL_FLAGS_NO_AUTO_START, kTimeoutMs,
        nullptr, &error);
    if (!answer) {
        return fromError(error);
    }
    *result = answer;
    return {};
}

}  // namespace

Reply call(const std::string& method, const std::vector<Argument>& arguments, bool startIfNeeded) {
    GVariantBuilder builder;
    g_variant_builder_init(&builder, G_VARIANT_TYPE_TUPLE);
    for (const Argument& argument : arguments) {
        if (const auto* number = std::get_if<int32_t>(&argument)) {
            g_variant_builder_add(&builder, "i", *number);
        } else {
            g_variant_builder_add(&builder, "s", std::get<std::string>(argument).c_str());
        }
    }
    GVariant* result = nullptr;
    Reply reply =
        callOn(kInterface, method.c_str(), g_variant_builder_end(&builder), startIfNeeded, &result);
    if (result) {
        g_variant_unref(result);
    }
    return reply;
}

Reply property(const std::string& name) {
    GVariant* result = nullptr;
    Reply reply = callOn("org.freedesktop.DBus.Properties", "Get",
                         g_variant_new("(ss)", kInterface, name.c_str()),
                         /*startIfNeeded=*/false, &result);
    if (!result) {
        return reply;
    }
    GVariant* boxed = nullptr;
    g_variant_get(result, "(v)", &boxed);
    if (boxed && g_variant_is_of_type(boxed, G_VARIANT_TYPE_STRING)) {
        reply.value = g_variant_get_string(boxed, nullptr);
    }
    if (boxed) {
        g_variant_unref(boxed);
    }
    g_variant_unref(result);
    return reply;
}

}  // namespace tevra::ctl::bus
