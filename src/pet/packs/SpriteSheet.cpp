#include "pet/packs/SpriteSheet.h"

#include <QBuffer>
#include <QImage>
#include <QStringList>

#include <array>

namespace nibbo {
namespace {

constexpr int columns = 8;
constexpr int cellWidth = 192;
constexpr int cellHeight = 208;

/// A row of the sheet, and where its pictures go. The row that runs to the left is ours mirrored, and the
/// rows of the second version, which look around, have no place here.
struct SheetRow
{
    int row;
    QStringList animations;
    QStringList images;
};

QStringList names(std::initializer_list<const char*> list)
{
    QStringList result;
    for (const char* name : list)
        result.append(QString::fromLatin1(name));
    return result;
}

const std::vector<SheetRow>& sheetRows()
{
    static const std::vector<SheetRow> rows{
        // Whatever a sheet has no row for shows the quiet pose, rather than another animal.
        {0, names({"idle"}), names({"idle", "sleeping", "coffee"})},
        {1, names({"walk"}), {}},
        {3, names({"wave", "react_shoo"}), names({"wave", "success"})},
        {4, names({"react_happy", "react_startled"}), names({"happy"})},
        {5, names({"warning", "react_grumpy"}), names({"warning", "sad"})},
        {6, names({"approval", "input"}), names({"approval", "input"})},
        {7, names({"coding", "running", "compacting_context"}), names({"coding"})},
        {8, names({"thinking", "reading", "searching", "browsing", "planning", "responding"}),
         names({"thinking"})},
    };
    return rows;
}

bool isEmpty(const QImage& cell)
{
    for (int y = 0; y < cell.height(); ++y) {
        const auto* const line = reinterpret_cast<const QRgb*>(cell.constScanLine(y));
        for (int x = 0; x < cell.width(); ++x) {
            if (qAlpha(line[x]) != 0)
                return false;
        }
    }
    return true;
}

QByteArray png(const QImage& image)
{
    QByteArray content;
    QBuffer buffer(&content);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG", 80);
    return content;
}

} // namespace

Result<std::vector<PackContent>> cutSpriteSheet(const QByteArray& sheet)
{
    const QImage image = QImage::fromData(sheet).convertToFormat(QImage::Format_ARGB32);
    const int rowCount = image.height() / cellHeight;
    if (image.width() != columns * cellWidth || image.height() % cellHeight != 0 ||
        (rowCount != 9 && rowCount != 11))
        return Failure{QStringLiteral("The sheet has %1 by %2 pixels instead of 1536 by 1872 (or 2288).")
                           .arg(image.width())
                           .arg(image.height())};
    std::vector<PackContent> files;
    for (const SheetRow& row : sheetRows()) {
        int number = 0;
        for (int column = 0; column < columns; ++column) {
            const QImage cell = image.copy(column * cellWidth, row.row * cellHeight, cellWidth, cellHeight);
            if (isEmpty(cell))
                continue;
            const QByteArray content = png(cell);
            ++number;
            for (const QString& animation : row.animations)
                files.push_back(
                    {QStringLiteral("frames/%1/%2.png").arg(animation).arg(number, 2, 10, QLatin1Char('0')),
                     content});
            if (number == 1) {
                for (const QString& still : row.images)
                    files.push_back({QStringLiteral("images/%1.png").arg(still), content});
            }
        }
        if (row.row == 0 && number == 0)
            return Failure{QStringLiteral("The first row of the sheet is empty.")};
    }
    return files;
}

} // namespace nibbo
