#include "bridge/PayloadReader.h"

#include "bridge/Wire.h"

#include <algorithm>
#include <cstring>

namespace nibbo::bridge {

namespace {

constexpr std::string_view replacement = "\xEF\xBF\xBD";

bool isPlain(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    return value >= 0x20 && value < 0x80 && value != '"' && value != '\\';
}

bool isHex(char byte)
{
    return (byte >= '0' && byte <= '9') || (byte >= 'a' && byte <= 'f') || (byte >= 'A' && byte <= 'F');
}

unsigned hexValue(std::string_view digits)
{
    unsigned value = 0;
    for (const char digit : digits) {
        value <<= 4U;
        if (digit <= '9')
            value |= static_cast<unsigned>(digit - '0');
        else
            value |= static_cast<unsigned>((digit | 0x20) - 'a' + 10);
    }
    return value;
}

bool isHighSurrogate(unsigned code)
{
    return code >= 0xD800 && code < 0xDC00;
}

bool isLowSurrogate(unsigned code)
{
    return code >= 0xDC00 && code < 0xE000;
}

std::size_t characterSize(char lead)
{
    const auto value = static_cast<unsigned char>(lead);
    if (value >= 0xC2 && value < 0xE0)
        return 2;
    if (value >= 0xE0 && value < 0xF0)
        return 3;
    return value >= 0xF0 && value < 0xF5 ? 4 : 0;
}

// The second byte decides whether a sequence is overlong, a surrogate or beyond the last code point.
bool secondByteFits(char lead, char second)
{
    const auto first = static_cast<unsigned char>(lead);
    const auto value = static_cast<unsigned char>(second);
    if (value < 0x80 || value > 0xBF)
        return false;
    return !(first == 0xE0 && value < 0xA0) && !(first == 0xED && value > 0x9F) &&
           !(first == 0xF0 && value < 0x90) && !(first == 0xF4 && value > 0x8F);
}

} // namespace

PayloadReader::PayloadReader(std::size_t maxStringBytes)
    : m_maxStringBytes(maxStringBytes)
{}

void PayloadReader::feed(std::string_view bytes)
{
    std::size_t at = 0;
    while (at < bytes.size() && !m_finished && !m_broken) {
        if (!m_inString) {
            structural(bytes[at++]);
        } else if (m_skipping || m_stringBytes >= m_maxStringBytes) {
            at = skipString(bytes, at);
        } else {
            at = feedString(bytes, at);
        }
    }
}

std::optional<Payload> PayloadReader::take()
{
    if (!m_finished || m_broken)
        return std::nullopt;
    Payload payload;
    payload.pruned = m_pruned;
    payload.root = Json::parse(m_condensed, nullptr, false);
    if (!payload.root.is_object())
        return std::nullopt;
    return payload;
}

void PayloadReader::structural(char byte)
{
    switch (byte) {
    case '"':
        m_inString = true;
        m_cut = false;
        m_stringBytes = 0;
        if (!m_skipping)
            emit("\"");
        if (m_depth == 0)
            m_broken = true;
        break;
    case '{':
    case '[':
        open(byte);
        break;
    case '}':
    case ']':
        close(byte);
        break;
    case ',':
        if (m_skipping)
            break;
        if (m_depth > 0 && ++m_entries[m_depth] >= maxEntries) {
            m_skipping = true;
            m_skipClosesVisibly = true;
            m_skipEndDepth = m_depth - 1;
            m_pruned = true;
            break;
        }
        emit(",");
        break;
    case ' ':
    case '\t':
    case '\n':
    case '\r':
        if (!m_skipping && !m_condensed.empty() && m_condensed.back() != ' ')
            emit(" ");
        break;
    default:
        // Before the object only a byte order mark may stand.
        if (m_depth == 0 &&
            (static_cast<unsigned char>(byte) < 0x80 || m_condensed.size() >= replacement.size()))
            m_broken = true;
        else if (!m_skipping)
            emit(std::string_view(&byte, 1));
        break;
    }
}

void PayloadReader::open(char byte)
{
    if (m_depth == 0 && byte != '{') {
        m_broken = true;
        return;
    }
    ++m_depth;
    if (m_skipping)
        return;
    if (m_depth > maxDepth) {
        emit("null");
        m_skipping = true;
        m_skipClosesVisibly = false;
        m_skipEndDepth = maxDepth;
        m_pruned = true;
        return;
    }
    m_entries[m_depth] = 0;
    emit(std::string_view(&byte, 1));
}

void PayloadReader::close(char byte)
{
    if (m_depth == 0) {
        m_broken = true;
        return;
    }
    --m_depth;
    bool visible = !m_skipping;
    if (m_skipping && m_depth == m_skipEndDepth) {
        m_skipping = false;
        visible = m_skipClosesVisibly;
    }
    if (visible)
        emit(std::string_view(&byte, 1));
    if (m_depth == 0)
        m_finished = true;
}

std::size_t PayloadReader::feedString(std::string_view bytes, std::size_t at)
{
    if (!m_unit.empty()) {
        // A byte that cannot continue the unit is looked at again as the start of something new.
        return addToUnit(bytes[at]) ? at + 1 : at;
    }
    const std::size_t room = std::min(bytes.size() - at, m_maxStringBytes - m_stringBytes);
    std::size_t run = 0;
    while (run < room && isPlain(bytes[at + run]))
        ++run;
    if (run > 0) {
        emitUnit(bytes.substr(at, run), run);
        return at + run;
    }
    const char byte = bytes[at];
    if (byte == '"') {
        endString();
    } else if (byte == '\\') {
        m_unit = "\\";
    } else if (static_cast<unsigned char>(byte) < 0x20) {
        constexpr std::string_view digits = "0123456789abcdef";
        std::string escape = "\\u00";
        escape += digits[static_cast<unsigned char>(byte) >> 4U];
        escape += digits[static_cast<unsigned char>(byte) & 0xFU];
        emitUnit(escape, 1);
    } else if (characterSize(byte) == 0) {
        emitUnit(replacement, replacement.size());
    } else {
        m_unit = byte;
    }
    return at + 1;
}

// Strings that are not kept are passed at the speed of memchr.
std::size_t PayloadReader::skipString(std::string_view bytes, std::size_t at)
{
    if (!m_unit.empty()) {
        // The unit was begun while the string was still kept; what is left of an escape is told by its
        // backslash.
        m_escapedByte = m_unit == "\\";
        m_cut = true;
        m_unit.clear();
    }
    if (m_escapedByte) {
        m_escapedByte = false;
        return at + 1;
    }
    const char* begin = bytes.data() + at;
    const std::size_t left = bytes.size() - at;
    const auto* quote = static_cast<const char*>(std::memchr(begin, '"', left));
    m_cut = m_cut || quote != begin;
    const std::size_t reach = quote ? static_cast<std::size_t>(quote - begin) : left;
    const auto* backslash = static_cast<const char*>(std::memchr(begin, '\\', reach));
    if (backslash) {
        m_escapedByte = true;
        return at + static_cast<std::size_t>(backslash - begin) + 1;
    }
    if (!quote)
        return bytes.size();
    endString();
    return at + reach + 1;
}

void PayloadReader::endString()
{
    m_inString = false;
    if (m_skipping)
        return;
    if (m_cut)
        emit(cutMark);
    emit("\"");
}

bool PayloadReader::addToUnit(char byte)
{
    return m_unit.front() == '\\' ? addToEscape(byte) : addToCharacter(byte);
}

bool PayloadReader::addToCharacter(char byte)
{
    const bool fits = m_unit.size() == 1 ? secondByteFits(m_unit.front(), byte)
                                         : (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
    if (!fits) {
        replaceUnit();
        return false;
    }
    m_unit += byte;
    if (m_unit.size() == characterSize(m_unit.front())) {
        emitUnit(m_unit, m_unit.size());
        m_unit.clear();
    }
    return true;
}

// Shapes of m_unit: "\", "\u", "\u" and up to four digits, and after a high surrogate the same once more.
bool PayloadReader::addToEscape(char byte)
{
    const std::size_t place = m_unit.size() % 6;
    if (place == 0) {
        // A high surrogate is complete; only another escape can be its second half.
        if (byte == '\\') {
            m_unit += byte;
            return true;
        }
        replaceUnit();
        return false;
    }
    if (place == 1) {
        if (byte == 'u') {
            m_unit += byte;
            return true;
        }
        if (m_unit.size() > 1) {
            emitUnit(replacement, replacement.size());
            m_unit = "\\";
        }
        constexpr std::string_view simple = "\"\\/bfnrt";
        if (simple.find(byte) == std::string_view::npos) {
            replaceUnit();
            return true;
        }
        m_unit += byte;
        emitUnit(m_unit, 1);
        m_unit.clear();
        return true;
    }
    if (!isHex(byte)) {
        replaceUnit();
        return false;
    }
    m_unit += byte;
    if (place != 5)
        return true;

    const unsigned code = hexValue(std::string_view(m_unit).substr(m_unit.size() - 4));
    if (m_unit.size() == 12) {
        if (isLowSurrogate(code)) {
            emitUnit(m_unit, 4);
            m_unit.clear();
            return true;
        }
        emitUnit(replacement, replacement.size());
        m_unit.erase(0, 6);
    }
    if (isHighSurrogate(code))
        return true;
    if (isLowSurrogate(code)) {
        replaceUnit();
        return true;
    }
    emitUnit(m_unit, code < 0x80 ? 1 : code < 0x800 ? 2 : 3);
    m_unit.clear();
    return true;
}

void PayloadReader::replaceUnit()
{
    emitUnit(replacement, replacement.size());
    m_unit.clear();
}

void PayloadReader::emitUnit(std::string_view text, std::size_t decodedBytes)
{
    emit(text);
    m_stringBytes += decodedBytes;
}

void PayloadReader::emit(std::string_view text)
{
    if (m_condensed.size() + text.size() > maxCondensedBytes) {
        m_broken = true;
        return;
    }
    m_condensed += text;
}

} // namespace nibbo::bridge
