#pragma once

#include <QCheckBox>
#include <QFrame>
#include <QLabel>
#include <QWidget>

class QVBoxLayout;

/// The small pieces that the pages of the settings are put together from. They follow the palette and the
/// font; none has a colour of its own.
namespace nibbo {

/// A check box in the shape of a switch.
class ToggleSwitch final : public QCheckBox
{
    Q_OBJECT
public:
    explicit ToggleSwitch(QWidget* parent = nullptr);
    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    bool hitButton(const QPoint& point) const override { return rect().contains(point); }
};

/// Plain text that wraps. Whatever comes from outside is shown as it is, never as markup.
class TextLabel final : public QLabel
{
    Q_OBJECT
public:
    enum class Tone
    {
        ordinary,
        quiet,
        caution
    };
    explicit TextLabel(Tone tone = Tone::ordinary, QWidget* parent = nullptr);
    void setTone(Tone tone);
};

/// Title and detail beside a control. A click anywhere on the row of a switch or a radio button is one on it.
class SettingRow final : public QWidget
{
    Q_OBJECT
public:
    enum class Place
    {
        before,
        beside,
        below
    };
    explicit SettingRow(QWidget* control, Place place = Place::beside, QWidget* parent = nullptr);
    /// Also what the control is called where it cannot be seen.
    void setTexts(const QString& title, const QString& detail);
    QWidget* control() const { return m_control; }

protected:
    void mouseReleaseEvent(QMouseEvent* event) override;

private:
    TextLabel* m_title;
    TextLabel* m_detail;
    QWidget* m_control;
};

/// Rows on a surface of their own, parted by thin lines.
class SettingsGroup final : public QFrame
{
    Q_OBJECT
public:
    explicit SettingsGroup(QWidget* parent = nullptr);
    void add(QWidget* row);

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    QVBoxLayout* m_rows;
};

/// A wheel that scrolls the page must not change what it happens to pass over.
class WheelGuard final : public QObject
{
    Q_OBJECT
public:
    using QObject::QObject;
    bool eventFilter(QObject* watched, QEvent* event) override;
};

} // namespace nibbo
