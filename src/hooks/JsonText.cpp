#include "hooks/JsonText.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <utility>

namespace nibbo {
namespace {

constexpr int deepestNesting = 512;
constexpr std::string_view mark = "\xEF\xBB\xBF";

void appendUtf8(std::string& out, unsigned code)
{
    if (code < 0x80) {
        out += static_cast<char>(code);
    } else if (code < 0x800) {
        out += static_cast<char>(0xC0 | (code >> 6));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else if (code < 0x10000) {
        out += static_cast<char>(0xE0 | (code >> 12));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    } else {
        out += static_cast<char>(0xF0 | (code >> 18));
        out += static_cast<char>(0x80 | ((code >> 12) & 0x3F));
        out += static_cast<char>(0x80 | ((code >> 6) & 0x3F));
        out += static_cast<char>(0x80 | (code & 0x3F));
    }
}

int hexDigit(char c)
{
    if (c >= '0' && c <= '9')
        return c - '0';
    if (c >= 'a' && c <= 'f')
        return c - 'a' + 10;
    if (c >= 'A' && c <= 'F')
        return c - 'A' + 10;
    return -1;
}

/// Four digits at `at`; the reader has made sure that they are there.
unsigned hexUnit(std::string_view text, std::size_t at)
{
    unsigned value = 0;
    for (std::size_t i = 0; i < 4; ++i)
        value = value * 16 + static_cast<unsigned>(hexDigit(text[at + i]));
    return value;
}

char unescaped(char c)
{
    switch (c) {
    case 'b':
        return '\b';
    case 'f':
        return '\f';
    case 'n':
        return '\n';
    case 'r':
        return '\r';
    case 't':
        return '\t';
    default:
        return c;
    }
}

bool isEscaped(std::string_view spelling)
{
    return spelling.find('\\') != std::string_view::npos;
}

/// The meaning of a string in its quotes.
std::string decoded(std::string_view quoted)
{
    std::string result;
    const std::string_view inner = quoted.substr(1, quoted.size() - 2);
    if (!isEscaped(inner))
        return std::string(inner);
    result.reserve(inner.size());
    for (std::size_t i = 0; i < inner.size(); ++i) {
        if (inner[i] != '\\') {
            result += inner[i];
            continue;
        }
        ++i;
        if (inner[i] != 'u') {
            result += unescaped(inner[i]);
            continue;
        }
        unsigned code = hexUnit(inner, i + 1);
        i += 4;
        if (code >= 0xD800 && code < 0xDC00 && i + 6 < inner.size() && inner[i + 1] == '\\' &&
            inner[i + 2] == 'u') {
            const unsigned low = hexUnit(inner, i + 3);
            if (low >= 0xDC00 && low < 0xE000) {
                code = 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00);
                i += 6;
            }
        }
        appendUtf8(result, code);
    }
    return result;
}

std::string quoted(std::string_view text)
{
    std::string result = "\"";
    for (const char c : text) {
        if (c == '"' || c == '\\') {
            result += '\\';
            result += c;
        } else if (static_cast<unsigned char>(c) < 0x20) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(c));
            result += escape.data();
        } else {
            result += c;
        }
    }
    return result + '"';
}

/// Slashes need no escape.
void appendSpelling(std::string& out, const std::string& spelling)
{
    if (!isEscaped(spelling)) {
        out += spelling;
        return;
    }
    for (std::size_t i = 0; i < spelling.size(); ++i) {
        if (spelling[i] == '\\' && i + 1 < spelling.size()) {
            if (spelling[i + 1] != '/')
                out += '\\';
            out += spelling[++i];
        } else {
            out += spelling[i];
        }
    }
}

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

class JsonPrinter final
{
public:
    void print(const JsonValue& value, int depth)
    {
        switch (value.m_kind) {
        case JsonValue::Kind::object:
            items(value.sorted(), value, depth, '{', '}');
            break;
        case JsonValue::Kind::array: {
            std::vector<const JsonValue*> list;
            for (const JsonValue& item : value.m_items)
                list.push_back(&item);
            items(list, value, depth, '[', ']');
            break;
        }
        case JsonValue::Kind::string:
            appendSpelling(m_out, value.m_spelling);
            break;
        case JsonValue::Kind::scalar:
            m_out += value.m_spelling;
            break;
        }
    }

    void before(const JsonValue& value, int depth)
    {
        if (value.m_comments)
            lines(value.m_comments->before, depth);
    }
    void after(const JsonValue& value)
    {
        if (value.m_comments && !value.m_comments->after.empty())
            m_out += ' ' + value.m_comments->after;
    }
    void lines(const std::vector<std::string>& comments, int depth)
    {
        for (const std::string& comment : comments) {
            indent(depth);
            m_out += comment + '\n';
        }
    }
    std::string& out() { return m_out; }

private:
    void indent(int depth) { m_out.append(static_cast<std::size_t>(depth) * 2, ' '); }

    void items(const std::vector<const JsonValue*>& list, const JsonValue& owner, int depth, char open,
               char close)
    {
        m_out += open;
        const bool comments = owner.m_comments && !owner.m_comments->inside.empty();
        if (list.empty() && !comments) {
            m_out += close;
            return;
        }
        m_out += '\n';
        for (std::size_t i = 0; i < list.size(); ++i) {
            const JsonValue& item = *list[i];
            before(item, depth + 1);
            indent(depth + 1);
            if (!item.m_key.empty()) {
                appendSpelling(m_out, item.m_key);
                m_out += ": ";
            }
            print(item, depth + 1);
            if (i + 1 < list.size())
                m_out += ',';
            after(item);
            m_out += '\n';
        }
        if (comments)
            lines(owner.m_comments->inside, depth + 1);
        indent(depth);
        m_out += close;
    }

    std::string m_out;
};

JsonValue JsonValue::string(std::string_view text)
{
    JsonValue result(Kind::string);
    result.m_spelling = quoted(text);
    return result;
}

JsonValue JsonValue::number(long long value)
{
    JsonValue result(Kind::scalar);
    result.m_spelling = std::to_string(value);
    return result;
}

std::string JsonValue::text() const
{
    return m_kind == Kind::string ? decoded(m_spelling) : std::string();
}

std::string JsonValue::key() const
{
    return m_key.empty() ? std::string() : decoded(m_key);
}

const JsonValue* JsonValue::member(std::string_view key) const
{
    if (!isObject())
        return nullptr;
    const std::string spelled = quoted(key);
    const auto found = std::find_if(m_items.rbegin(), m_items.rend(), [&](const JsonValue& item) {
        return item.m_key == spelled || (isEscaped(item.m_key) && item.key() == key);
    });
    return found == m_items.rend() ? nullptr : &*found;
}

JsonValue* JsonValue::member(std::string_view key)
{
    return const_cast<JsonValue*>(std::as_const(*this).member(key));
}

JsonValue& JsonValue::setMember(std::string_view key, JsonValue value)
{
    value.m_key = quoted(key);
    if (JsonValue* const known = member(key)) {
        // What somebody wrote about the member stays with it.
        if (!value.m_comments)
            value.m_comments = known->m_comments;
        *known = std::move(value);
        return *known;
    }
    m_items.push_back(std::move(value));
    return m_items.back();
}

std::vector<const JsonValue*> JsonValue::sorted() const
{
    // Keys are compared as they are spelled, within their quotes; one with escapes by what it means.
    std::deque<std::string> meanings;
    std::vector<std::pair<std::string_view, const JsonValue*>> keyed;
    keyed.reserve(m_items.size());
    for (const JsonValue& item : m_items) {
        std::string_view key = std::string_view(item.m_key).substr(1, item.m_key.size() - 2);
        if (isEscaped(key))
            key = meanings.emplace_back(item.key());
        keyed.emplace_back(key, &item);
    }
    std::stable_sort(keyed.begin(), keyed.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    std::vector<const JsonValue*> result;
    result.reserve(keyed.size());
    for (const auto& entry : keyed)
        result.push_back(entry.second);
    return result;
}

bool JsonValue::sameAs(const JsonValue& other) const
{
    if (m_kind != other.m_kind || m_items.size() != other.m_items.size() || !sameComments(other))
        return false;
    switch (m_kind) {
    case Kind::string:
        return m_spelling == other.m_spelling || text() == other.text();
    case Kind::scalar:
        return m_spelling == other.m_spelling;
    case Kind::array:
        return std::equal(m_items.begin(), m_items.end(), other.m_items.begin(),
                          [](const JsonValue& a, const JsonValue& b) { return a.sameAs(b); });
    case Kind::object:
        break;
    }
    const bool sameOrder =
        std::equal(m_items.begin(), m_items.end(), other.m_items.begin(),
                   [](const JsonValue& a, const JsonValue& b) { return a.m_key == b.m_key; });
    if (sameOrder)
        return std::equal(m_items.begin(), m_items.end(), other.m_items.begin(),
                          [](const JsonValue& a, const JsonValue& b) { return a.sameAs(b); });
    const auto mine = sorted();
    const auto theirs = other.sorted();
    return std::equal(mine.begin(), mine.end(), theirs.begin(), [](const JsonValue* a, const JsonValue* b) {
        return (a->m_key == b->m_key || a->key() == b->key()) && a->sameAs(*b);
    });
}

bool JsonValue::sameComments(const JsonValue& other) const
{
    if (m_comments == other.m_comments)
        return true;
    const JsonComments none;
    return (m_comments ? *m_comments : none) == (other.m_comments ? *other.m_comments : none);
}

std::optional<JsonText> JsonText::parse(const QByteArray& content)
{
    std::string_view text(content.constData(), static_cast<std::size_t>(content.size()));
    JsonText result;
    result.byteOrderMark = text.starts_with(mark);
    if (result.byteOrderMark)
        text.remove_prefix(mark.size());
    result.windowsLines = content.count("\r\n") * 2 > content.count('\n');
    if (!JsonReader(text).document(result))
        return std::nullopt;
    return result;
}

QByteArray JsonText::written() const
{
    JsonPrinter printer;
    printer.before(root, 0);
    printer.print(root, 0);
    printer.after(root);
    for (const std::string& comment : tail)
        printer.out() += '\n' + comment;
    QByteArray result = QByteArray::fromStdString(printer.out());
    if (windowsLines)
        result.replace("\n", "\r\n");
    return byteOrderMark ? QByteArray(mark.data(), static_cast<qsizetype>(mark.size())) + result : result;
}

} // namespace nibbo
