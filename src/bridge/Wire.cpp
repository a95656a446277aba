#include "bridge/Wire.h"

#include <array>
#include <charconv>
#include <nlohmann/json.hpp>

namespace nibbo::bridge {

namespace {

// Shares of the line, in escaped bytes. Together they leave the command the greater part.
constexpr std::size_t shortShare = 256;
constexpr std::size_t sessionShare = 512;
constexpr std::size_t folderShare = 4096;
constexpr std::size_t textShare = 6144;

std::string_view nameOf(EventKind kind)
{
    switch (kind) {
    case EventKind::agentStarted:
        return "agentStarted";
    case EventKind::thinking:
        return "thinking";
    case EventKind::coding:
        return "coding";
    case EventKind::contextCompacting:
        return "contextCompacting";
    case EventKind::responding:
        return "responding";
    case EventKind::approvalRequired:
        return "approvalRequired";
    case EventKind::inputRequired:
        return "inputRequired";
    case EventKind::taskCompleted:
        return "taskCompleted";
    case EventKind::taskFailed:
        return "taskFailed";
    case EventKind::agentStopped:
        return "agentStopped";
    }
    return "thinking";
}

bool isContinuation(char byte)
{
    return (static_cast<unsigned char>(byte) & 0xC0U) == 0x80U;
}

std::size_t escapedSize(char byte)
{
    const auto value = static_cast<unsigned char>(byte);
    if (value == '"' || value == '\\' || value == '\n' || value == '\r' || value == '\t')
        return 2;
    return value < 0x20 ? 6 : 1;
}

void appendEscaped(std::string& out, std::string_view text)
{
    constexpr std::string_view digits = "0123456789abcdef";
    for (const char byte : text) {
        const auto value = static_cast<unsigned char>(byte);
        if (value == '"' || value == '\\') {
            out += '\\';
            out += byte;
        } else if (value == '\n') {
            out += "\\n";
        } else if (value == '\r') {
            out += "\\r";
        } else if (value == '\t') {
            out += "\\t";
        } else if (value < 0x20) {
            out += "\\u00";
            out += digits[value >> 4U];
            out += digits[value & 0xFU];
        } else {
            out += byte;
        }
    }
}

// The longest prefix that ends between two characters and takes at most `budget` bytes once escaped.
std::string_view fitting(std::string_view text, std::size_t budget)
{
    if (text.size() * 6 <= budget)
        return text;
    std::size_t used = 0;
    std::size_t end = 0; // the last position between two characters that still fits
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (!isContinuation(text[i]))
            end = i;
        used += escapedSize(text[i]);
        if (used > budget)
            return text.substr(0, end);
    }
    return text;
}

void appendField(std::string& out, std::string_view key, std::string_view text, std::size_t share)
{
    if (text.empty())
        return;
    out += ",\"";
    out += key;
    out += "\":\"";
    appendEscaped(out, fitting(text, share));
    out += '"';
}

} // namespace

std::string_view cutAtCharacter(std::string_view text, std::size_t maxBytes)
{
    if (text.size() <= maxBytes)
        return text;
    while (maxBytes > 0 && isContinuation(text[maxBytes]))
        --maxBytes;
    return text.substr(0, maxBytes);
}

WireLine wireLine(std::string_view provider, const Event& event)
{
    WireLine line;
    std::string& out = line.text;
    out.reserve(512 + event.command.size());
    out += "{\"provider\":\"";
    appendEscaped(out, fitting(provider, shortShare));
    out += "\",\"type\":\"";
    out += nameOf(event.kind);
    out += '"';
    appendField(out, "message", event.message, textShare);
    appendField(out, "toolName", event.toolName, shortShare);
    appendField(out, "say", event.say, textShare);
    if (event.afterTool)
        out += ",\"phase\":\"post\"";
    appendField(out, "cwd", event.cwd, folderShare);
    appendField(out, "sessionId", event.sessionId, sessionShare);
    if (event.exitCode) {
        std::array<char, 16> number{};
        const auto [end, error] =
            std::to_chars(number.data(), number.data() + number.size(), *event.exitCode);
        if (error == std::errc())
            out.append(",\"exitCode\":").append(number.data(), end);
    }
    if (!event.command.empty()) {
        constexpr std::string_view opening = ",\"command\":\"";
        constexpr std::string_view closing = "\"}";
        const std::size_t budget = maxLineBytes - out.size() - opening.size() - closing.size();
        std::string_view kept = fitting(event.command, budget);
        line.commandWasCut = kept.size() < event.command.size();
        if (line.commandWasCut)
            kept = fitting(event.command, budget - cutMark.size());
        out += opening;
        appendEscaped(out, kept);
        if (line.commandWasCut)
            out += cutMark;
        out += '"';
    }
    out += "}\n";
    return line;
}

Verdict verdictOf(std::string_view reply)
{
    const auto json = nlohmann::json::parse(reply, nullptr, false);
    if (!json.is_object())
        return Verdict::none;
    const auto approval = json.find("approval");
    if (approval == json.end() || !approval->is_string())
        return Verdict::none;
    const auto& text = approval->get_ref<const std::string&>();
    if (text == "granted")
        return Verdict::granted;
    return text == "denied" ? Verdict::denied : Verdict::none;
}

} // namespace nibbo::bridge
