#pragma once

#include "base/AppPaths.h"
#include "base/Result.h"
#include "hooks/HookInstaller.h"

#include <QDateTime>
#include <QHash>
#include <QString>

#include <functional>

namespace nibbo {

class AgentSessionStore;
class PackLibrary;
class SecretStore;
class SettingsStore;
class SmartSummarizer;

/// What the settings window and the onboarding work on. All of it outlives their windows.
struct SettingsServices
{
    SettingsStore& settings;
    AgentSessionStore& sessions;
    const PackLibrary& packs;
    SmartSummarizer& summarizer;
    SecretStore& secrets;
    AppPaths paths;
    /// A fresh installer for the enabled providers of the moment; any thread may use it.
    std::function<HookInstaller()> installer;
    /// Looks for every agent tool again; the settings' statuses tell what came of it.
    std::function<void()> runDetection;
    /// The doctor's report as plain text; it takes seconds, and the answer comes on the main thread.
    std::function<void(std::function<void(const QString& report)> answer)> runDoctor;
    /// Opens onboarding, again if need be.
    std::function<void()> showOnboarding;
    /// The last event of each agent, by its title, as the agent log has it. It reads the log; any thread may
    /// call it.
    std::function<QHash<QString, QString>()> lastEvents;
    /// What a calendar shows.
    std::function<QDateTime()> now = [] { return QDateTime::currentDateTimeUtc(); };
    /// The desktop asks for less motion.
    std::function<bool()> reducesMotion = [] { return false; };
};

} // namespace nibbo
