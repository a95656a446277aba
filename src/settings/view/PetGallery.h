#pragma once

#include <QImage>
#include <QListWidget>

#include <vector>

namespace nibbo {

/// The pets to choose from, as pictures on cards. As tall as it has cards.
class PetGallery final : public QListWidget
{
    Q_OBJECT
public:
    struct Card
    {
        /// What the chooser knows it by.
        QString id;
        QString title;
        QString detail;
        QImage picture;
    };
    /// The picture's side in device-independent pixels.
    static constexpr int pictureSide = 92;

    explicit PetGallery(QWidget* parent = nullptr);
    void setCards(const std::vector<Card>& cards);
    void rename(const QString& id, const QString& title);
    /// Nothing is chosen when no card is of that id.
    void setChosen(const QString& id);
    QString chosen() const;

Q_SIGNALS:
    void cardChosen(const QString& id);
    /// The Delete key.
    void deleteAsked();

protected:
    void resizeEvent(QResizeEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    static void describe(QListWidgetItem& item);
    void fitHeight();
};

} // namespace nibbo
