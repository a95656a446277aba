#include "platform/linux/KeyringSecretStore.h"

// GLib has members named "signals", which is a macro of Qt's where it is included first.
#undef signals
#include <libsecret/secret.h>

#include <QTimer>

#include <utility>

namespace nibbo {

struct KeyringSecretStore::Alive
{};

namespace {

const SecretSchema* schema()
{
    static const SecretSchema value = {
        "io.nibbo.Nibbo",
        SECRET_SCHEMA_NONE,
        {{"name", SECRET_SCHEMA_ATTRIBUTE_STRING}, {nullptr, SecretSchemaAttributeType()}},
        0,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr,
        nullptr};
    return &value;
}

Failure failureOf(GError* error)
{
    QString message = error != nullptr ? QString::fromUtf8(error->message) : QStringLiteral("unknown error");
    if (error != nullptr &&
        (error->domain == G_DBUS_ERROR || error->domain == G_IO_ERROR || error->domain == G_SPAWN_ERROR))
        message =
            QStringLiteral("No keyring (Secret Service) can be reached on this desktop: %1").arg(message);
    g_clear_error(&error);
    return Failure{message};
}

/// One call under way. The answer is given only while the store lives, and from the event loop.
template <typename Answer>
struct Pending
{
    std::weak_ptr<void> alive;
    Answer answer;

    template <typename Value>
    static void finish(gpointer data, const Value& value)
    {
        const std::unique_ptr<Pending> pending(static_cast<Pending*>(data));
        if (!pending->alive.expired())
            pending->answer(value);
    }
};

using PendingRead = Pending<SecretStore::Read>;
using PendingDone = Pending<SecretStore::Done>;

} // namespace

KeyringSecretStore::KeyringSecretStore()
    : m_alive(std::make_shared<Alive>())
{}

KeyringSecretStore::~KeyringSecretStore() = default;

void KeyringSecretStore::read(const QString& name, Read answer)
{
    secret_password_lookup(
        schema(), nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            GError* error = nullptr;
            gchar* found = secret_password_lookup_finish(result, &error);
            if (error != nullptr) {
                PendingRead::finish(data, Result<std::optional<QString>>(failureOf(error)));
                return;
            }
            const std::optional<QString> secret =
                found != nullptr ? std::optional(QString::fromUtf8(found)) : std::nullopt;
            secret_password_free(found);
            PendingRead::finish(data, Result<std::optional<QString>>(secret));
        },
        new PendingRead{m_alive, std::move(answer)}, "name", name.toUtf8().constData(), nullptr);
}

void KeyringSecretStore::write(const QString& name, const QString& secret, Done answer)
{
    secret_password_store(
        schema(), SECRET_COLLECTION_DEFAULT, QStringLiteral("Nibbo %1").arg(name).toUtf8().constData(),
        secret.toUtf8().constData(), nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            GError* error = nullptr;
            const bool stored = secret_password_store_finish(result, &error) != FALSE;
            PendingDone::finish(data, stored ? Result<void>() : Result<void>(failureOf(error)));
        },
        new PendingDone{m_alive, std::move(answer)}, "name", name.toUtf8().constData(), nullptr);
}

void KeyringSecretStore::remove(const QString& name, Done answer)
{
    secret_password_clear(
        schema(), nullptr,
        [](GObject*, GAsyncResult* result, gpointer data) {
            GError* error = nullptr;
            secret_password_clear_finish(result, &error);
            PendingDone::finish(data, error == nullptr ? Result<void>() : Result<void>(failureOf(error)));
        },
        new PendingDone{m_alive, std::move(answer)}, "name", name.toUtf8().constData(), nullptr);
}

} // namespace nibbo
