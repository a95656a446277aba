// Reads the command line, makes what it asks for, and runs it.
#include "app/Application.h"
#include "app/Doctor.h"
#include "app/HookCommands.h"
#include "app/LaunchOptions.h"
#include "app/ShareFolder.h"
#include "app/SingleInstance.h"
#include "app/TerminationSignals.h"
#include "app/demo/DemoPlayer.h"
#include "app/gallery/Gallery.h"
#include "base/NibboLog.h"
#include "base/Time.h"
#include "hooks/PosixFileSystem.h"
#include "intake/ExecutableFinder.h"
#include "intake/LocalSocketServer.h"

#include <QApplication>
#include <QDir>
#include <QEvent>
#include <QIcon>
#include <QTemporaryDir>

#include <cstdio>
#include <iostream>
#include <memory>

namespace nibbo {
namespace {

/// The pet's window refuses to be closed by a window manager, which would stop Qt from quitting as well.
class NibboApp final : public QApplication
{
public:
    using QApplication::QApplication;

protected:
    bool event(QEvent* event) override
    {
        if (event->type() != QEvent::Quit)
            return QApplication::event(event);
        exit(0);
        return true;
    }
};

void say(std::FILE* stream, const QString& text)
{
    const QByteArray line = text.toUtf8();
    std::fputs(line.constData(), stream);
    if (!line.endsWith('\n'))
        std::fputc('\n', stream);
    std::fflush(stream);
}

bool hasDisplay()
{
    return !qEnvironmentVariableIsEmpty("DISPLAY") || !qEnvironmentVariableIsEmpty("WAYLAND_DISPLAY");
}

/// Only an X server lets anybody place a window, so XWayland is preferred to Wayland, also where the
/// environment says otherwise; without an X server Wayland still shows a pet.
void choosePlatform()
{
    const QByteArray chosen = qgetenv("QT_QPA_PLATFORM");
    if (chosen.isEmpty() || (chosen.startsWith("wayland") && !qEnvironmentVariableIsEmpty("DISPLAY")))
        qputenv("QT_QPA_PLATFORM", "xcb;wayland");
}

void nameApplication()
{
    QCoreApplication::setApplicationName(QStringLiteral("nibbo"));
    QCoreApplication::setApplicationVersion(QStringLiteral(NIBBO_VERSION));
    QGuiApplication::setDesktopFileName(QStringLiteral("nibbo"));
    QGuiApplication::setQuitOnLastWindowClosed(false);
}

int runPet(int& argc, char** argv)
{
    if (!hasDisplay() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        say(stderr,
            QStringLiteral("nibbo: there is no display to float on; set DISPLAY, or try --gallery DIR."));
        return 1;
    }
    choosePlatform();
    nameApplication();
    NibboApp qt(argc, argv);
    const AppPaths paths = AppPaths::ofThisUser();
    SingleInstance instance(paths);
    switch (instance.claim()) {
    case SingleInstance::Role::first:
    case SingleInstance::Role::unknown:
        break;
    case SingleInstance::Role::second:
        say(stdout, QStringLiteral("nibbo: it runs already; its settings are shown."));
        return 0;
    case SingleInstance::Role::secondUnanswered:
        say(stderr, QStringLiteral("nibbo: another one runs here, but does not answer."));
        return 0;
    }
    NibboLog::setFile(paths.logFile());
    raiseDescriptorLimit();
    QGuiApplication::setWindowIcon(QIcon(shareFolder() + QStringLiteral("/icons/nibbo.svg")));
    Application application({paths});
    QObject::connect(&instance, &SingleInstance::showRequested, &application, &Application::showSettings);
    const TerminationSignals signals;
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &qt, &QCoreApplication::quit);
    application.start();
    return QCoreApplication::exec();
}

/// The hooks' flags and the doctor: no display, no bus, no event loop.
int runMaintenance(LaunchMode mode, const QStringList& arguments, int& argc, char** argv)
{
    const QCoreApplication qt(argc, argv);
    const AppPaths paths = AppPaths::ofThisUser();
    NibboLog::setFile(paths.logFile());
    PosixFileSystem files;
    const SystemClock clock;
    const HookEnvironment environment = storedHookEnvironment(paths);
    if (mode == LaunchMode::doctor) {
        Doctor(environment, files, clock, ExecutableFinder(paths.home()), {}).print(std::cout);
        return 0;
    }
    HookInstaller installer(environment, files, clock);
    return runHookCommand(arguments, installer, std::cout).value_or(0);
}

/// Without a display pictures can still be drawn.
void choosePlatformForPictures()
{
    if (hasDisplay())
        choosePlatform();
    else if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
}

int runDemo(int& argc, char** argv, const QString& pictures)
{
    if (pictures.isEmpty() && !hasDisplay() && qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM")) {
        say(stderr, QStringLiteral("nibbo: there is no display to play on; try --demo --record DIR."));
        return 1;
    }
    choosePlatformForPictures();
    nameApplication();
    NibboApp qt(argc, argv);
    const QTemporaryDir home(QDir::tempPath() + QStringLiteral("/nibbo-demo-XXXXXX"));
    if (!home.isValid()) {
        say(stderr, QStringLiteral("nibbo: cannot make a folder for the demo: %1").arg(home.errorString()));
        return 1;
    }
    const AppPaths paths(home.path());
    NibboLog::setFile(paths.logFile());
    Application application({paths, Surroundings::none});
    const TerminationSignals signals;
    QObject::connect(&signals, &TerminationSignals::terminationRequested, &qt, &QCoreApplication::quit);
    application.start();
    EventLoopScheduler scheduler;
    DemoPlayer player(
        {home.path(), installPrefix() + QStringLiteral("/libexec/nibbo/nibbo-bridge"), pictures},
        application.pet(), application.petWindow(), scheduler);
    QObject::connect(&player, &DemoPlayer::captioned, &qt, [](int second, const QString& caption) {
        say(stdout, QStringLiteral("%1 s  %2").arg(second, 4).arg(caption));
    });
    int status = 0;
    QObject::connect(&player, &DemoPlayer::finished, &qt, [&status](const QString& error) {
        if (!error.isEmpty()) {
            say(stderr, QStringLiteral("nibbo: %1").arg(error));
            status = 1;
        }
        QCoreApplication::quit();
    });
    player.play();
    QCoreApplication::exec();
    if (status == 0 && !pictures.isEmpty())
        say(stdout, QStringLiteral("nibbo: the pictures are in %1").arg(pictures));
    return status;
}

int runGallery(int& argc, char** argv, const QString& folder)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    nameApplication();
    const QApplication qt(argc, argv);
    const Result<QStringList> written = writeGallery(folder, shareFolder() + QStringLiteral("/pets/nibbo"));
    if (!written) {
        say(stderr, QStringLiteral("nibbo: %1").arg(written.error()));
        return 1;
    }
    for (const QString& file : *written)
        say(stdout, file);
    return 0;
}

int run(int argc, char** argv)
{
    QStringList arguments;
    for (int at = 1; at < argc; ++at)
        arguments.append(QString::fromLocal8Bit(argv[at]));
    const LaunchOptions line = LaunchOptions::parse(arguments);
    switch (line.mode) {
    case LaunchMode::help:
        say(stdout, helpText());
        return 0;
    case LaunchMode::version:
        say(stdout, versionText());
        return 0;
    case LaunchMode::mistake:
        say(stderr, QStringLiteral("nibbo: %1 (see nibbo --help)").arg(line.mistake));
        return 2;
    case LaunchMode::demo:
        return runDemo(argc, argv, line.folder);
    case LaunchMode::gallery:
        return runGallery(argc, argv, line.folder);
    case LaunchMode::hooks:
    case LaunchMode::doctor:
        return runMaintenance(line.mode, arguments, argc, argv);
    case LaunchMode::pet:
        break;
    }
    return runPet(argc, argv);
}

} // namespace
} // namespace nibbo

int main(int argc, char** argv)
{
    return nibbo::run(argc, argv);
}
