#pragma once

#include "platform/LoginItem.h"
#include "platform/Notifier.h"
#include "platform/ProcessList.h"
#include "settings/SecretStore.h"

namespace nibbo {

/// What a system without these services gets, and what a port to another system starts from.
class NullNotifier final : public Notifier
{
public:
    void post(const Notification&) override {}
    void withdraw(const QUuid&) override {}
};

class NullLoginItem final : public LoginItem
{
public:
    bool isEnabled() const override { return false; }
    Result<void> enable() override { return Failure{QStringLiteral("this system has no login items")}; }
    Result<void> disable() override { return {}; }
    void refresh() override {}
};

class NullProcessList final : public ProcessList
{
public:
    std::vector<RunningProcess> processes() override { return {}; }
};

class NullSecretStore final : public SecretStore
{
public:
    void read(const QString&, Read answer) override { answer(Failure{message()}); }
    void write(const QString&, const QString&, Done answer) override { answer(Failure{message()}); }
    void remove(const QString&, Done answer) override { answer(Failure{message()}); }

private:
    static QString message() { return QStringLiteral("No keyring can be reached on this desktop."); }
};

} // namespace nibbo
