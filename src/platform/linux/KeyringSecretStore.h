#pragma once

#include "settings/SecretStore.h"

#include <memory>

namespace nibbo {

/// The desktop's keyring (the Secret Service). Where there is none, every answer is an error that says so;
/// nothing is ever kept in a file of ours. Answers arrive through the GLib main context that Qt's event loop
/// runs.
class KeyringSecretStore final : public SecretStore
{
public:
    KeyringSecretStore();
    ~KeyringSecretStore() override;

    void read(const QString& name, Read answer) override;
    void write(const QString& name, const QString& secret, Done answer) override;
    void remove(const QString& name, Done answer) override;

private:
    struct Alive;
    std::shared_ptr<Alive> m_alive;
};

} // namespace nibbo
