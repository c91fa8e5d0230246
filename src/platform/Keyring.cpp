#include "platform/Keyring.h"

#include <libsecret/secret.h>

#include <algorithm>

namespace platform {

struct Keyring::Schema
{
    std::string name;
    std::vector<std::string> attributeNames;
    // Points into the two above.
    SecretSchema secret{};
};

namespace {

template<typename T>
struct Unref
{
    void operator()(T *object) const { g_object_unref(object); }
};
using ServicePtr = std::unique_ptr<SecretService, Unref<SecretService>>;
using ConnectionPtr = std::unique_ptr<GDBusConnection, Unref<GDBusConnection>>;

struct TableFree
{
    void operator()(GHashTable *table) const { g_hash_table_unref(table); }
};
using TablePtr = std::unique_ptr<GHashTable, TableFree>;

struct ValueFree
{
    void operator()(SecretValue *value) const { secret_value_unref(value); }
};
using ValuePtr = std::unique_ptr<SecretValue, ValueFree>;

// A GError the calls below fill in, freed with its holder.
class Error
{
public:
    Error() = default;
    ~Error() { g_clear_error(&fError); }
    Error(const Error &) = delete;
    Error &operator=(const Error &) = delete;

    GError **Out() { return &fError; }
    explicit operator bool() const { return fError != nullptr; }
    bool Is(GQuark domain, int code) const { return g_error_matches(fError, domain, code); }
    // The message without the D-Bus error name GDBus puts before it.
    std::string Text() const
    {
        if (fError == nullptr)
            return {};
        GError *copy = g_error_copy(fError);
        g_dbus_error_strip_remote_error(copy);
        std::string text = copy->message;
        g_error_free(copy);
        return text;
    }

private:
    GError *fError = nullptr;
};

// Why no keyring can be had, from the error of opening one.
std::string WhyNoService(const Error &error)
{
    if (error.Is(G_DBUS_ERROR, G_DBUS_ERROR_SERVICE_UNKNOWN)
        || error.Is(G_DBUS_ERROR, G_DBUS_ERROR_NAME_HAS_NO_OWNER))
        return "No desktop keyring: no Secret Service (such as GNOME Keyring) answers on the "
               "session bus.";
    return "The desktop keyring does not answer: " + error.Text();
}

// A keyring of its own for one call, with a session to pass secrets
// through; null with `why` filled when there is none.
ServicePtr Open(std::string *why)
{
    Error error;
    // The bus first: without one there is nothing to ask, and that reason
    // reads better than the keyring's.
    ConnectionPtr bus(g_bus_get_sync(G_BUS_TYPE_SESSION, nullptr, error.Out()));
    if (!bus) {
        *why = "No desktop keyring: Kestrin cannot reach the desktop's session bus (" + error.Text()
               + ").";
        return nullptr;
    }
    ServicePtr service(secret_service_open_sync(SECRET_TYPE_SERVICE,
                                                nullptr,
                                                SECRET_SERVICE_OPEN_SESSION,
                                                nullptr,
                                                error.Out()));
    if (!service)
        *why = WhyNoService(error);
    return service;
}

TablePtr TableOf(const Keyring::Attributes &attributes)
{
    // The strings stay the caller's; the table only points at them.
    TablePtr table(g_hash_table_new(g_str_hash, g_str_equal));
    for (const auto &[name, value] : attributes)
        g_hash_table_insert(table.get(),
                            const_cast<char *>(name.c_str()),
                            const_cast<char *>(value.c_str()));
    return table;
}

} // namespace

Keyring::Keyring(std::string schema, std::vector<std::string> attributeNames)
    : fSchema(std::make_unique<Schema>())
{
    fSchema->name = std::move(schema);
    fSchema->attributeNames = std::move(attributeNames);
    fSchema->secret.name = fSchema->name.c_str();
    fSchema->secret.flags = SECRET_SCHEMA_NONE;
    // libsecret's schema has room for 32 attributes, the last one empty.
    const size_t count = std::min<size_t>(fSchema->attributeNames.size(), 31);
    for (size_t i = 0; i < count; i++)
        fSchema->secret.attributes[i] = {fSchema->attributeNames[i].c_str(),
                                         SECRET_SCHEMA_ATTRIBUTE_STRING};
}

Keyring::~Keyring() = default;

std::string Keyring::Unavailable() const
{
    std::string why;
    Open(&why);
    return why;
}

std::string Keyring::Store(const Attributes &attributes,
                           const std::string &label,
                           const std::string &secret) const
{
    std::string why;
    ServicePtr service = Open(&why);
    if (!service)
        return why;
    const TablePtr table = TableOf(attributes);
    const ValuePtr value(secret_value_new(secret.data(), gssize(secret.size()), "text/plain"));
    Error error;
    if (!secret_service_store_sync(service.get(),
                                   &fSchema->secret,
                                   table.get(),
                                   SECRET_COLLECTION_DEFAULT,
                                   label.c_str(),
                                   value.get(),
                                   nullptr,
                                   error.Out()))
        return error ? error.Text() : "The desktop keyring did not keep the password.";
    return {};
}

Keyring::Found Keyring::Lookup(const Attributes &attributes) const
{
    Found found;
    ServicePtr service = Open(&found.error);
    if (!service)
        return found;
    const TablePtr table = TableOf(attributes);
    Error error;
    const ValuePtr value(secret_service_lookup_sync(service.get(),
                                                    &fSchema->secret,
                                                    table.get(),
                                                    nullptr,
                                                    error.Out()));
    if (error) {
        found.error = error.Text();
    } else if (value) {
        gsize length = 0;
        const gchar *bytes = secret_value_get(value.get(), &length);
        found.secret = std::string(bytes, length);
    }
    return found;
}

std::string Keyring::Clear(const Attributes &attributes) const
{
    std::string why;
    ServicePtr service = Open(&why);
    if (!service)
        return why;
    const TablePtr table = TableOf(attributes);
    Error error;
    // False with no error says that nothing was stored.
    secret_service_clear_sync(service.get(), &fSchema->secret, table.get(), nullptr, error.Out());
    return error.Text();
}

} // namespace platform
