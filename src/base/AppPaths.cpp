#include "base/AppPaths.h"

#include <QDir>

#include <sys/stat.h>

#include <utility>

namespace nibbo {
namespace {

QString made(const QString& path)
{
    QDir().mkpath(path);
    return path;
}

} // namespace

AppPaths::AppPaths(QString home, QString configHome)
    : m_home(std::move(home))
    , m_configHome(std::move(configHome))
{
    if (m_configHome.isEmpty())
        m_configHome = m_home + QStringLiteral("/.config");
}

AppPaths AppPaths::ofThisUser()
{
    // A relative XDG_CONFIG_HOME is invalid and to be ignored.
    QString config = qEnvironmentVariable("XDG_CONFIG_HOME");
    if (!QDir::isAbsolutePath(config))
        config.clear();
    return AppPaths(QDir::homePath(), config);
}

QString AppPaths::applicationSupport() const
{
    const QString path = m_home + QStringLiteral("/Library/Application Support/Nibbo");
    QDir().mkpath(path);
    // Prompts and commands pass through here: nobody else may look in, whatever the umask was.
    ::chmod(QFile::encodeName(path).constData(), 0700);
    return path;
}

QString AppPaths::logsDirectory() const
{
    return made(applicationSupport() + QStringLiteral("/Logs"));
}

QString AppPaths::customPetsDirectory() const
{
    return made(applicationSupport() + QStringLiteral("/CustomPets"));
}

QString AppPaths::petPacksDirectory() const
{
    return made(applicationSupport() + QStringLiteral("/PetPacks"));
}

QString AppPaths::backupsDirectory() const
{
    return made(applicationSupport() + QStringLiteral("/Backups"));
}

QString AppPaths::socketFile() const
{
    return applicationSupport() + QStringLiteral("/nibbo.sock");
}

QString AppPaths::logFile() const
{
    return logsDirectory() + QStringLiteral("/nibbo.log");
}

QString AppPaths::agentLogFile() const
{
    return logsDirectory() + QStringLiteral("/agent.log");
}

QString AppPaths::preferencesFile() const
{
    return m_configHome + QStringLiteral("/nibbo/defaults.json");
}

QString AppPaths::launcherDirectory() const
{
    return m_home + QStringLiteral("/.nibbo");
}

} // namespace nibbo
