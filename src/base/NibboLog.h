#pragma once

#include <QString>

namespace nibbo {

/// The application's log: one line per message in a file, and a copy to the system log. Any thread; never
/// fails.
class NibboLog final
{
public:
    /// Where lines go; before the first call, and with an empty path, only the system log hears of them.
    static void setFile(const QString& path);
    static void log(const QString& message);
};

/// Appends text to a file that only its owner may read, making it when it is missing. False when that failed.
bool appendToPrivateFile(const QString& path, const QByteArray& text);

} // namespace nibbo
