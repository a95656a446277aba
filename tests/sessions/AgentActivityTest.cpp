#include "sessions/AgentActivity.h"

#include <gtest/gtest.h>

#include <ostream>
#include <vector>

namespace nibbo {
namespace {

struct Row
{
    const char* tool;
    const char* command;
    PetState pose;
    const char* english;
    const char* chinese;
};

std::optional<QString> given(const char* text)
{
    return text ? std::optional(QString::fromUtf8(text)) : std::nullopt;
}

const std::vector<Row>& rows()
{
    using P = PetState;
    static const std::vector<Row> table{
        {"Read", "/Users/a/project/src/", P::reading, "Reading src", "正在读取 src"},
        {"read", "  notes.txt\n", P::reading, "Reading notes.txt", "正在读取 notes.txt"},
        {"Read", "/", P::reading, "Reading /", "正在读取 /"},
        {"Read", " \n ", P::reading, "Reading files", "正在读取文件"},
        {"Read", nullptr, P::reading, "Reading files", "正在读取文件"},
        {"LS", "/tmp", P::reading, "Finding files", "正在查找文件"},
        {"Glob", nullptr, P::reading, "Finding files", "正在查找文件"},
        {"Grep", "'main'", P::searching, "Searching “main”", "正在搜索 “main”"},
        {"Grep", "\"'both'\"", P::searching, "Searching “both”", "正在搜索 “both”"},
        {"Grep", "'\"inner\"'", P::searching, "Searching “\"inner\"”", "正在搜索 “\"inner\"”"},
        {"Grep", "\"", P::searching, "Searching “\"”", "正在搜索 “\"”"},
        {"Grep", "", P::searching, "Searching", "正在搜索"},
        {"WebFetch", "https://a.example", P::browsing, "Browsing the web", "正在查阅网页"},
        {"websearch", nullptr, P::browsing, "Browsing the web", "正在查阅网页"},
        {"view_image", "a.png", P::browsing, "Browsing the web", "正在查阅网页"},
        {"viewImage", nullptr, P::browsing, "Browsing the web", "正在查阅网页"},
        {"Edit", "a/b.txt", P::coding, "Writing b.txt", "正在写入 b.txt"},
        {"MultiEdit", nullptr, P::coding, "Writing code", "正在写入代码"},
        {"Write", "x", P::coding, "Writing x", "正在写入 x"},
        {"NotebookEdit", "n.ipynb", P::coding, "Writing n.ipynb", "正在写入 n.ipynb"},
        {"apply_patch", "p", P::coding, "Writing p", "正在写入 p"},
        {"applyPatch", nullptr, P::coding, "Writing code", "正在写入代码"},
        {"Bash", "npm test\nnpm run build", P::running, "Running npm test", "正在运行 npm test"},
        {"Bash", "\n\n  \nls", P::running, "Running ls", "正在运行 ls"},
        {"shell", "a", P::running, "Running a", "正在运行 a"},
        {"exec_command", "a", P::running, "Running a", "正在运行 a"},
        {"execCommand", "a", P::running, "Running a", "正在运行 a"},
        {"exec", nullptr, P::running, "Working…", "工作中…"},
        {"write_stdin", "a", P::running, "Running a", "正在运行 a"},
        {"writestdin", "a", P::running, "Running a", "正在运行 a"},
        {"local_shell", "a", P::running, "Running a", "正在运行 a"},
        {"localshell", "a", P::running, "Running a", "正在运行 a"},
        {"Task", "x", P::coding, "Delegating a subtask", "正在调度子任务"},
        {"TodoWrite", "x", P::planning, "Organizing the to-do list", "正在整理待办"},
        {"update_plan", nullptr, P::planning, "Organizing the to-do list", "正在整理待办"},
        {"updatePlan", nullptr, P::planning, "Organizing the to-do list", "正在整理待办"},
        {"mcp__GitHub__list", "x", P::coding, "mcp__GitHub__list", "mcp__GitHub__list"},
        {" Bash", "ls", P::coding, " Bash", " Bash"},
        {nullptr, "make -j2\nmake install", P::coding, "Running make -j2", "正在运行 make -j2"},
        {"", nullptr, P::coding, "Working…", "工作中…"},
        {nullptr, nullptr, P::coding, "Working…", "工作中…"},
    };
    return table;
}

TEST(AgentActivity, ClassifiesToolsIntoAPoseAndWords)
{
    for (const Row& row : rows()) {
        SCOPED_TRACE(testing::Message() << (row.tool ? row.tool : "(no tool)") << " on "
                                        << (row.command ? row.command : "(nothing)"));
        const auto classify = [&row](AppLanguage language) {
            return AgentActivity::classify(given(row.tool), given(row.command), QStringLiteral("message"),
                                           language);
        };
        const Phrase english = classify(AppLanguage::en);
        EXPECT_EQ(static_cast<int>(english.pose), static_cast<int>(row.pose));
        EXPECT_EQ(english.text.toStdString(), row.english);
        const Phrase chinese = classify(AppLanguage::zh);
        EXPECT_EQ(static_cast<int>(chinese.pose), static_cast<int>(row.pose));
        EXPECT_EQ(chinese.text.toStdString(), row.chinese);
    }
}

TEST(AgentActivity, CutsTheFirstLineAtWhatAReaderCounts)
{
    const auto line = [](const QString& text, int max = 40) { return AgentActivity::firstLine(text, max); };
    const QString forty(40, QLatin1Char('x'));
    EXPECT_EQ(line(forty), forty);
    EXPECT_EQ(line(forty + QLatin1Char('y')), forty + QStringLiteral("…"));
    EXPECT_EQ(line(forty + QStringLiteral("\nsecond")), forty);
    EXPECT_EQ(line(QStringLiteral("\r\n\r\nfirst\r\nsecond")), QStringLiteral("first"));
    EXPECT_EQ(line(QStringLiteral("a\u2028b")), QStringLiteral("a"));
    EXPECT_EQ(line(QString()), QString());
    EXPECT_EQ(line(QStringLiteral("\n\n")), QStringLiteral("\n\n")) << "no line at all: the text as it is";

    // Each of these is one character to a reader, whatever the number of units it takes.
    const std::vector<QString> characters{
        QStringLiteral("e\u0301"),                                    // a letter with a combining accent
        QStringLiteral("\U0001F600"),                                 // outside the basic plane
        QStringLiteral("\U0001F1E9\U0001F1EA"),                       // a flag of two indicators
        QStringLiteral("\U0001F44D\U0001F3FD"),                       // a thumb with a skin tone
        QStringLiteral("\U0001F468\u200D\U0001F469\u200D\U0001F467"), // a joined family
        QStringLiteral("\u2764\uFE0F"),                               // with a presentation selector
        QStringLiteral("\u1112\u1161\u11AB"),                         // a syllable of three letters
    };
    for (const QString& character : characters) {
        SCOPED_TRACE(character.toStdString());
        EXPECT_EQ(line(character.repeated(5), 5), character.repeated(5));
        EXPECT_EQ(line(character.repeated(6), 5), character.repeated(5) + QStringLiteral("…"));
        EXPECT_EQ(line(QStringLiteral("abcd") + character + QStringLiteral("z"), 5),
                  QStringLiteral("abcd") + character + QStringLiteral("…"));
    }
}

TEST(AgentActivity, NamesTheLastComponentOfAPath)
{
    const std::vector<std::pair<const char*, const char*>> paths{
        {"/a/b/c.txt", "c.txt"}, {"c.txt", "c.txt"}, {"/a/b/", "b"}, {"/a/b//", "b"}, {"/", "/"}, {"", ""},
        {"/a/b c/d e", "d e"},   {".", "."},
    };
    for (const auto& [path, expected] : paths)
        EXPECT_EQ(AgentActivity::basename(QString::fromUtf8(path)).toStdString(), expected) << path;
}

TEST(AgentActivity, PhrasesEveryEvent)
{
    using T = AgentEventType;
    struct EventRow
    {
        T type;
        const char* message;
        const char* english;
        const char* chinese;
    };
    const std::vector<EventRow> events{
        {T::agentStarted, "x", "Started working", "开始工作"},
        {T::thinking, "x", "Thinking…", "思考中…"},
        {T::coding, "x", "Running ls", "正在运行 ls"},
        {T::contextCompacting, "x", "Compacting context…", "正在压缩上下文…"},
        {T::responding, "x", "Responding", "正在回答"},
        {T::approvalRequired, "Bash\nmore", "Approval requested: Bash", "请求授权：Bash"},
        {T::approvalRequired, "0123456789012345678901234567890123456789X",
         "Approval requested: 0123456789012345678901234567890123456789…",
         "请求授权：0123456789012345678901234567890123456789…"},
        {T::approvalRequired, "", "Approval requested", "请求授权"},
        {T::inputRequired, "x", "Waiting for your input", "等待你的输入"},
        {T::taskCompleted, "x", "Done", "完成"},
        {T::taskFailed, "x", "Stopped", "已停止"},
        {T::riskyActionDetected, "x", "Risky action detected", "检测到高风险操作"},
        {T::agentStopped, "x", "Session ended", "会话结束"},
    };
    for (const EventRow& row : events) {
        AgentEvent event;
        event.type = row.type;
        event.message = QString::fromUtf8(row.message);
        event.toolName = QStringLiteral("Bash");
        event.command = QStringLiteral("ls");
        EXPECT_EQ(AgentActivity::phrase(event, AppLanguage::en).toStdString(), row.english);
        EXPECT_EQ(AgentActivity::phrase(event, AppLanguage::zh).toStdString(), row.chinese);
    }
}

} // namespace
} // namespace nibbo
