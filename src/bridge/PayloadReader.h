#pragma once

// Reads a hook's payload as it arrives and keeps a bounded picture of it.
//
// Agents put whole files and command outputs into their payloads, and text of any origin inside those. The
// reader therefore condenses the bytes while they stream through: a long string is cut between characters
// and marked, what is nested too deep becomes null, the end of a very long list is dropped, broken text (bad
// UTF-8, lone surrogates, raw control characters) is replaced. Only what remains, which is small whatever
// came in, is handed to the JSON library.

#include <array>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace nibbo::bridge {

using Json = nlohmann::json;

struct Payload
{
    Json root;           // always an object
    bool pruned = false; // members or list entries were dropped, not only long strings cut
};

class PayloadReader final
{
public:
    // A string this long can never fit the line whole.
    static constexpr std::size_t wholeLineBytes = 65536;
    // Enough for whatever is only shown. Reading a longer text as JSON costs more than passing it.
    static constexpr std::size_t shownBytes = 8192;
    static constexpr std::size_t maxCondensedBytes = 2U << 20U;
    static constexpr std::size_t maxDepth = 24;
    static constexpr std::size_t maxEntries = 1024;

    // What is beyond `maxStringBytes` of a string is left out.
    explicit PayloadReader(std::size_t maxStringBytes);

    void feed(std::string_view bytes);
    // The object has been closed: there is nothing more to wait for.
    bool finished() const { return m_finished; }
    // Nothing when the bytes were not one JSON object.
    std::optional<Payload> take();

private:
    std::size_t feedString(std::string_view bytes, std::size_t at);
    std::size_t skipString(std::string_view bytes, std::size_t at);
    bool addToUnit(char byte);
    bool addToEscape(char byte);
    bool addToCharacter(char byte);
    void endString();
    void structural(char byte);
    void open(char byte);
    void close(char byte);
    void emit(std::string_view text);
    void emitUnit(std::string_view text, std::size_t decodedBytes);
    void replaceUnit();

    const std::size_t m_maxStringBytes;
    std::string m_condensed;
    std::array<std::size_t, maxDepth + 1> m_entries{};
    std::size_t m_depth = 0;
    std::size_t m_skipEndDepth = 0;
    bool m_skipping = false;
    bool m_skipClosesVisibly = false;
    bool m_inString = false;
    bool m_escapedByte = false; // within a string that is not kept: the next byte is part of an escape
    bool m_cut = false;         // something of the string was left out
    std::size_t m_stringBytes = 0;
    std::string m_unit; // an escape or a multi-byte character that has not arrived whole
    bool m_finished = false;
    bool m_broken = false;
    bool m_pruned = false;
};

} // namespace nibbo::bridge
