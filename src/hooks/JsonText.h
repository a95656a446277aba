// JSON as somebody wrote it: a tree that keeps the spelling of every number and string, the comments and
// unknown content, so that a change in one place costs nothing in another. Reads more than JSON allows (line
// and block comments, a comma after the last item, a byte order mark); writes it pretty-printed with sorted
// keys and slashes as they are. Bytes that are no UTF-8 inside strings pass unchanged. Values; any thread.
#pragma once

#include <QByteArray>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace nibbo {

struct JsonComments
{
    /// In front of the value, each on a line of its own.
    std::vector<std::string> before;
    /// Behind it on the same line.
    std::string after;
    /// Behind the last item of a container.
    std::vector<std::string> inside;

    bool operator==(const JsonComments&) const = default;
};

class JsonValue final
{
public:
    enum class Kind
    {
        object,
        array,
        string,
        /// A number, a Boolean or null, by its spelling.
        scalar
    };

    static JsonValue object() { return JsonValue(Kind::object); }
    static JsonValue array() { return JsonValue(Kind::array); }
    static JsonValue string(std::string_view text);
    static JsonValue number(long long value);

    Kind kind() const { return m_kind; }
    bool isObject() const { return m_kind == Kind::object; }
    bool isArray() const { return m_kind == Kind::array; }
    /// A scalar as it is spelled.
    const std::string& spelling() const { return m_spelling; }
    /// What a string says; empty for everything else.
    std::string text() const;

    /// The items of an array, or the values of an object with their `key`.
    std::vector<JsonValue>& items() { return m_items; }
    const std::vector<JsonValue>& items() const { return m_items; }
    std::string key() const;

    /// The last member of that name, as readers take it; null when there is none or this is no object.
    JsonValue* member(std::string_view key);
    const JsonValue* member(std::string_view key) const;
    /// Replaces that member where it stands, or adds it.
    JsonValue& setMember(std::string_view key, JsonValue value);

    /// The same values and comments, whatever the order of keys, the layout and the escapes.
    bool sameAs(const JsonValue& other) const;

private:
    friend class JsonReader;
    friend class JsonPrinter;

    explicit JsonValue(Kind kind)
        : m_kind(kind)
    {}
    std::vector<const JsonValue*> sorted() const;
    bool sameComments(const JsonValue& other) const;

    Kind m_kind = Kind::scalar;
    /// With its quotes when it is a string.
    std::string m_spelling;
    /// With its quotes; empty outside of an object.
    std::string m_key;
    std::vector<JsonValue> m_items;
    std::shared_ptr<const JsonComments> m_comments;
};

struct JsonText
{
    JsonValue root = JsonValue::object();
    /// Behind the root.
    std::vector<std::string> tail;
    bool byteOrderMark = false;
    bool windowsLines = false;

    /// Nothing when the content is no JSON. No value at all is an empty object.
    static std::optional<JsonText> parse(const QByteArray& content);
    /// No line break at the end.
    QByteArray written() const;
};

} // namespace nibbo
