#include "hooks/JsonText.h"

#include "hooks/JsonSpelling.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <deque>
#include <utility>

namespace nibbo {
namespace {

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

} // namespace

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

} // namespace nibbo
