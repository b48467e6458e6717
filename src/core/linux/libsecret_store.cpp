#include "core/linux/libsecret_store.h"

#include <libsecret/secret.h>

#include <memory>

namespace tevra {
namespace {

// DONT_MATCH_NAME: items made by other tools (secret-tool store ... service
// com.kestrum.tevra account GROQ_API_KEY) carry no schema name and must match.
const SecretSchema* credentialSchema() {
    static const SecretSchema schema = [] {
        SecretSchema s{};
        s.name = "com.kestrum.tevra.Credential";
        s.flags = SECRET_SCHEMA_DONT_MATCH_NAME;
        s.attributes[0] = {"service", SECRET_SCHEMA_ATTRIBUTE_STRING};
        s.attributes[1] = {"account", SECRET_SCHEMA_ATTRIBUTE_STRING};
        s.attributes[2] = {nullptr, SECRET_SCHEMA_ATTRIBUTE_STRING};
        return s;
    }();
    return &schema;
}

struct HashTableUnref {
    void operator()(GHashTable* table) const { g_hash_table_unref(table); }
};
struct ValueUnref {
    void operator()(SecretValue* value) const { secret_value_unref(value); }
};
struct ItemListFree {
    void operator()(GList* list) const { g_list_free_full(list, g_object_unref); }
};

using HashTablePtr = std::unique_ptr<GHashTable, HashTableUnref>;
using ValuePtr = std::unique_ptr<SecretValue, ValueUnref>;
using ItemListPtr = std::unique_ptr<GList, ItemListFree>;

// Holds the error of the last call it was handed to. Errors are dropped: an
// unreachable store is an empty one.
class ErrorSink {
public:
    ~ErrorSink() { g_clear_error(&error_); }
    GError** out() {
        g_clear_error(&error_);
        return &error_;
    }
    bool failed() const { return error_ != nullptr; }

private:
    GError* error_ = nullptr;
};

// A Secret Service proxy of its own for one operation, on the session bus of
// the environment. A fresh proxy per call picks up a keyring daemon that
// restarted and keeps calls from different threads apart.
class Session {
public:
    Session() {
        ErrorSink error;
        // Connecting first tells "no bus" apart cheaply, and lets us stop the
        // process-wide connection from ending the process when the bus goes.
        GDBusConnection* bus = g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error.out());
        if (bus == nullptr) {
            return;
        }
        g_dbus_connection_set_exit_on_close(bus, FALSE);
        g_object_unref(bus);
        service_ = secret_service_open_sync(SECRET_TYPE_SERVICE, nullptr,
                                            SECRET_SERVICE_OPEN_SESSION, nullptr, error.out());
    }

    ~Session() {
        if (service_ != nullptr) {
            g_object_unref(service_);
        }
    }

    Session(const Session&) = delete;
    Session& operator=(const Session&) = delete;

    SecretService* service() const { return service_; }

private:
    SecretService* service_ = nullptr;
};

HashTablePtr attributesFor(const std::string& service, const std::string& account) {
    // The table borrows the strings; both outlive every call it is passed to.
    HashTablePtr table(g_hash_table_new(g_str_hash, g_str_equal));
    g_hash_table_insert(table.get(), const_cast<char*>("service"),
                        const_cast<char*>(service.c_str()));
    g_hash_table_insert(table.get(), const_cast<char*>("account"),
                        const_cast<char*>(account.c_str()));
    return table;
}

}  // namespace

LibsecretStore::LibsecretStore(std::string service) : service_(std::move(service)) {}

std::optional<std::string> LibsecretStore::lookup(std::string_view account) {
    Session session;
    if (session.service() == nullptr) {
        return std::nullopt;
    }
    const std::string accountName(account);
    const auto attributes = attributesFor(service_, accountName);
    ErrorSink error;
    ValuePtr value(secret_service_lookup_sync(session.service(), credentialSchema(),
                                              attributes.get(), nullptr, error.out()));
    if (value == nullptr) {
        return std::nullopt;
    }
    gsize length = 0;
    const gchar* bytes = secret_value_get(value.get(), &length);
    return std::string(bytes, length);
}

bool LibsecretStore::store(std::string_view account, std::string_view data) {
    Session session;
    if (session.service() == nullptr) {
        return false;
    }
    const std::string accountName(account);
    const auto attributes = attributesFor(service_, accountName);
    ValuePtr value(secret_value_new(data.data(), static_cast<gssize>(data.size()), "text/plain"));

    ErrorSink error;
    ItemListPtr items(secret_service_search_sync(
        session.service(), credentialSchema(), attributes.get(),
        static_cast<SecretSearchFlags>(SECRET_SEARCH_ALL | SECRET_SEARCH_UNLOCK), nullptr,
        error.out()));
    if (items != nullptr) {
        bool updated = true;
        for (GList* node = items.get(); node != nullptr; node = node->next) {
            updated = secret_item_set_secret_sync(SECRET_ITEM(node->data), value.get(), nullptr,
                                                  error.out()) &&
                      updated;
        }
        return updated;
    }
    const std::string label = "Tevra: " + accountName;
    return secret_service_store_sync(session.service(), credentialSchema(), attributes.get(),
                                     SECRET_COLLECTION_DEFAULT, label.c_str(), value.get(), nullptr,
                                     error.out());
}

bool LibsecretStore::erase(std::string_view account) {
    Session session;
    if (session.service() == nullptr) {
        return false;
    }
    const std::string accountName(account);
    const auto attributes = attributesFor(service_, accountName);
    ErrorSink error;
    // False without an error means there was nothing to delete, which is success too.
    secret_service_clear_sync(session.service(), credentialSchema(), attributes.get(), nullptr,
                              error.out());
    return !error.failed();
}

}  // namespace tevra
