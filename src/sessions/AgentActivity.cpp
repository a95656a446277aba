#include "sessions/AgentActivity.h"

#include <QHash>
#include <QStringList>
#include <QTextBoundaryFinder>

#include <algorithm>
#include <vector>

namespace nibbo {
namespace {

constexpr int phraseLength = 40;

/// How the words of a tool come from what it acts on.
enum class Wording
{
    /// The same words whatever it acts on.
    fixed,
    fileName,
    query,
    commandLine
};

struct ToolGroup
{
    QStringList names;
    PetState pose;
    Wording wording;
    /// Stands before the file name or the command.
    TextPair prefix;
    /// The words when there is nothing that the tool acts on.
    TextPair plain;
};

constexpr TextPair runningPrefix{u"Running ", u"正在运行 "};
constexpr TextPair working{u"Working…", u"工作中…"};
constexpr TextPair browsingTheWeb{u"Browsing the web", u"正在查阅网页"};

/// Names in lower case: those of Claude and its kin, and those of Codex with and without the underscore.
const std::vector<ToolGroup>& toolGroups()
{
    const auto names = [](std::initializer_list<const char16_t*> list) {
        QStringList result;
        for (const char16_t* name : list)
            result.append(QString::fromUtf16(name));
        return result;
    };
    static const std::vector<ToolGroup> groups{
        {names({u"read"}),
         PetState::reading,
         Wording::fileName,
         {u"Reading ", u"正在读取 "},
         {u"Reading files", u"正在读取文件"}},
        {names({u"glob", u"ls"}), PetState::reading, Wording::fixed, {}, {u"Finding files", u"正在查找文件"}},
        {names({u"grep"}), PetState::searching, Wording::query, {}, {u"Searching", u"正在搜索"}},
        {names({u"webfetch", u"websearch"}), PetState::browsing, Wording::fixed, {}, browsingTheWeb},
        {names({u"edit", u"multiedit", u"write", u"notebookedit", u"apply_patch", u"applypatch"}),
         PetState::coding,
         Wording::fileName,
         {u"Writing ", u"正在写入 "},
         {u"Writing code", u"正在写入代码"}},
        {names({u"bash", u"shell", u"exec_command", u"execcommand", u"exec", u"write_stdin", u"writestdin",
                u"local_shell", u"localshell"}),
         PetState::running, Wording::commandLine, runningPrefix, working},
        {names({u"task"}),
         PetState::coding,
         Wording::fixed,
         {},
         {u"Delegating a subtask", u"正在调度子任务"}},
        {names({u"todowrite", u"update_plan", u"updateplan"}),
         PetState::planning,
         Wording::fixed,
         {},
         {u"Organizing the to-do list", u"正在整理待办"}},
        {names({u"view_image", u"viewimage"}), PetState::browsing, Wording::fixed, {}, browsingTheWeb},
    };
    return groups;
}

/// The group that a name in lower case belongs to, or null.
const ToolGroup* toolGroup(const QString& name)
{
    static const QHash<QString, const ToolGroup*> byName = [] {
        QHash<QString, const ToolGroup*> result;
        for (const ToolGroup& group : toolGroups()) {
            for (const QString& member : group.names)
                result.insert(member, &group);
        }
        return result;
    }();
    return byName.value(name, nullptr);
}

QString worded(const ToolGroup& group, const QString& command, AppLanguage language)
{
    if (command.isEmpty())
        return group.plain.in(language);
    switch (group.wording) {
    case Wording::fixed:
        break;
    case Wording::fileName:
        return Phrase::reading(AgentActivity::basename(command), group.prefix, language);
    case Wording::query:
        return Phrase::searchingFor(AgentActivity::unquote(command), language);
    case Wording::commandLine:
        return Phrase::reading(AgentActivity::firstLine(command, phraseLength), group.prefix, language);
    }
    return group.plain.in(language);
}

bool isLineBreak(QChar character)
{
    const char16_t unit = character.unicode();
    return (unit >= 0x0A && unit <= 0x0D) || unit == 0x85 || unit == 0x2028 || unit == 0x2029;
}

/// The first `max` characters with "…" behind them, or the text when it has no more than that.
QString cut(const QString& text, int max)
{
    if (text.size() <= max)
        return text;
    QTextBoundaryFinder boundaries(QTextBoundaryFinder::Grapheme, text);
    qsizetype end = 0;
    for (int count = 0; count < max && end >= 0; ++count)
        end = boundaries.toNextBoundary();
    if (end < 0 || end >= text.size())
        return text;
    return text.left(end) + QStringLiteral("…");
}

} // namespace

QString Phrase::reading(const QString& text, const TextPair& prefix, AppLanguage language)
{
    return prefix.in(language) + text;
}

QString Phrase::searchingFor(const QString& query, AppLanguage language)
{
    return nibbo::text(language, u"Searching “", u"正在搜索 “") + query + QStringLiteral("”");
}

Phrase AgentActivity::classify(const std::optional<QString>& toolName, const std::optional<QString>& command,
                               [[maybe_unused]] const QString& message, AppLanguage language)
{
    const QString name = toolName.value_or(QString());
    const QString subject = command.value_or(QString()).trimmed();
    if (const ToolGroup* group = toolGroup(name.toLower()))
        return {group->pose, worded(*group, subject, language)};
    if (!name.isEmpty())
        return {PetState::coding, name};
    if (subject.isEmpty())
        return {PetState::coding, working.in(language)};
    return {PetState::coding, Phrase::reading(firstLine(subject, phraseLength), runningPrefix, language)};
}

QString AgentActivity::phrase(const AgentEvent& event, AppLanguage language)
{
    switch (event.type) {
    case AgentEventType::agentStarted:
        return text(language, u"Started working", u"开始工作");
    case AgentEventType::thinking:
        return text(language, u"Thinking…", u"思考中…");
    case AgentEventType::coding:
        return classify(event.toolName, event.command, event.message, language).text;
    case AgentEventType::contextCompacting:
        return text(language, u"Compacting context…", u"正在压缩上下文…");
    case AgentEventType::responding:
        return text(language, u"Responding", u"正在回答");
    case AgentEventType::approvalRequired:
        if (event.message.isEmpty())
            return text(language, u"Approval requested", u"请求授权");
        return text(language, u"Approval requested: ", u"请求授权：") +
               firstLine(event.message, phraseLength);
    case AgentEventType::inputRequired:
        return text(language, u"Waiting for your input", u"等待你的输入");
    case AgentEventType::taskCompleted:
        return text(language, u"Done", u"完成");
    case AgentEventType::taskFailed:
        return text(language, u"Stopped", u"已停止");
    case AgentEventType::riskyActionDetected:
        return text(language, u"Risky action detected", u"检测到高风险操作");
    case AgentEventType::agentStopped:
        return text(language, u"Session ended", u"会话结束");
    }
    return {};
}

QString AgentActivity::firstLine(const QString& text, int max)
{
    const auto begin = std::find_if_not(text.begin(), text.end(), isLineBreak);
    if (begin == text.end())
        return cut(text, max);
    const auto end = std::find_if(begin, text.end(), isLineBreak);
    return cut(QString(begin, end - begin), max);
}

QString AgentActivity::basename(const QString& path)
{
    const QStringList components = path.split(QLatin1Char('/'), Qt::SkipEmptyParts);
    return components.isEmpty() ? path : components.last();
}

QString AgentActivity::unquote(const QString& text)
{
    QString result = text;
    for (const QChar quote : {QLatin1Char('"'), QLatin1Char('\'')}) {
        if (result.size() > 1 && result.startsWith(quote) && result.endsWith(quote))
            result = result.mid(1, result.size() - 2);
    }
    return firstLine(result, phraseLength);
}

} // namespace nibbo
