// From arbitrary bytes on the helper's stdin to the line that it would write. The first two bytes choose the
// agent and its event and the pieces in which the rest arrives.
#include "bridge/Translation.h"

#include <cstdint>
#include <cstdio>
#include <cstdlib>

using namespace nibbo::bridge;

namespace {

void require(bool condition, const char* what)
{
    if (condition)
        return;
    std::fprintf(stderr, "%s\n", what);
    std::abort();
}

std::optional<Payload> read(std::string_view bytes, std::size_t piece, std::size_t maxStringBytes)
{
    PayloadReader reader(maxStringBytes);
    for (std::size_t at = 0; at < bytes.size(); at += piece)
        reader.feed(bytes.substr(at, piece));
    return reader.take();
}

void check(const Dialect& dialect, const Event& event)
{
    const WireLine line = wireLine(dialect.id, event);
    require(line.text.size() <= maxLineBytes + 1, "the line is longer than the server reads");
    require(line.text.find('\n') == line.text.size() - 1, "the line is not one line");
    require(Json::accept(line.text), "the line is not JSON");
    require(event.kind != EventKind::approvalRequired || !event.command.empty(), "a request for nothing");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    if (size < 2)
        return 0;
    const auto dialects = allDialects();
    const Dialect& dialect = *dialects[data[0] % dialects.size()];
    const EventRow& row = dialect.events[(data[0] / dialects.size()) % dialect.events.size()];
    const std::string_view bytes(reinterpret_cast<const char*>(data) + 2, size - 2);

    const std::size_t limit = data[1] & 1U ? PayloadReader::wholeLineBytes : 64;
    const auto whole = read(bytes, bytes.size() + 1, limit);
    const auto pieces = read(bytes, 1U + (data[1] >> 1U), limit);
    require(whole.has_value() == pieces.has_value(), "the pieces decide whether it is a payload");
    if (!whole)
        return 0;
    require(whole->root == pieces->root, "the pieces decide what is read");
    for (const Event& event : translate(dialect, row.event, *whole, "/nonexistent"))
        check(dialect, event);
    return 0;
}
