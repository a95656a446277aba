#pragma once

#include "base/Result.h"

#include <QStringList>

namespace nibbo {

/// Writes contact sheets of everything that is seen of the pet into the folder, which is made when it is not
/// there: every state of the pet, the bubble in every kind, size, theme and language, and the card with
/// ordinary and hostile requests. Gives the files written. Needs a QApplication, which may be an offscreen
/// one; main thread.
Result<QStringList> writeGallery(const QString& folder, const QString& petPictures);

} // namespace nibbo
