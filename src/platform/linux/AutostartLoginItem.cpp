#include "platform/linux/AutostartLoginItem.h"

#include "base/AtomicFile.h"
#include "base/NibboLog.h"

#include <QFile>

#include <utility>

namespace nibbo {
namespace {

QByteArrayList linesOf(const QString& path)
{
    const Result<QByteArray> content = readWholeFile(path, 64 * 1024);
    return content ? content->split('\n') : QByteArrayList();
}

bool says(const QByteArrayList& lines, const char* key, const char* value)
{
    for (const QByteArray& line : lines) {
        const qsizetype equals = line.indexOf('=');
        if (equals > 0 && line.left(equals).trimmed() == key)
            return line.mid(equals + 1).trimmed().toLower() == value;
    }
    return false;
}

} // namespace

QString execArgument(const QString& path)
{
    // Two layers: the quoted argument, then the value of a key, where a backslash is doubled; % would be a
    // field code.
    QString quoted;
    for (const QChar letter : path) {
        if (QStringLiteral("\"`$\\").contains(letter))
            quoted += QLatin1Char('\\');
        quoted += letter;
        if (letter == QLatin1Char('%'))
            quoted += letter;
    }
    quoted.replace(QLatin1Char('\\'), QStringLiteral("\\\\"));
    return QLatin1Char('"') + quoted + QLatin1Char('"');
}

AutostartLoginItem::AutostartLoginItem(const QString& configHome, QString program)
    : m_path(configHome + QStringLiteral("/autostart/nibbo.desktop"))
    , m_program(std::move(program))
{}

QByteArray AutostartLoginItem::entry() const
{
    return QStringLiteral("[Desktop Entry]\n"
                          "Type=Application\n"
                          "Name=Nibbo\n"
                          "Comment=Shows what your coding agents are doing\n"
                          "Comment[zh_CN]=显示你的编码 agent 正在做什么\n"
                          "Exec=%1\n"
                          "Icon=nibbo\n"
                          "Terminal=false\n"
                          "X-GNOME-Autostart-enabled=true\n")
        .arg(execArgument(m_program))
        .toUtf8();
}

bool AutostartLoginItem::isEnabled() const
{
    const QByteArrayList lines = linesOf(m_path);
    return !lines.isEmpty() && !says(lines, "Hidden", "true") &&
           !says(lines, "X-GNOME-Autostart-enabled", "false");
}

Result<void> AutostartLoginItem::enable()
{
    return writeAtomically(m_path, entry());
}

Result<void> AutostartLoginItem::disable()
{
    QFile file(m_path);
    if (file.exists() && !file.remove())
        return Failure{QStringLiteral("cannot remove %1: %2").arg(m_path, file.errorString())};
    return {};
}

void AutostartLoginItem::refresh()
{
    const QByteArray line = "Exec=" + execArgument(m_program).toUtf8();
    if (!isEnabled() || linesOf(m_path).contains(line))
        return;
    if (const Result<void> written = enable(); !written)
        NibboLog::log(QStringLiteral("login item: ") + written.error());
}

} // namespace nibbo
