#include "settings/view/SessionsPage.h"

#include "settings/view/SessionListModel.h"
#include "settings/view/Theme.h"

#include <QListView>
#include <QPainter>
#include <QPainterPath>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

namespace nibbo {
namespace {

constexpr int symbolSide = 22;
constexpr int discSide = 38;
constexpr int margin = 12;

/// A card: the agent's symbol, who and where, the state and since when, and what was last said.
class SessionDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const override
    {
        return {240, option.fontMetrics.height() * 2 + 2 * margin + 12};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const bool waiting = index.data(SessionListModel::waitingRole).toBool();
        const QPalette& palette = option.palette;
        const QColor accent = palette.color(QPalette::Active, QPalette::Highlight);
        const QColor ink = palette.color(QPalette::WindowText);
        const QColor quiet = palette.color(QPalette::PlaceholderText);
        const QColor ground = theme::raised(palette);
        const QRectF card = QRectF(option.rect).adjusted(1, 3, -1, -3);

        const bool current = option.state.testFlag(QStyle::State_Selected);
        painter->setPen(QPen(waiting || current ? accent : theme::hairline(palette), current ? 2 : 1));
        painter->setBrush(waiting ? theme::mixed(ground, accent, 0.10) : ground);
        painter->drawRoundedRect(card.adjusted(1, 1, -1, -1), 10, 10);

        const QRectF disc(card.left() + margin, card.center().y() - discSide / 2.0, discSide, discSide);
        painter->setPen(Qt::NoPen);
        painter->setBrush(waiting ? accent : theme::hairline(palette));
        painter->drawEllipse(disc);
        const QPixmap symbol =
            theme::symbol(theme::providerSymbol(index.data(SessionListModel::providerRole).toString()),
                          symbolSide, painter->device()->devicePixelRatioF(), waiting ? Qt::white : ink);
        painter->drawPixmap(QRectF(disc.center().x() - symbolSide / 2.0, disc.center().y() - symbolSide / 2.0,
                                   symbolSide, symbolSide),
                            symbol, QRectF(symbol.rect()));

        const QFontMetrics metrics(option.font);
        QFont strong = option.font;
        strong.setWeight(QFont::DemiBold);
        const QFontMetrics strongMetrics(strong);
        const QRectF text = card.adjusted(margin * 2 + discSide, margin - 2, -margin - 2, -margin + 2);
        const QRectF first(text.left(), text.top(), text.width(), text.height() / 2);
        const QRectF second = first.translated(0, text.height() / 2);

        const QString age = index.data(SessionListModel::ageRole).toString();
        painter->setFont(option.font);
        painter->setPen(quiet);
        painter->drawText(first, Qt::AlignRight | Qt::AlignVCenter, age);
        const double ageWidth = metrics.horizontalAdvance(age) + 12;

        const QString state = index.data(SessionListModel::stateRole).toString();
        const double stateWidth =
            std::min<double>(metrics.horizontalAdvance(state) + 2, first.width() * 0.55);
        painter->setPen(waiting ? accentText(palette) : quiet);
        painter->drawText(first.adjusted(0, 0, -ageWidth, 0), Qt::AlignRight | Qt::AlignVCenter,
                          metrics.elidedText(state, Qt::ElideRight, static_cast<int>(stateWidth)));

        double room = first.width() - ageWidth - stateWidth - 12;
        const QString who =
            strongMetrics.elidedText(index.data().toString(), Qt::ElideRight, static_cast<int>(room));
        painter->setFont(strong);
        painter->setPen(ink);
        painter->drawText(first, Qt::AlignLeft | Qt::AlignVCenter, who);
        const double whoWidth = strongMetrics.horizontalAdvance(who) + 8;
        room -= whoWidth;
        painter->setFont(option.font);
        painter->setPen(quiet);
        if (room > metrics.averageCharWidth() * 4) {
            painter->drawText(first.adjusted(whoWidth, 0, 0, 0), Qt::AlignLeft | Qt::AlignVCenter,
                              metrics.elidedText(index.data(SessionListModel::placeRole).toString(),
                                                 Qt::ElideMiddle, static_cast<int>(room)));
        }
        painter->setPen(ink);
        painter->drawText(second, Qt::AlignLeft | Qt::AlignVCenter,
                          metrics.elidedText(index.data(SessionListModel::wordsRole).toString(),
                                             Qt::ElideRight, static_cast<int>(second.width())));
        painter->restore();
    }

private:
    static QColor accentText(const QPalette& palette)
    {
        const QColor accent = palette.color(QPalette::Active, QPalette::Highlight);
        return theme::isDark(palette) ? theme::mixed(accent, Qt::white, 0.35) : accent;
    }
};

} // namespace

SessionsPage::SessionsPage(const Context& context)
    : SettingsPage(context, {{u"Sessions", u"会话"},
                             {u"Every agent at work, those that wait for you first.",
                              u"所有正在工作的 agent，等待你的排在最前。"}})
    , m_model(new SessionListModel(this))
    , m_list(new QListView)
    , m_listOrNothing(new QStackedWidget)
{
    m_list->setObjectName(QStringLiteral("sessionList"));
    m_list->setModel(m_model);
    m_list->setItemDelegate(new SessionDelegate(m_list));
    m_list->setFrameShape(QFrame::NoFrame);
    m_list->setVerticalScrollMode(QAbstractItemView::ScrollPerPixel);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    m_list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_list->viewport()->setAutoFillBackground(false);
    m_list->setMinimumHeight(200);

    auto* const nothing = new QWidget;
    auto* const column = new QVBoxLayout(nothing);
    auto* const title = new TextLabel;
    title->setObjectName(QStringLiteral("noSessions"));
    title->setFont(theme::heading(1.15));
    title->setAlignment(Qt::AlignHCenter);
    auto* const detail = new TextLabel(TextLabel::Tone::quiet);
    detail->setAlignment(Qt::AlignHCenter);
    column->addStretch(2);
    column->addWidget(title);
    column->addWidget(detail);
    column->addStretch(3);

    m_listOrNothing->addWidget(nothing);
    m_listOrNothing->addWidget(m_list);
    fill(m_listOrNothing);

    m_soon.setSingleShot(true);
    m_soon.setInterval(100);
    m_ageing.setInterval(1000);
    connect(&m_soon, &QTimer::timeout, this, &SessionsPage::refresh);
    connect(&m_ageing, &QTimer::timeout, this, [this] { m_model->setPresent(services().now(), language()); });
    connect(&services().sessions, &AgentSessionStore::sessionsChanged, this, [this] {
        if (isVisible() && !m_soon.isActive())
            m_soon.start();
    });
    onLanguage([this, title, detail] {
        title->setText(text(language(), u"No agent is at work", u"没有正在工作的 agent"));
        detail->setText(text(language(),
                             u"Start one in a terminal. It appears here with the first thing it does.",
                             u"在终端里启动一个，它一有动作就会出现在这里。"));
        m_list->setAccessibleName(SettingsPage::title());
        refresh();
    });
}

void SessionsPage::opened()
{
    refresh();
    m_ageing.start();
}

void SessionsPage::hideEvent(QHideEvent* event)
{
    m_ageing.stop();
    SettingsPage::hideEvent(event);
}

void SessionsPage::refresh()
{
    const QString current = m_list->currentIndex().data(SessionListModel::keyRole).toString();
    m_model->setPresent(services().now(), language());
    m_model->setRows(services().sessions.rows());
    if (const QModelIndex again = m_model->indexOf(current); again.isValid())
        m_list->setCurrentIndex(again);
    m_listOrNothing->setCurrentIndex(m_model->rowCount() == 0 ? 0 : 1);
}

} // namespace nibbo
