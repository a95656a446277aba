#include "agents/ProviderRegistry.h"

namespace nibbo {
namespace {

struct FamilyRow
{
    ProviderFamily family;
    /// The events whose hook waits for a decision, and for how long; every other event gets `otherwise`.
    std::vector<QString> waitingEvents;
    int waiting;
    int otherwise;
    /// The events whose group carries a matcher, and which.
    std::vector<QString> matchedEvents;
    QString matcher;
};

const FamilyRow& row(ProviderFamily family)
{
    // Codex waits two hours and Gemini counts milliseconds: both as their own schemas ask for.
    static const std::vector<FamilyRow> rows{
        {ProviderFamily::claude,
         {QStringLiteral("PermissionRequest")},
         86400,
         5,
         {QStringLiteral("PreToolUse"), QStringLiteral("PostToolUse"), QStringLiteral("Notification"),
          QStringLiteral("PermissionRequest")},
         QStringLiteral("*")},
        {ProviderFamily::codex,
         {QStringLiteral("PermissionRequest")},
         7200,
         5,
         {QStringLiteral("PreToolUse"), QStringLiteral("PostToolUse")},
         QLatin1String("")},
        {ProviderFamily::gemini,
         {QStringLiteral("BeforeTool")},
         3600000,
         5000,
         {QStringLiteral("BeforeTool"), QStringLiteral("AfterTool")},
         QLatin1String("")},
        {ProviderFamily::cursor,
         {QStringLiteral("beforeShellExecution"), QStringLiteral("beforeMCPExecution")},
         86400,
         5,
         {},
         {}},
        {ProviderFamily::copilot, {QStringLiteral("permissionRequest")}, 86400, 5, {}, {}},
        {ProviderFamily::cline, {QStringLiteral("PreToolUse")}, 86400, 5, {}, {}},
        {ProviderFamily::bespoke, {}, 5, 5, {}, {}},
    };
    return rows[static_cast<std::size_t>(family)];
}

bool holds(const std::vector<QString>& list, const QString& value)
{
    return std::find(list.begin(), list.end(), value) != list.end();
}

std::vector<ProviderSpec> makeTable()
{
    const QStringList claudeEvents{QStringLiteral("SessionStart"),
                                   QStringLiteral("SessionEnd"),
                                   QStringLiteral("Stop"),
                                   QStringLiteral("UserPromptSubmit"),
                                   QStringLiteral("PreToolUse"),
                                   QStringLiteral("PostToolUse"),
                                   QStringLiteral("PreCompact"),
                                   QStringLiteral("Notification"),
                                   QStringLiteral("PermissionRequest")};
    const QStringList codexEvents{QStringLiteral("SessionStart"),     QStringLiteral("Stop"),
                                  QStringLiteral("PreToolUse"),       QStringLiteral("PostToolUse"),
                                  QStringLiteral("PreCompact"),       QStringLiteral("PostCompact"),
                                  QStringLiteral("UserPromptSubmit"), QStringLiteral("PermissionRequest")};
    const QStringList geminiEvents{QStringLiteral("SessionStart"), QStringLiteral("SessionEnd"),
                                   QStringLiteral("BeforeAgent"),  QStringLiteral("AfterAgent"),
                                   QStringLiteral("Notification"), QStringLiteral("BeforeTool"),
                                   QStringLiteral("AfterTool"),    QStringLiteral("PreCompress")};
    const QStringList cursorEvents{
        QStringLiteral("sessionStart"),        QStringLiteral("beforeShellExecution"),
        QStringLiteral("afterShellExecution"), QStringLiteral("beforeMCPExecution"),
        QStringLiteral("afterMCPExecution"),   QStringLiteral("afterFileEdit")};
    const QStringList copilotEvents{
        QStringLiteral("sessionStart"), QStringLiteral("sessionEnd"),   QStringLiteral("userPromptSubmitted"),
        QStringLiteral("preToolUse"),   QStringLiteral("postToolUse"),  QStringLiteral("agentStop"),
        QStringLiteral("preCompact"),   QStringLiteral("notification"), QStringLiteral("permissionRequest")};
    const QStringList clineEvents{QStringLiteral("TaskStart"),  QStringLiteral("TaskResume"),
                                  QStringLiteral("TaskCancel"), QStringLiteral("UserPromptSubmit"),
                                  QStringLiteral("PreToolUse"), QStringLiteral("PostToolUse")};

    using F = ProviderFamily;
    using M = HookMechanism;
    const auto one = [](const char16_t* name) { return QStringList{QString::fromUtf16(name)}; };
    const auto s = [](const char16_t* text) { return QString::fromUtf16(text); };
    return {
        {s(u"claude"), s(u"Claude"), s(u"sparkles"), F::claude, one(u"claude"), M::claudeHooks,
         s(u".claude/settings.json"), claudeEvents, true},
        {s(u"codex"), s(u"Codex"), s(u"terminal"), F::codex, one(u"codex"), M::claudeHooks,
         s(u".codex/hooks.json"), codexEvents, true},
        {s(u"gemini"), s(u"Gemini"), s(u"diamond"), F::gemini, one(u"gemini"), M::claudeHooks,
         s(u".gemini/settings.json"), geminiEvents, true},
        {s(u"opencode"),
         s(u"OpenCode"),
         s(u"curlybraces"),
         F::bespoke,
         one(u"opencode"),
         M::jsPlugin,
         s(u".config/opencode/plugins/nibbo.js"),
         {},
         true},
        {s(u"qwen"), s(u"Qwen Code"), s(u"q.square"), F::claude, one(u"qwen"), M::claudeHooks,
         s(u".qwen/settings.json"), claudeEvents, false},
        {s(u"qoder"), s(u"Qoder"), s(u"q.circle"), F::claude, one(u"qoder"), M::claudeHooks,
         s(u".qoder/settings.json"), claudeEvents, false},
        {s(u"codebuddy"), s(u"CodeBuddy"), s(u"person.2"), F::claude, one(u"codebuddy"), M::claudeHooks,
         s(u".codebuddy/settings.json"), claudeEvents, false},
        {s(u"kimi"), s(u"Kimi"), s(u"k.square"), F::claude, one(u"kimi"), M::claudeHooks,
         s(u".kimi/settings.json"), claudeEvents, false},
        {s(u"iflow"), s(u"iFlow"), s(u"wind"), F::claude, one(u"iflow"), M::claudeHooks,
         s(u".iflow/settings.json"), claudeEvents, false},
        {s(u"cursor"), s(u"Cursor"), s(u"cursorarrow.rays"), F::cursor,
         QStringList{s(u"cursor-agent"), s(u"cursor")}, M::cursorHooks, s(u".cursor/hooks.json"),
         cursorEvents, false},
        {s(u"copilot"), s(u"Copilot CLI"), s(u"chevron.left.forwardslash.chevron.right"), F::copilot,
         one(u"copilot"), M::copilotFile, s(u".copilot/hooks/nibbo-bridge.json"), copilotEvents, false},
        {s(u"cline"), s(u"Cline"), s(u"c.square"), F::cline, one(u"cline"), M::scriptDir,
         s(u"Documents/Cline/Rules/Hooks"), clineEvents, false},
    };
}

} // namespace

int hookTimeout(ProviderFamily family, const QString& event)
{
    const FamilyRow& rule = row(family);
    return holds(rule.waitingEvents, event) ? rule.waiting : rule.otherwise;
}

std::optional<QString> hookMatcher(ProviderFamily family, const QString& event)
{
    const FamilyRow& rule = row(family);
    return holds(rule.matchedEvents, event) ? std::optional(rule.matcher) : std::nullopt;
}

const std::vector<ProviderSpec>& ProviderRegistry::all()
{
    static const std::vector<ProviderSpec> table = makeTable();
    return table;
}

const QHash<QString, const ProviderSpec*>& ProviderRegistry::byID()
{
    static const QHash<QString, const ProviderSpec*> map = [] {
        QHash<QString, const ProviderSpec*> result;
        for (const ProviderSpec& spec : all()) {
            if (result.contains(spec.id))
                qFatal("two providers have the id %s", qUtf8Printable(spec.id));
            result.insert(spec.id, &spec);
        }
        return result;
    }();
    return map;
}

const ProviderSpec* ProviderRegistry::spec(const QString& id)
{
    return byID().value(id.toLower(), nullptr);
}

} // namespace nibbo
