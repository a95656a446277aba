#pragma once

#include <QString>

namespace nibbo {

/// The folders and fixed files of the application, all derived from one home directory that is handed in.
/// The accessors named `...Directory` make the folder (with parents, closed to other users) whenever they are
/// asked for. A value; any thread.
class AppPaths final
{
public:
    /// `configHome` is where preferences live; empty means `home`/.config.
    explicit AppPaths(QString home, QString configHome = {});
    /// From the HOME and XDG_CONFIG_HOME of this process. For `main` only.
    static AppPaths ofThisUser();

    const QString& home() const { return m_home; }
    const QString& configHome() const { return m_configHome; }
    QString applicationSupport() const;
    QString logsDirectory() const;
    QString customPetsDirectory() const;
    QString petPacksDirectory() const;
    QString backupsDirectory() const;

    QString socketFile() const;
    QString logFile() const;
    QString agentLogFile() const;
    /// The preferences file; its folder is made when it is written.
    QString preferencesFile() const;
    /// `~/.nibbo`, where the launcher and its state live.
    QString launcherDirectory() const;

private:
    QString m_home;
    QString m_configHome;
};

} // namespace nibbo
