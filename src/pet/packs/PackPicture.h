#pragma once

#include "base/Result.h"

#include <QByteArray>
#include <QSize>
#include <QString>

namespace nibbo {

/// The endings of the picture files that a pack, or a custom image, may have; lower case.
const QStringList& pictureEndings();

/// Whether bytes from anybody are a picture that is safe to draw later, and how large it is. Reads headers
/// only, but for SVG, whose text is walked once: no document types, nothing from outside, no shapes repeated
/// within repeated shapes. The messages go after a file's name. Any thread.
Result<QSize> checkPicture(const QByteArray& content, const QString& ending);

} // namespace nibbo
