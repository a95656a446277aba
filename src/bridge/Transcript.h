#pragma once

// The agent's latest words from the end of its transcript, a file of one JSON object a line.

#include <string>
#include <string_view>

namespace nibbo::bridge {

// Reads backwards, never more than 256 KiB. Empty when the file is not a readable regular file, or holds no
// words of the agent there.
std::string latestWords(const std::string& path);

// Where Kimi keeps the transcript of a session, of which its payloads do not speak. Empty when it is not
// found.
std::string kimiTranscript(std::string_view home, std::string_view session);

} // namespace nibbo::bridge
