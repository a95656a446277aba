#include "pet/packs/PackPicture.h"

#include <QBuffer>
#include <QImageReader>
#include <QXmlStreamReader>

#include <vector>

namespace nibbo {
namespace {

constexpr int longestSide = 4096;
constexpr qsizetype largestSvg = 2 * 1024 * 1024;
constexpr int mostElements = 20'000;
constexpr std::size_t deepest = 100;

Failure isNo(const QString& what)
{
    return Failure{what};
}

/// "12", "12.5px" or "100%" of nothing; zero where there is no number.
double leadingNumber(QStringView text)
{
    qsizetype end = 0;
    while (end < text.size() && (text.at(end).isDigit() || text.at(end) == QLatin1Char('.')))
        ++end;
    return text.left(end).toDouble();
}

Result<QSize> checkSvg(const QByteArray& content)
{
    if (content.size() > largestSvg)
        return isNo(QStringLiteral("is too large for a drawing"));
    QXmlStreamReader xml(content);
    xml.setEntityExpansionLimit(0);
    QSize size;
    int elements = 0;
    // For each open element, whether it or one around it can be repeated by <use>.
    std::vector<bool> isRepeatable;
    while (!xml.atEnd()) {
        switch (xml.readNext()) {
        case QXmlStreamReader::DTD:
        case QXmlStreamReader::EntityReference:
            return isNo(QStringLiteral("holds a document type or entities, which may not be"));
        case QXmlStreamReader::StartElement: {
            const QXmlStreamAttributes attributes = xml.attributes();
            const bool isRoot = isRepeatable.empty();
            if (isRoot) {
                if (xml.name() != QLatin1String("svg"))
                    return isNo(QStringLiteral("is not an SVG drawing"));
                const QList<QStringView> box =
                    attributes.value(QLatin1String("viewBox")).split(QLatin1Char(' '), Qt::SkipEmptyParts);
                const double width = box.size() == 4
                                         ? box.at(2).toDouble()
                                         : leadingNumber(attributes.value(QLatin1String("width")));
                const double height = box.size() == 4
                                          ? box.at(3).toDouble()
                                          : leadingNumber(attributes.value(QLatin1String("height")));
                if (!(width > 0 && height > 0 && width <= longestSide && height <= longestSide))
                    return isNo(QStringLiteral("has no sensible size"));
                size = QSizeF(width, height).toSize();
            }
            if (++elements > mostElements || isRepeatable.size() > deepest)
                return isNo(QStringLiteral("has too many shapes"));
            for (const QXmlStreamAttribute& attribute : attributes) {
                if (attribute.name() == QLatin1String("href") &&
                    !attribute.value().startsWith(QLatin1Char('#')) &&
                    !attribute.value().startsWith(QLatin1String("data:image/")))
                    return isNo(QStringLiteral("refers to another file or address, which may not be"));
            }
            const bool insideRepeatable = !isRoot && isRepeatable.back();
            if (xml.name() == QLatin1String("use") && insideRepeatable)
                return isNo(QStringLiteral("repeats shapes within repeated shapes, which may not be"));
            isRepeatable.push_back(insideRepeatable ||
                                   (!isRoot && attributes.hasAttribute(QLatin1String("id"))));
            break;
        }
        case QXmlStreamReader::EndElement:
            isRepeatable.pop_back();
            break;
        default:
            break;
        }
    }
    if (xml.hasError() || elements == 0)
        return isNo(QStringLiteral("is not an SVG drawing"));
    return size;
}

} // namespace

const QStringList& pictureEndings()
{
    static const QStringList endings{QStringLiteral("svg"), QStringLiteral("png"),  QStringLiteral("webp"),
                                     QStringLiteral("jpg"), QStringLiteral("jpeg"), QStringLiteral("gif")};
    return endings;
}

Result<QSize> checkPicture(const QByteArray& content, const QString& ending)
{
    if (ending == QLatin1String("svg"))
        return checkSvg(content);
    QBuffer buffer;
    buffer.setData(content);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer);
    reader.setDecideFormatFromContent(true);
    const QByteArray format = reader.format();
    // Qt knows many formats, and not all of their readers are meant for what strangers send.
    if (format != "png" && format != "jpeg" && format != "webp" && format != "gif")
        return isNo(QStringLiteral("is not a picture"));
    const QSize size = reader.size();
    if (!size.isValid() || size.isEmpty())
        return isNo(QStringLiteral("is not a whole picture"));
    if (size.width() > longestSide || size.height() > longestSide)
        return isNo(QStringLiteral("is larger than %1 pixels").arg(longestSide));
    return size;
}

} // namespace nibbo
