#include "app/DoctorAdvice.h"

#include "agents/ProviderRegistry.h"
#include "hooks/JsonText.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>
#include <optional>

namespace nibbo {
namespace {

struct Looked
{
    const ProviderSpec& spec;
    QString home;
    const FileSystem& files;

    QString config() const { return home + QLatin1Char('/') + spec.configRelativePath; }
    std::optional<JsonText> json(const QString& path) const
    {
        const Result<QByteArray> content = files.read(path);
        return content ? JsonText::parse(*content) : std::nullopt;
    }
    bool says(const QString& path, std::string_view key, std::string_view value) const
    {
        const auto text = json(path);
        const JsonValue* const member = text ? text->root.member(key) : nullptr;
        return member != nullptr && member->spelling() == value;
    }
};

/// "PreToolUse" as "pre_tool_use".
QString snakeCase(const QString& event)
{
    QString result;
    for (const QChar c : event) {
        if (c.isUpper() && !result.isEmpty())
            result += QLatin1Char('_');
        result += c.toLower();
    }
    return result;
}

QString claude(const Looked& looked)
{
    if (looked.says(looked.config(), "disableAllHooks", "true"))
        return QStringLiteral("its settings say disableAllHooks: set that to false");
    return QStringLiteral("asks on the pet only in its manual mode, in auto mode it decides for itself");
}

/// What makes Codex drop the whole of the file.
bool codexDropsFile(const Looked& looked)
{
    const Result<QByteArray> content = looked.files.read(looked.config());
    const auto text = content ? JsonText::parse(*content) : std::nullopt;
    if (!text)
        return false;
    const auto& items = text->root.items();
    return !nlohmann::json::accept(content->begin(), content->end()) ||
           std::any_of(items.begin(), items.end(), [](const JsonValue& item) {
               return item.key() != "hooks" && item.key() != "description";
           });
}

QString codex(const Looked& looked)
{
    if (codexDropsFile(looked))
        return QStringLiteral(
            "reads no hooks.json with comments or with other keys than hooks and description: "
            "take them out");
    const Result<QByteArray> trust = looked.files.read(looked.home + QStringLiteral("/.codex/config.toml"));
    const bool reviewed =
        trust && std::all_of(looked.spec.events.begin(), looked.spec.events.end(), [&](const QString& event) {
            return trust->contains(
                (looked.config() + QLatin1Char(':') + snakeCase(event) + QLatin1Char(':')).toUtf8());
        });
    return reviewed ? QString()
                    : QStringLiteral("runs new hooks only once they are trusted: start codex and answer "
                                     "\"Hooks need review\" with \"Trust all and continue\", or type /hooks "
                                     "and press t");
}

QString gemini(const Looked& looked)
{
    const auto file = looked.json(looked.config());
    const JsonValue* const config = file ? file->root.member("hooksConfig") : nullptr;
    const JsonValue* const enabled = config != nullptr ? config->member("enabled") : nullptr;
    if (enabled != nullptr && enabled->spelling() == "false")
        return QStringLiteral("its settings say hooksConfig.enabled: false, set that to true");
    return QStringLiteral(
        "runs hooks only in folders that you told it to trust; its own question still comes "
        "after an Allow on the pet");
}

QString copilot(const Looked& looked)
{
    for (const char* const name : {"/.copilot/config.json", "/.copilot/settings.json"}) {
        if (looked.says(looked.home + QLatin1String(name), "disableAllHooks", "true"))
            return QStringLiteral("its settings say disableAllHooks: set that to false");
    }
    return {};
}

template <const char* Text>
QString always(const Looked&)
{
    return QString::fromUtf8(Text);
}

constexpr char opencodeText[] = "loads the plug-in when it starts: start it again after an install";
constexpr char qwenText[] = "reads time-outs from 1000 on as milliseconds: a question waits 86 seconds on "
                            "the pet, then it asks in the "
                            "terminal";
constexpr char qoderText[] = "needs a login, and runs hooks only in folders that you told it to trust";
constexpr char codebuddyText[] = "wants changed hooks to be reviewed: open /hooks in it";
constexpr char kimiText[] = "Kimi Code reads its hooks from ~/.kimi-code/config.toml and not from this file: "
                            "it does not reach the pet";
constexpr char iflowText[] = "has no hook for permission requests: it keeps asking in the terminal";
constexpr char cursorText[] =
    "may need a restart after an install; its own question may still come after an Allow on the pet";
constexpr char clineText[] =
    "today's Cline looks in ~/Documents/Cline/Hooks: copy the scripts there when the pet hears nothing of it";

struct Row
{
    const char* id;
    QString (*advice)(const Looked&);
};

constexpr std::array<Row, 12> rows{{
    {"claude", claude},
    {"codex", codex},
    {"gemini", gemini},
    {"opencode", always<opencodeText>},
    {"qwen", always<qwenText>},
    {"qoder", always<qoderText>},
    {"codebuddy", always<codebuddyText>},
    {"kimi", always<kimiText>},
    {"iflow", always<iflowText>},
    {"cursor", always<cursorText>},
    {"copilot", copilot},
    {"cline", always<clineText>},
}};

} // namespace

QString adviceFor(const ProviderSpec& spec, const QString& home, const FileSystem& files)
{
    const auto* const row = std::find_if(rows.begin(), rows.end(), [&spec](const Row& candidate) {
        return spec.id == QLatin1String(candidate.id);
    });
    return row == rows.end() ? QString() : row->advice({spec, home, files});
}

} // namespace nibbo
