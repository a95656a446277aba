#include "hooks/JsonText.h"

#include "hooks/JsonSpelling.h"

#include <algorithm>
#include <utility>

namespace nibbo {
namespace {

constexpr int deepestNesting = 512;

std::string joinedLine(const std::vector<std::string>& comments)
{
    std::string result;
    for (const std::string& comment : comments)
        result += (result.empty() ? "" : " ") + comment;
    return result;
}

} // namespace

/// One pass over the text; `m_failed` ends it.
class JsonReader final
{
public:
    explicit JsonReader(std::string_view text)
        : m_text(text)
    {}

    bool document(JsonText& result)
    {
        trivia();
        if (m_at == m_text.size()) {
            if (!m_pending.empty())
                result.root.m_comments =
                    std::make_shared<const JsonComments>(JsonComments{std::move(m_pending), {}, {}});
            return true;
        }
        result.root = value(0);
        if (m_failed)
            return false;
        trailing(result.root);
        trivia();
        result.tail = std::move(m_pending);
        return !m_failed && m_at == m_text.size();
    }

private:
    char peek() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
    bool take(char c)
    {
        if (m_at >= m_text.size() || m_text[m_at] != c)
            return false;
        ++m_at;
        return true;
    }
    void fail() { m_failed = true; }

    /// A comment at the present place; nothing when there is none or it has no end.
    std::optional<std::string> comment()
    {
        const std::string_view rest = m_text.substr(m_at);
        std::size_t length = 0;
        if (rest.starts_with("//")) {
            length = std::min(rest.find('\n'), rest.size());
        } else if (rest.starts_with("/*")) {
            const std::size_t end = rest.find("*/", 2);
            if (end == std::string_view::npos)
                return std::nullopt;
            length = end + 2;
        } else {
            return std::nullopt;
        }
        m_at += length;
        std::string text(rest.substr(0, length));
        std::erase(text, '\r');
        return text;
    }

    void trivia()
    {
        for (;;) {
            const char c = peek();
            if (m_at < m_text.size() && (c == ' ' || c == '\t' || c == '\n' || c == '\r')) {
                ++m_at;
            } else if (auto text = comment()) {
                m_pending.push_back(std::move(*text));
            } else {
                return;
            }
        }
    }

    /// Comments on the rest of the line belong to the value that it ends with. In the middle of a line they
    /// stay for the next value.
    void trailing(JsonValue& owner)
    {
        const std::size_t start = m_at;
        std::vector<std::string> found;
        for (;;) {
            const char c = peek();
            if (m_at < m_text.size() && (c == ' ' || c == '\t' || c == '\r')) {
                ++m_at;
            } else if (auto text = comment()) {
                found.push_back(std::move(*text));
            } else {
                break;
            }
        }
        const bool endsLine = m_at >= m_text.size() || peek() == '\n';
        if (!endsLine || found.empty()) {
            m_at = start;
            return;
        }
        auto comments = owner.m_comments ? *owner.m_comments : JsonComments{};
        if (!comments.after.empty())
            found.insert(found.begin(), comments.after);
        comments.after = joinedLine(found);
        owner.m_comments = std::make_shared<const JsonComments>(std::move(comments));
    }

    JsonValue value(int depth)
    {
        std::vector<std::string> before = std::move(m_pending);
        m_pending.clear();
        JsonValue result(JsonValue::Kind::scalar);
        std::vector<std::string> inside;
        const char c = peek();
        if (depth > deepestNesting)
            fail();
        else if (c == '{' || c == '[')
            inside = container(result, depth);
        else if (c == '"')
            result = stringValue();
        else
            result.m_spelling = scalar();
        if (!m_failed && !(before.empty() && inside.empty())) {
            result.m_comments =
                std::make_shared<const JsonComments>(JsonComments{std::move(before), {}, std::move(inside)});
        }
        return result;
    }

    /// Fills `result` and gives the comments behind the last item.
    std::vector<std::string> container(JsonValue& result, int depth)
    {
        const bool object = take('{');
        if (!object)
            take('[');
        result.m_kind = object ? JsonValue::Kind::object : JsonValue::Kind::array;
        const char end = object ? '}' : ']';
        for (;;) {
            trivia();
            if (take(end))
                break;
            std::string key;
            if (object) {
                key = quotedText();
                trivia();
                if (!take(':'))
                    fail();
                trivia();
            }
            if (m_failed)
                return {};
            JsonValue item = value(depth + 1);
            if (m_failed)
                return {};
            item.m_key = std::move(key);
            trailing(item);
            trivia();
            const bool more = take(',');
            if (more && m_pending.empty())
                trailing(item);
            result.m_items.push_back(std::move(item));
            if (more)
                continue;
            if (!take(end))
                fail();
            break;
        }
        return std::exchange(m_pending, {});
    }

    std::string quotedText()
    {
        const std::size_t start = m_at;
        if (!take('"')) {
            fail();
            return {};
        }
        while (m_at < m_text.size()) {
            const char c = m_text[m_at++];
            if (c == '"')
                return std::string(m_text.substr(start, m_at - start));
            if (static_cast<unsigned char>(c) < 0x20 && c != '\t')
                break;
            if (c == '\\' && !escape())
                break;
        }
        fail();
        return {};
    }

    bool escape()
    {
        const char c = peek();
        ++m_at;
        if (c != 'u')
            return c != '\0' && std::string_view("\"\\/bfnrt").find(c) != std::string_view::npos;
        for (int i = 0; i < 4; ++i, ++m_at) {
            if (hexDigit(peek()) < 0)
                return false;
        }
        return true;
    }

    JsonValue stringValue()
    {
        JsonValue result(JsonValue::Kind::string);
        result.m_spelling = quotedText();
        return result;
    }

    std::string scalar()
    {
        const std::size_t start = m_at;
        for (const std::string_view word : {"true", "false", "null"}) {
            if (m_text.substr(m_at).starts_with(word)) {
                m_at += word.size();
                return std::string(word);
            }
        }
        take('-');
        if (!take('0') && !digits())
            fail();
        if (take('.') && !digits())
            fail();
        if (take('e') || take('E')) {
            if (!take('-'))
                take('+');
            if (!digits())
                fail();
        }
        return std::string(m_text.substr(start, m_at - start));
    }

    bool digits()
    {
        const std::size_t start = m_at;
        while (peek() >= '0' && peek() <= '9')
            ++m_at;
        return m_at > start;
    }

    std::string_view m_text;
    std::size_t m_at = 0;
    std::vector<std::string> m_pending;
    bool m_failed = false;
};

std::optional<JsonText> JsonText::parse(const QByteArray& content)
{
    std::string_view text(content.constData(), static_cast<std::size_t>(content.size()));
    JsonText result;
    result.byteOrderMark = text.starts_with(jsonByteOrderMark);
    if (result.byteOrderMark)
        text.remove_prefix(jsonByteOrderMark.size());
    result.windowsLines = content.count("\r\n") * 2 > content.count('\n');
    if (!JsonReader(text).document(result))
        return std::nullopt;
    return result;
}

} // namespace nibbo
