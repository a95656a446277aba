#include "hooks/GeneratedFilesSupport.h"

#include <QDir>
#include <QFileInfo>
#include <QProcess>

#include <gtest/gtest.h>

namespace nibbo::test {

const QStringList awkwardNames = {
    QStringLiteral("plain"),   QStringLiteral("with space"),      QStringLiteral("o'brien"),
    QStringLiteral("Jürgen"),  QStringLiteral("cost$HOME`id`\\"), QStringLiteral("a\"b"),
    QStringLiteral("@HOME@*"),
};

void write(const QString& path, const QByteArray& text, QFile::Permissions extra)
{
    ASSERT_TRUE(QDir().mkpath(QFileInfo(path).path()));
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly)) << path.toStdString();
    ASSERT_EQ(file.write(text), text.size());
    ASSERT_TRUE(file.setPermissions(file.permissions() | extra));
}

std::optional<QByteArray> read(const QString& path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return std::nullopt;
    return file.readAll();
}

Outcome run(const QString& program, const QStringList& arguments, const QByteArray& input,
            const QProcessEnvironment& environment)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    if (!process.waitForFinished(120000) || process.exitStatus() != QProcess::NormalExit)
        return {-1, process.readAllStandardOutput(), "did not run: " + process.errorString().toUtf8()};
    return {process.exitCode(), process.readAllStandardOutput(), process.readAllStandardError()};
}

} // namespace nibbo::test
