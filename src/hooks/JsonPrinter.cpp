#include "hooks/JsonText.h"

#include "hooks/JsonSpelling.h"

namespace nibbo {
namespace {

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

} // namespace

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
    return byteOrderMark
               ? QByteArray(jsonByteOrderMark.data(), static_cast<qsizetype>(jsonByteOrderMark.size())) +
                     result
               : result;
}

} // namespace nibbo
