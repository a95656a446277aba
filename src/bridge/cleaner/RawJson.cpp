#include "RawJson.h"

#include <nlohmann/json.hpp>

namespace nibbo {

namespace {

// Deeper files are nobody's settings, and walking them recursively would cost the stack.
constexpr std::size_t maximumDepth = 500;

class TreeBuilder final : public nlohmann::json_sax<nlohmann::json>
{
public:
    RawJson root;

    bool null() override { return add(RawJson::Kind::literal, "null"); }
    bool boolean(bool value) override { return add(RawJson::Kind::literal, value ? "true" : "false"); }
    // Whole numbers that fit into 64 bits; the others come with their text.
    bool number_integer(number_integer_t value) override
    {
        // A zero comes here only with a sign.
        return add(RawJson::Kind::literal, value == 0 ? "-0" : std::to_string(value));
    }
    bool number_unsigned(number_unsigned_t value) override
    {
        return add(RawJson::Kind::literal, std::to_string(value));
    }
    bool number_float(number_float_t /*value*/, const string_t& text) override
    {
        return add(RawJson::Kind::literal, text);
    }
    bool string(string_t& value) override { return add(RawJson::Kind::string, value); }
    bool binary(binary_t& /*value*/) override { return false; }
    bool start_object(std::size_t /*size*/) override { return open(RawJson::Kind::object); }
    bool start_array(std::size_t /*size*/) override { return open(RawJson::Kind::array); }
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool key(string_t& name) override
    {
        m_key = name;
        return true;
    }
    bool parse_error(std::size_t /*position*/, const std::string& /*token*/,
                     const nlohmann::json::exception& /*error*/) override
    {
        return false;
    }

private:
    // A container stays where it is while it is open: its parent gets no further child before it is closed.
    std::vector<RawJson*> m_open;
    std::string m_key;

    RawJson& place(RawJson value)
    {
        if (m_open.empty())
            return root = std::move(value);
        auto& siblings = m_open.back()->children;
        siblings.push_back({m_open.back()->isObject() ? std::move(m_key) : std::string(), std::move(value)});
        return siblings.back().value;
    }
    bool add(RawJson::Kind kind, std::string text)
    {
        place({kind, std::move(text), {}});
        return true;
    }
    bool open(RawJson::Kind kind)
    {
        if (m_open.size() >= maximumDepth)
            return false;
        m_open.push_back(&place({kind, {}, {}}));
        return true;
    }
    bool close()
    {
        m_open.pop_back();
        return true;
    }
};

std::string quoted(const std::string& text)
{
    return nlohmann::json(text).dump();
}

void append(std::string& out, const RawJson& value, std::size_t indentation)
{
    if (value.kind == RawJson::Kind::literal) {
        out += value.text;
        return;
    }
    if (value.kind == RawJson::Kind::string) {
        out += quoted(value.text);
        return;
    }
    out += value.isObject() ? '{' : '[';
    bool first = true;
    for (const auto& [name, child] : value.children) {
        out += first ? "\n" : ",\n";
        first = false;
        out.append(indentation + 2, ' ');
        if (value.isObject())
            out += quoted(name) + ": ";
        append(out, child, indentation + 2);
    }
    if (!first) {
        out += '\n';
        out.append(indentation, ' ');
    }
    out += value.isObject() ? '}' : ']';
}

} // namespace

std::optional<RawJson> RawJson::parse(std::string_view text)
{
    TreeBuilder builder;
    if (!nlohmann::json::sax_parse(text.begin(), text.end(), &builder))
        return std::nullopt;
    return std::move(builder.root);
}

std::string RawJson::dump() const
{
    std::string out;
    append(out, *this, 0);
    return out;
}

} // namespace nibbo
