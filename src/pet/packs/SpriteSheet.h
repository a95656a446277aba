#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace nibbo {

/// A file of a pack that is to be written: its path inside the pack, and its content.
struct PackContent
{
    QString path;
    QByteArray content;
};

/// Cuts the sprite sheets that people trade (8 columns by 9 or 11 rows, a row to a mood) into the pictures of
/// an ordinary pack. Any thread.
Result<std::vector<PackContent>> cutSpriteSheet(const QByteArray& sheet);

} // namespace nibbo
