#pragma once

#include "agents/AgentProvider.h"

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;

namespace nibbo {

/// A monochrome symbol of ours, drawn in the colour of the text beside it. A value; main thread.
class TintedIcon final
{
public:
    static TintedIcon ofActivity(const QString& name);
    /// Empty for a provider that the registry does not know.
    static TintedIcon ofProvider(const AgentProvider& provider);

    TintedIcon() = default;
    bool isEmpty() const { return m_file.isEmpty(); }
    void draw(QPainter& painter, const QRectF& square, const QColor& colour) const;

private:
    explicit TintedIcon(const QString& file);

    QString m_file;
};

} // namespace nibbo
