#pragma once

#include <QByteArray>
#include <QFile>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <optional>

namespace nibbo::test {

inline const QString hookTestsFolder = QStringLiteral(NIBBO_SOURCE_DIR "/tests/hooks/");
inline const QString builtCleaner = QStringLiteral(NIBBO_BUILD_DIR "/libexec/nibbo/nibbo-cleaner");

/// Names of home directories that break scripts which quote carelessly.
extern const QStringList awkwardNames;

/// Makes the folders too. A failure fails the test.
void write(const QString& path, const QByteArray& text, QFile::Permissions extra = {});
/// Nothing when there is no such file.
std::optional<QByteArray> read(const QString& path);

struct Outcome
{
    int status = -1;
    QByteArray out;
    QByteArray error;
};

/// Waits for the program's end; a status of -1 says that it did not run or was killed.
Outcome run(const QString& program, const QStringList& arguments, const QByteArray& input = {},
            const QProcessEnvironment& environment = QProcessEnvironment::systemEnvironment());

} // namespace nibbo::test
