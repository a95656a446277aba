#pragma once

#include "base/Language.h"
#include "base/Result.h"

#include <QJsonObject>
#include <QString>
#include <QStringList>

namespace nibbo {

class SettingsStore;

/// The settings in a file that was exported; the messages are for the user.
Result<QJsonObject> readSettingsFile(const QString& path, AppLanguage language);

/// What an import would change about which commands run without asking and about what is sent where: one line
/// each, for the user to agree to. Empty when there is nothing of that.
QStringList sensitiveChanges(const QJsonObject& imported, const SettingsStore& settings);

} // namespace nibbo
