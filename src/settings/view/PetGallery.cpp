#include "settings/view/PetGallery.h"

#include "settings/view/Theme.h"

#include <QKeyEvent>
#include <QPainter>
#include <QSignalBlocker>
#include <QStyledItemDelegate>

namespace nibbo {
namespace {

constexpr int cardPadding = 10;
constexpr int idRole = Qt::UserRole;
constexpr int pictureRole = Qt::UserRole + 1;

class CardDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override
    {
        return {PetGallery::pictureSide + 4 * cardPadding,
                PetGallery::pictureSide + option.fontMetrics.height() + 4 * cardPadding};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setRenderHint(QPainter::SmoothPixmapTransform);
        const QPalette& palette = option.palette;
        const bool chosen = option.state.testFlag(QStyle::State_Selected);
        const QColor accent = palette.color(QPalette::Active, QPalette::Highlight);
        const QColor ground = theme::raised(palette);
        const QRectF card = QRectF(option.rect).adjusted(4, 4, -4, -4);
        painter->setPen(QPen(chosen ? accent : theme::hairline(palette), chosen ? 2 : 1));
        painter->setBrush(chosen ? theme::mixed(ground, accent, 0.10)
                                 : theme::mixed(ground, palette.color(QPalette::Window), 0.5));
        painter->drawRoundedRect(card, 10, 10);

        const auto picture = index.data(pictureRole).value<QImage>();
        const QRectF place(card.center().x() - PetGallery::pictureSide / 2.0, card.top() + cardPadding,
                           PetGallery::pictureSide, PetGallery::pictureSide);
        if (picture.isNull()) {
            const int side = PetGallery::pictureSide / 3;
            const QPixmap symbol = theme::symbol(QStringLiteral(":/icons/settings/pet.svg"), side,
                                                 painter->device()->devicePixelRatioF(),
                                                 palette.color(QPalette::PlaceholderText));
            painter->drawPixmap(
                QRectF(place.center().x() - side / 2.0, place.center().y() - side / 2.0, side, side), symbol,
                QRectF(symbol.rect()));
        } else {
            const QSizeF size = QSizeF(picture.size()).scaled(place.size(), Qt::KeepAspectRatio);
            painter->drawImage(QRectF(place.center().x() - size.width() / 2,
                                      place.center().y() - size.height() / 2, size.width(), size.height()),
                               picture);
        }
        const QRectF line(card.left() + 6, place.bottom() + 4, card.width() - 12,
                          card.bottom() - place.bottom() - 8);
        QFont font = option.font;
        if (chosen)
            font.setWeight(QFont::DemiBold);
        painter->setFont(font);
        painter->setPen(palette.color(QPalette::WindowText));
        painter->drawText(line, Qt::AlignCenter,
                          QFontMetrics(font).elidedText(index.data().toString(), Qt::ElideRight,
                                                        static_cast<int>(line.width())));
        if (option.state.testFlag(QStyle::State_HasFocus) &&
            option.state.testFlag(QStyle::State_KeyboardFocusChange)) {
            painter->setBrush(Qt::NoBrush);
            painter->setPen(QPen(palette.color(QPalette::WindowText), 1));
            painter->drawRoundedRect(card.adjusted(3, 3, -3, -3), 8, 8);
        }
        painter->restore();
    }
};

} // namespace

PetGallery::PetGallery(QWidget* parent)
    : QListWidget(parent)
{
    setItemDelegate(new CardDelegate(this));
    setViewMode(QListView::IconMode);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    setUniformItemSizes(true);
    setFrameShape(QFrame::NoFrame);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setDragEnabled(false);
    setAcceptDrops(false);
    viewport()->setAcceptDrops(false);
    viewport()->setAutoFillBackground(false);
    connect(this, &QListWidget::itemSelectionChanged, this, [this] {
        if (const QString id = chosen(); !id.isEmpty())
            Q_EMIT cardChosen(id);
    });
}

void PetGallery::setCards(const std::vector<Card>& cards)
{
    const QString before = chosen();
    {
        const QSignalBlocker quiet(this);
        clear();
        for (const Card& card : cards) {
            auto* const item = new QListWidgetItem(card.title, this);
            item->setData(idRole, card.id);
            item->setData(pictureRole, card.picture);
            item->setData(Qt::AccessibleDescriptionRole, card.detail);
            describe(*item);
        }
    }
    setChosen(before);
    fitHeight();
}

// Set apart from markup, which a tool tip would read.
void PetGallery::describe(QListWidgetItem& item)
{
    const QString detail = item.data(Qt::AccessibleDescriptionRole).toString();
    const QString words = detail.isEmpty() ? item.text() : item.text() + QStringLiteral(" — ") + detail;
    item.setToolTip(QStringLiteral("<p>%1</p>").arg(words.toHtmlEscaped()));
}

void PetGallery::rename(const QString& id, const QString& title)
{
    for (int i = 0; i < count(); ++i) {
        if (item(i)->data(idRole).toString() != id)
            continue;
        item(i)->setText(title);
        describe(*item(i));
    }
}

void PetGallery::setChosen(const QString& id)
{
    const QSignalBlocker quiet(this);
    clearSelection();
    for (int i = 0; i < count(); ++i) {
        if (item(i)->data(idRole).toString() == id)
            setCurrentRow(i);
    }
}

QString PetGallery::chosen() const
{
    const QList<QListWidgetItem*> selected = selectedItems();
    return selected.isEmpty() ? QString() : selected.first()->data(idRole).toString();
}

void PetGallery::resizeEvent(QResizeEvent* event)
{
    QListWidget::resizeEvent(event);
    fitHeight();
}

void PetGallery::keyPressEvent(QKeyEvent* event)
{
    if (event->matches(QKeySequence::Delete))
        Q_EMIT deleteAsked();
    else
        QListWidget::keyPressEvent(event);
}

void PetGallery::fitHeight()
{
    if (count() == 0)
        return;
    const QSize card = sizeHintForIndex(model()->index(0, 0));
    const int columns = qMax(1, viewport()->width() / card.width());
    setFixedHeight((count() + columns - 1) / columns * card.height() + 4);
}

} // namespace nibbo
