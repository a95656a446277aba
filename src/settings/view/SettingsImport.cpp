#include "settings/view/SettingsImport.h"

#include "approval/CommandDisplay.h"
#include "base/AtomicFile.h"
#include "settings/SettingsStore.h"
#include "settings/SettingsTexts.h"

#include <QJsonArray>
#include <QJsonDocument>

namespace nibbo {
namespace {

constexpr qint64 fileLimit = 4LL * 1024 * 1024;
constexpr qsizetype shownEntries = 6;
constexpr qsizetype shownLength = 60;

/// What a file from anywhere says, on one line and with nothing hidden in it.
QString shown(const QString& foreign, AppLanguage language)
{
    QStringList lines;
    for (const CommandLine& line : CommandDisplay::of(foreign.left(4 * shownLength), language).lines)
        lines.append(line.text());
    const QString joined = lines.join(QStringLiteral(" ⏎ "));
    return joined.size() > shownLength ? joined.left(shownLength) + QChar(0x2026) : joined;
}

QString shown(const QStringList& entries, AppLanguage language)
{
    QStringList parts;
    for (const QString& entry : entries.mid(0, shownEntries))
        parts.append(QStringLiteral("“%1”").arg(shown(entry, language)));
    QString joined = parts.join(QStringLiteral(", "));
    if (entries.size() > shownEntries)
        joined += text(language, u" and %1 more", u"，另有 %1 条").arg(entries.size() - shownEntries);
    return joined;
}

/// Nothing unless every entry is a text, as the import has it.
std::optional<QStringList> textList(const QJsonValue& value)
{
    if (!value.isArray())
        return std::nullopt;
    QStringList entries;
    for (const QJsonValue& entry : value.toArray()) {
        if (!entry.isString())
            return std::nullopt;
        entries.append(entry.toString());
    }
    return entries;
}

QStringList without(QStringList entries, const QStringList& others)
{
    entries.removeIf([&](const QString& entry) { return others.contains(entry); });
    return entries;
}

class Comparison final
{
public:
    Comparison(const QJsonObject& imported, const SettingsStore& settings)
        : m_imported(imported)
        , m_settings(settings)
        , m_now(settings.current())
        , m_language(settings.language())
    {}

    QStringList lines()
    {
        compareCase(u"approvalMode", m_now.approvalMode, {u"Approval mode: %1", u"授权模式：%1"});
        compareFlag(u"bypassRiskCheck", m_now.bypassRiskCheck,
                    {u"Every command is allowed without asking.", u"所有命令不询问就放行。"},
                    {u"The bypass is switched off.", u"关闭绕过检查。"});
        compareList(u"trustedCommands", m_now.trustedCommands, {u"Trusted commands", u"可信命令"});
        compareList(u"dangerousCommands", m_now.dangerousCommands, {u"Dangerous commands", u"危险命令"});
        compareFlag(u"smartSummary", m_now.smartSummary,
                    {u"Summaries are switched on: your agents' words are sent to the provider.",
                     u"开启摘要：agent 说的话会发送给服务商。"},
                    {nullptr, nullptr});
        compareCase(u"summaryProvider", m_now.summaryProvider, {u"Summary provider: %1", u"摘要服务商：%1"});
        compareAddress();
        return m_lines;
    }

private:
    template <typename Enum>
    void compareCase(QStringView key, Enum now, const TextPair& line)
    {
        const std::optional<Enum> next = fromRawValue<Enum>(m_imported.value(key).toString());
        if (next && *next != now)
            m_lines.append(line.in(m_language).arg(title(*next, m_language)));
    }

    void compareFlag(QStringView key, bool now, const TextPair& on, const TextPair& off)
    {
        const QJsonValue next = m_imported.value(key);
        if (!next.isBool() || next.toBool() == now)
            return;
        if (const TextPair& line = next.toBool() ? on : off; line.english != nullptr)
            m_lines.append(line.in(m_language));
    }

    void compareList(QStringView key, const QStringList& now, const TextPair& name)
    {
        const std::optional<QStringList> next = textList(m_imported.value(key));
        if (!next || *next == now)
            return;
        const QStringList added = without(*next, now);
        const QStringList removed = without(now, *next);
        QStringList parts;
        if (!added.isEmpty())
            parts.append(text(m_language, u"adds %1", u"新增 %1").arg(shown(added, m_language)));
        if (!removed.isEmpty())
            parts.append(text(m_language, u"removes %1", u"移除 %1").arg(shown(removed, m_language)));
        // Another order, or entries given twice, decides nothing else.
        if (!parts.isEmpty())
            m_lines.append(text(m_language, u"%1: %2", u"%1：%2")
                               .arg(name.in(m_language), parts.join(text(m_language, u"; ", u"；"))));
    }

    void compareAddress()
    {
        const QJsonValue next = m_imported.value(QStringLiteral("summaryBaseURLs"))[QStringLiteral("custom")];
        if (!next.isString() ||
            next.toString().trimmed() == m_settings.summaryBaseURL(SummaryProvider::custom))
            return;
        m_lines.append(text(m_language, u"Address of the custom provider: %1", u"自定义服务商的地址：%1")
                           .arg(shown(next.toString().trimmed(), m_language)));
    }

    const QJsonObject& m_imported;
    const SettingsStore& m_settings;
    const Settings& m_now;
    AppLanguage m_language;
    QStringList m_lines;
};

} // namespace

Result<QJsonObject> readSettingsFile(const QString& path, AppLanguage language)
{
    const Result<QByteArray> content = readWholeFile(path, fileLimit);
    if (!content)
        return Failure{text(language, u"Could not read settings file", u"无法读取设置文件")};
    const QJsonDocument document = QJsonDocument::fromJson(*content);
    if (!document.isObject())
        return Failure{text(language, u"The file is not a valid Nibbo settings JSON.",
                            u"该文件不是有效的 Nibbo 设置 JSON。")};
    return document.object();
}

QStringList sensitiveChanges(const QJsonObject& imported, const SettingsStore& settings)
{
    return Comparison(imported, settings).lines();
}

} // namespace nibbo
