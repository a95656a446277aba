#pragma once

#include "agents/AgentStatus.h"
#include "approval/ApprovalMode.h"
#include "approval/TrustEngine.h"
#include "base/Language.h"

#include <QHash>
#include <QMap>
#include <QString>
#include <QStringList>

#include <optional>

namespace nibbo {

enum class PetSource
{
    official,
    custom,
    pack
};
enum class BubbleStyle
{
    compact,
    normal,
    large
};
enum class SingleClickBehavior
{
    toggleBubble,
    quickPanel,
    none
};
enum class DoubleClickBehavior
{
    petReaction,
    openSettings,
    none
};
enum class SummaryProvider
{
    anthropic,
    openai,
    deepseek,
    custom
};

/// Every preference as a plain value: what other threads read of the settings is a copy of this. The initial
/// values are the defaults, but for the command lists and the enable flags, which `SettingsStore` fills from
/// their tables.
struct Settings
{
    bool launchAtLogin = false;
    bool alwaysOnTop = true;
    bool pauseNibbo = false;
    PetSource petSource = PetSource::official;
    std::optional<QString> customPetPath;
    std::optional<QString> activePackPath;
    double petSizeScale = 1.0;
    BubbleStyle bubbleStyle = BubbleStyle::normal;
    SingleClickBehavior singleClickBehavior = SingleClickBehavior::toggleBubble;
    DoubleClickBehavior doubleClickBehavior = DoubleClickBehavior::petReaction;
    bool edgeSnap = true;
    qint64 idleSleepMinutes = 10;
    ApprovalMode approvalMode = ApprovalMode::manual;
    QStringList trustedCommands;
    QStringList dangerousCommands;
    bool bypassRiskCheck = false;
    bool showNotifications = true;
    bool notifyApprovalRequired = true;
    bool notifyTaskCompleted = true;
    bool notifyRiskyAction = true;
    QString themeColor = QStringLiteral("pink");
    double animationSpeed = 1.0;
    bool showActivityLabel = true;
    bool showProviderChip = false;
    bool smartSummary = false;
    SummaryProvider summaryProvider = SummaryProvider::anthropic;
    AppLanguage language = AppLanguage::system;

    /// Provider id (lower case) to whether its integration is enabled; one entry per provider of the
    /// registry.
    QMap<QString, bool> enabled;

    bool operator==(const Settings&) const = default;

    /// The custom image that is to be shown, if one is.
    std::optional<QString> effectiveCustomPetPath() const
    {
        return petSource == PetSource::custom && customPetPath && !customPetPath->isEmpty() ? customPetPath
                                                                                            : std::nullopt;
    }
    std::optional<QString> effectivePackPath() const
    {
        return petSource == PetSource::pack && activePackPath && !activePackPath->isEmpty() ? activePackPath
                                                                                            : std::nullopt;
    }
    /// What decides about commands.
    TrustPolicy trustPolicy() const
    {
        return {trustedCommands, dangerousCommands, bypassRiskCheck, approvalMode};
    }
    /// The language that texts are shown in; never `system`. Computed afresh at every call.
    AppLanguage effectiveLanguage() const
    {
        return nibbo::effectiveLanguage(language, firstPreferredLanguage());
    }
};

} // namespace nibbo
