// Looks at every agent and at the way from its hook to the application, for a person who wonders why the pet
// is silent: one line per agent, then a live test. Changes nothing, publishes no event, and takes a few
// seconds at most. Any thread; needs no event loop.
#pragma once

#include "hooks/HookInstaller.h"
#include "intake/ExecutableFinder.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <chrono>
#include <iosfwd>

namespace nibbo {

/// By provider title, the time of its last line in the agent log.
QHash<QString, QString> lastEvents(const QString& logFile);

class Doctor final
{
public:
    struct Limits
    {
        std::chrono::milliseconds version{4000};
        std::chrono::milliseconds launcher{5000};
        std::chrono::milliseconds answer{2000};
    };

    Doctor(HookEnvironment environment, FileSystem& files, const Clock& clock, ExecutableFinder finder,
           Limits limits);

    /// One line per agent, in the registry's order.
    QStringList agents() const;
    /// Runs the launcher as a hook would and asks the application for a sign of life.
    QStringList selfTest() const;
    void print(std::ostream& out) const;

private:
    QString launcherTest() const;
    QString applicationTest() const;

    HookEnvironment m_environment;
    FileSystem& m_files;
    HookInstaller m_installer;
    ExecutableFinder m_finder;
    Limits m_limits;
};

} // namespace nibbo
