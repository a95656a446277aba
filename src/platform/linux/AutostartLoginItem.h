#pragma once

#include "platform/LoginItem.h"

#include <QString>

namespace nibbo {

/// The login item as an XDG autostart entry. One that the desktop's own settings switched off counts as
/// disabled and is left as it is until the user enables it here.
class AutostartLoginItem final : public LoginItem
{
public:
    /// `configHome` is the folder that holds "autostart"; `program` is what the entry starts.
    AutostartLoginItem(const QString& configHome, QString program);

    bool isEnabled() const override;
    Result<void> enable() override;
    Result<void> disable() override;
    void refresh() override;

private:
    QByteArray entry() const;

    QString m_path;
    QString m_program;
};

/// A path as one argument of a desktop entry's Exec line, quoted as the desktop entry format asks.
QString execArgument(const QString& path);

} // namespace nibbo
