// The main of every test: a home, XDG folders and a locale of its own, and a fresh application object.
// An unexpected Qt warning fails the test that caused it.
#include "support/ExpectWarning.h"

#include <QApplication>
#include <QDir>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cstdio>
#include <mutex>

namespace nibbo::test {
namespace {

std::mutex& warningsMutex()
{
    static std::mutex mutex;
    return mutex;
}

QStringList& expectedWarnings()
{
    static QStringList list;
    return list;
}

void onMessage(QtMsgType type, const QMessageLogContext&, const QString& text)
{
    std::fprintf(stderr, "%s\n", qUtf8Printable(text));
    if (type != QtWarningMsg && type != QtCriticalMsg)
        return;
    const std::lock_guard lock(warningsMutex());
    for (const QString& expected : expectedWarnings()) {
        if (text.contains(expected))
            return;
    }
    ADD_FAILURE() << "unexpected warning: " << qUtf8Printable(text);
}

} // namespace

void expectWarning(const QString& part)
{
    const std::lock_guard lock(warningsMutex());
    expectedWarnings().append(part);
}

} // namespace nibbo::test

int main(int argc, char** argv)
{
    ::testing::InitGoogleTest(&argc, argv);
    QTemporaryDir scratch(QDir::tempPath() + QStringLiteral("/nibbo-test-XXXXXX"));
    if (!scratch.isValid())
        return 2;
    const auto folder = [&scratch](const char* name) {
        const QString path = scratch.filePath(QString::fromLatin1(name));
        QDir().mkpath(path);
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return path.toLocal8Bit();
    };
    qputenv("HOME", folder("home"));
    qputenv("XDG_CONFIG_HOME", folder("config"));
    qputenv("XDG_CACHE_HOME", folder("cache"));
    qputenv("XDG_DATA_HOME", folder("data"));
    qputenv("XDG_STATE_HOME", folder("state"));
    if (!qEnvironmentVariableIsSet("NIBBO_TEST_DESKTOP"))
        qputenv("XDG_RUNTIME_DIR", folder("run"));
    qputenv("LC_ALL", "C.UTF-8");
    qunsetenv("LANGUAGE");

    qInstallMessageHandler(nibbo::test::onMessage);
    // What Qt says about the machine and not about us.
    nibbo::test::expectWarning(QStringLiteral("propagateSizeHints"));
    nibbo::test::expectWarning(QStringLiteral("This plugin does not support"));
    QApplication application(argc, argv);
    QApplication::setQuitOnLastWindowClosed(false);
    return RUN_ALL_TESTS();
}
