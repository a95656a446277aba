#pragma once

#include <QBasicTimer>
#include <QPushButton>
#include <QString>

namespace nibbo {

/// A button of the onboarding window, drawn from the palette. Return presses it when it has the focus.
class OnboardingButton final : public QPushButton
{
    Q_OBJECT
public:
    enum class Kind
    {
        /// The one step that leads on.
        primary,
        /// An action of the page.
        ordinary,
        /// Words alone.
        quiet,
        /// A choice among others: a large symbol above its words, outlined while it is checked.
        card
    };

    explicit OnboardingButton(Kind kind, QWidget* parent = nullptr);

    /// A monochrome symbol beside the words, or above them on a card.
    void setSymbol(const QString& file);
    /// Turns a ring in place of the symbol and takes no clicks.
    void setBusy(bool busy);
    bool isBusy() const { return m_busy; }
    void setReducedMotion(bool reduced) { m_reducedMotion = reduced; }

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override { return sizeHint(); }

protected:
    void paintEvent(QPaintEvent* event) override;
    void timerEvent(QTimerEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void hideEvent(QHideEvent* event) override;
    void focusInEvent(QFocusEvent* event) override;

private:
    struct Colours;
    Colours colours() const;
    int symbolSide() const;
    void runRing();
    void drawSymbol(QPainter& painter, const QRectF& square, const QColor& colour) const;

    Kind m_kind;
    QString m_symbol;
    bool m_busy = false;
    bool m_reducedMotion = false;
    /// The focus came by the keyboard, so the eye needs to find it.
    bool m_showsFocus = false;
    int m_ringStep = 0;
    QBasicTimer m_ringTimer;
};

/// One of the symbols that come with the onboarding.
QString onboardingSymbol(const QString& name);

} // namespace nibbo
