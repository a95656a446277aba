#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace nibbo {

/// Where agent tools are installed. The search path of the environment is deliberately not asked: an
/// application that the desktop starts does not inherit the shell's. A value; any thread.
class ExecutableFinder final
{
public:
    /// `systemRoot` stands before the places outside the home directory; empty but in tests.
    explicit ExecutableFinder(QString home, QString systemRoot = {});

    /// The first executable file of this name, or nothing.
    std::optional<QString> find(const QString& name) const;

private:
    QStringList versionFolders() const;

    QString m_home;
    QString m_systemRoot;
};

} // namespace nibbo
