#pragma once

#include <QString>
#include <QStringList>

namespace nibbo {

/// What this start of the program is for.
enum class LaunchMode
{
    pet,
    hooks,
    doctor,
    demo,
    gallery,
    help,
    version,
    mistake
};

/// The command line, read before any application object exists.
struct LaunchOptions
{
    LaunchMode mode = LaunchMode::pet;
    /// Where pictures go; for `demo` empty unless it is to be recorded.
    QString folder;
    /// What is wrong, for `mistake`.
    QString mistake;

    bool operator==(const LaunchOptions&) const = default;

    /// `arguments` without the program's name.
    static LaunchOptions parse(const QStringList& arguments);
};

QString helpText();
QString versionText();

} // namespace nibbo
