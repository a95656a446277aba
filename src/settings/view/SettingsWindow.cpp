#include "settings/view/SettingsWindow.h"

#include "settings/view/AdvancedPage.h"
#include "settings/view/AgentsPage.h"
#include "settings/view/AppearancePage.h"
#include "settings/view/ApprovalsPage.h"
#include "settings/view/GeneralPage.h"
#include "settings/view/NotificationsPage.h"
#include "settings/view/PetPage.h"
#include "settings/view/SessionsPage.h"
#include "settings/view/SummariesPage.h"
#include "settings/view/Theme.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPainter>
#include <QScreen>
#include <QShortcut>
#include <QSpinBox>
#include <QStackedWidget>
#include <QStyledItemDelegate>
#include <QVBoxLayout>

#include <array>
#include <utility>

namespace nibbo {
namespace {

constexpr int iconSide = 18;

using PageMaker = SettingsPage* (*)(const SettingsPage::Context&);

template <typename Page>
SettingsPage* make(const SettingsPage::Context& context)
{
    return new Page(context);
}

struct PageRow
{
    SettingsPageId id;
    const char* name;
    PageMaker make;
};

constexpr auto pageRows = std::to_array<PageRow>({
    {SettingsPageId::sessions, "sessions", make<SessionsPage>},
    {SettingsPageId::general, "general", make<GeneralPage>},
    {SettingsPageId::pet, "pet", make<PetPage>},
    {SettingsPageId::agents, "agents", make<AgentsPage>},
    {SettingsPageId::approvals, "approvals", make<ApprovalsPage>},
    {SettingsPageId::notifications, "notifications", make<NotificationsPage>},
    {SettingsPageId::appearance, "appearance", make<AppearancePage>},
    {SettingsPageId::summaries, "summaries", make<SummariesPage>},
    {SettingsPageId::advanced, "advanced", make<AdvancedPage>},
});

/// Symbol and title on a rounded ground when chosen.
class SidebarDelegate final : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        const int height = qMax(option.fontMetrics.height() + 16, iconSide + 14);
        const int text = option.fontMetrics.horizontalAdvance(index.data().toString());
        return {text + iconSide + 54, height};
    }

    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        const bool chosen = option.state.testFlag(QStyle::State_Selected);
        const QRectF ground = QRectF(option.rect).adjusted(8, 1, -8, -1);
        if (chosen || option.state.testFlag(QStyle::State_MouseOver)) {
            painter->setPen(Qt::NoPen);
            painter->setBrush(chosen ? option.palette.color(QPalette::Active, QPalette::Highlight)
                                     : theme::hairline(option.palette));
            painter->drawRoundedRect(ground, 7, 7);
        }
        if (option.state.testFlag(QStyle::State_HasFocus) &&
            option.state.testFlag(QStyle::State_KeyboardFocusChange)) {
            painter->setPen(QPen(option.palette.color(QPalette::WindowText), 1));
            painter->setBrush(Qt::NoBrush);
            painter->drawRoundedRect(ground.adjusted(0.5, 0.5, -0.5, -0.5), 7, 7);
        }
        const QColor colour = chosen ? option.palette.color(QPalette::Active, QPalette::HighlightedText)
                                     : option.palette.color(QPalette::WindowText);
        const QRectF icon(ground.left() + 10, ground.center().y() - iconSide / 2.0, iconSide, iconSide);
        const QPixmap symbol = theme::symbol(index.data(Qt::UserRole).toString(), iconSide,
                                             painter->device()->devicePixelRatioF(), colour);
        painter->drawPixmap(icon, symbol, QRectF(symbol.rect()));
        painter->setPen(colour);
        painter->setFont(option.font);
        painter->drawText(ground.adjusted(iconSide + 20, 0, -8, 0), Qt::AlignVCenter | Qt::AlignLeft,
                          index.data().toString());
        painter->restore();
    }
};

} // namespace

class SettingsWindow final : public QWidget
{
public:
    SettingsWindow(const SettingsServices& services, Aside& aside)
        : m_services(services)
        , m_sidebar(new QListWidget(this))
        , m_pages(new QStackedWidget(this))
    {
        setObjectName(QStringLiteral("settingsWindow"));
        setFont(theme::textFont());
        applyTheme();

        m_sidebar->setObjectName(QStringLiteral("sidebar"));
        m_sidebar->setFrameShape(QFrame::NoFrame);
        m_sidebar->setItemDelegate(new SidebarDelegate(m_sidebar));
        m_sidebar->setMouseTracking(true);
        m_sidebar->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        m_sidebar->setSelectionMode(QAbstractItemView::SingleSelection);
        m_sidebar->viewport()->setAutoFillBackground(false);

        const SettingsPage::Context context{m_services, aside, m_wheelGuard};
        for (const PageRow& row : pageRows) {
            SettingsPage* const page = row.make(context);
            page->setObjectName(QLatin1String(row.name));
            m_pages->addWidget(page);
            auto* const item = new QListWidgetItem(m_sidebar);
            item->setData(Qt::UserRole,
                          QStringLiteral(":/icons/settings/%1.svg").arg(QLatin1String(row.name)));
        }
        auto* const layout = new QHBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->setSpacing(0);
        auto* const side = new QVBoxLayout;
        side->setContentsMargins(0, 12, 0, 12);
        side->addWidget(m_sidebar);
        layout->addLayout(side);
        layout->addWidget(m_pages, 1);

        QObject::connect(m_sidebar, &QListWidget::currentRowChanged, m_pages,
                         &QStackedWidget::setCurrentIndex);
        QObject::connect(&services.settings, &SettingsStore::changed, this, [this](const Settings& before) {
            if (before.effectiveLanguage() != m_services.settings.language())
                retranslate();
            if (before.themeColor != m_services.settings.current().themeColor)
                applyTheme();
        });
        const std::array<std::pair<QKeySequence, int>, 2> turns{
            {{QKeySequence(Qt::CTRL | Qt::Key_PageDown), 1}, {QKeySequence(Qt::CTRL | Qt::Key_PageUp), -1}}};
        for (const auto& [keys, by] : turns) {
            QObject::connect(new QShortcut(keys, this), &QShortcut::activated, this, [this, by = by] {
                const int count = m_sidebar->count();
                m_sidebar->setCurrentRow((m_sidebar->currentRow() + by + count) % count);
            });
        }
        QObject::connect(new QShortcut(QKeySequence::Close, this), &QShortcut::activated, this,
                         &QWidget::close);

        giveFieldsRoom();
        retranslate();
        showPage(SettingsPageId::general);
        resize(800, 580);
        setMinimumHeight(420);
        m_sidebar->setFocus();
    }

    void showPage(SettingsPageId id)
    {
        for (int i = 0; const PageRow& row : pageRows) {
            if (row.id == id)
                m_sidebar->setCurrentRow(i);
            ++i;
        }
    }

protected:
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::ApplicationPaletteChange)
            applyTheme();
        return QWidget::event(event);
    }
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        const QRect side(0, 0, m_pages->x(), height());
        painter.fillRect(side, theme::sidebar(palette()));
        painter.fillRect(QRect(side.right(), 0, 1, height()), theme::hairline(palette()));
    }

private:
    /// As tall as the buttons beside them.
    void giveFieldsRoom()
    {
        const auto grow = [](QWidget* field) { field->setMinimumHeight(field->fontMetrics().height() + 12); };
        for (QComboBox* box : findChildren<QComboBox*>())
            grow(box);
        for (QSpinBox* box : findChildren<QSpinBox*>())
            grow(box);
        for (QLineEdit* field : findChildren<QLineEdit*>()) {
            if (qobject_cast<QSpinBox*>(field->parentWidget()) == nullptr)
                grow(field);
        }
    }

    void applyTheme()
    {
        setPalette(theme::palette(QApplication::palette(), m_services.settings.current().themeColor));
    }

    void retranslate()
    {
        const AppLanguage language = m_services.settings.language();
        setWindowTitle(text(language, u"Nibbo Settings", u"Nibbo 设置"));
        m_sidebar->setAccessibleName(text(language, u"Pages", u"页面"));
        int width = 168;
        for (int i = 0; i < m_sidebar->count(); ++i) {
            const auto* const page = qobject_cast<SettingsPage*>(m_pages->widget(i));
            QListWidgetItem* const item = m_sidebar->item(i);
            item->setText(page->title());
            m_pages->widget(i)->setAccessibleName(page->title());
            width = qMax(width, m_sidebar->sizeHintForIndex(m_sidebar->indexFromItem(item)).width());
        }
        m_sidebar->setFixedWidth(width);
    }

    const SettingsServices& m_services;
    WheelGuard m_wheelGuard;
    QListWidget* m_sidebar;
    QStackedWidget* m_pages;
};

SettingsWindowController::SettingsWindowController(SettingsServices services)
    : m_services(std::move(services))
{}

SettingsWindowController::~SettingsWindowController() = default;

void SettingsWindowController::show(std::optional<SettingsPageId> page)
{
    if (!m_window) {
        m_window = std::make_unique<SettingsWindow>(m_services, m_aside);
        // Window managers left to themselves put it into a corner.
        const QRect area = m_window->screen()->availableGeometry();
        m_window->move(area.center() - m_window->rect().center());
    }
    if (page)
        m_window->showPage(*page);
    m_window->setWindowState(m_window->windowState() & ~Qt::WindowMinimized);
    m_window->show();
    m_window->raise();
    m_window->activateWindow();
}

QWidget* SettingsWindowController::window() const
{
    return m_window.get();
}

} // namespace nibbo
