#pragma once

#include "agents/ProviderRegistry.h"
#include "app/ShareFolder.h"
#include "base/AtomicFile.h"
#include "hooks/PosixFileSystem.h"
#include "pet/PetViewModel.h"
#include "pet/packs/PackLibrary.h"
#include "sessions/AgentSessionStore.h"
#include "sessions/SmartSummarizer.h"
#include "settings/SecretStore.h"
#include "settings/SettingsStore.h"
#include "settings/view/SettingsWindow.h"
#include "support/ManualTime.h"
#include "support/Wait.h"

#include <QAbstractButton>
#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMessageBox>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <map>
#include <optional>

namespace nibbo::test {

/// A keyring in the hand: it answers at once, and fails when it is told to.
class SecretsInHand final : public SecretStore
{
public:
    std::map<QString, QString> entries;
    std::optional<QString> failure;
    int reads = 0;

    void read(const QString& name, Read answer) override
    {
        ++reads;
        if (failure) {
            answer(Failure{*failure});
            return;
        }
        const auto entry = entries.find(name);
        answer(entry == entries.end() ? std::optional<QString>() : std::optional(entry->second));
    }
    void write(const QString& name, const QString& secret, Done answer) override
    {
        if (!failure)
            entries[name] = secret;
        answer(failure ? Result<void>(Failure{*failure}) : Result<void>());
    }
    void remove(const QString& name, Done answer) override
    {
        if (!failure)
            entries.erase(name);
        answer(failure ? Result<void>(Failure{*failure}) : Result<void>());
    }
};

/// The settings window over real services in a home of its own.
class SettingsWindowFixture : public ::testing::Test
{
protected:
    SettingsWindowFixture()
        : defaults(paths.preferencesFile())
        , settings(defaults)
        , pet(time, time, random, [this]() -> const Settings& { return settings.current(); })
        , sessions(pet, time, time, random,
                   {[this]() -> const Settings& { return settings.current(); }, [](const AgentEvent&) {},
                    [](const QUuid&) {}, nullptr})
        , packs(paths, shareFolder() + QStringLiteral("/pets"))
        , summarizer(settings, secrets, time, time)
        , controller({settings, sessions, packs, summarizer, secrets, paths, [this] { return installer(); },
                      [this] { ++detections; },
                      [](const std::function<void(const QString&)>& answer) { answer(doctorReport()); },
                      [this] { ++onboardings; }, [this] { return lastEvents; },
                      [this] { return time.wallNow(); }})
    {
        settings.change([](Settings& edited) { edited.language = AppLanguage::en; });
    }

    static QString doctorReport() { return QStringLiteral("Nibbo 1.0\n[ok] socket\n[ok] hooks of Claude\n"); }
    HookInstaller installer()
    {
        return HookInstaller({paths, home.filePath(QStringLiteral("prefix")), LauncherPlatform::linuxDesktop,
                              settings.current().enabled},
                             files, time);
    }

    QString language(AppLanguage chosen)
    {
        settings.change([chosen](Settings& edited) { edited.language = chosen; });
        return chosen == AppLanguage::zh ? QStringLiteral("zh") : QStringLiteral("en");
    }

    QJsonObject stored() const
    {
        const Result<QByteArray> content = readWholeFile(paths.preferencesFile());
        return content ? QJsonDocument::fromJson(*content).object() : QJsonObject();
    }

    template <typename Widget>
    Widget& part(const char* name)
    {
        auto* const found = controller.window()->findChild<Widget*>(QLatin1String(name));
        if (found == nullptr)
            qFatal("there is no %s of that kind", name);
        return *found;
    }
    void click(const char* name) { part<QAbstractButton>(name).click(); }
    /// The question that is open; null when there is none.
    QMessageBox* question(const char* name)
    {
        for (auto* each : controller.window()->findChildren<QMessageBox*>(QLatin1String(name))) {
            if (each->isVisible())
                return each;
        }
        return nullptr;
    }
    void answer(const char* name, const char* with)
    {
        QMessageBox* const open = question(name);
        ASSERT_NE(open, nullptr) << name;
        open->findChild<QAbstractButton*>(QLatin1String(with))->click();
        ASSERT_TRUE(waitFor([&] { return question(name) == nullptr; }));
    }

    QTemporaryDir home;
    AppPaths paths{home.path(), home.filePath(QStringLiteral(".config"))};
    ManualTime time;
    ScriptedRandom random;
    UserDefaults defaults;
    SettingsStore settings;
    PetViewModel pet;
    AgentSessionStore sessions;
    PosixFileSystem files;
    SecretsInHand secrets;
    PackLibrary packs;
    SmartSummarizer summarizer;
    /// What the agent log tells; not to be changed while the window may read it aside.
    const QHash<QString, QString> lastEvents{
        {QStringLiteral("Claude"), QStringLiteral("2026-11-21 10:42:07")}};
    int detections = 0;
    int onboardings = 0;
    SettingsWindowController controller;
};

} // namespace nibbo::test
