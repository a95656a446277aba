#include "settings/view/CommandListEditor.h"

#include "settings/view/Theme.h"

#include <QHBoxLayout>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QShortcut>
#include <QSignalBlocker>
#include <QVBoxLayout>

namespace nibbo {
namespace {

constexpr std::size_t undoLimit = 50;
constexpr int visibleRows = 5;

} // namespace

CommandListEditor::CommandListEditor(const QString& name, QStringList defaults, QWidget* parent)
    : QWidget(parent)
    , m_name(name)
    , m_defaults(std::move(defaults))
    , m_list(new QListWidget)
    , m_field(new QLineEdit)
    , m_add(makeButton("add", &CommandListEditor::add))
    , m_edit(new QPushButton)
    , m_remove(makeButton("remove", &CommandListEditor::removeSelected))
    , m_undoButton(makeButton("undo", &CommandListEditor::undo))
    , m_restore(new QPushButton)
{
    setObjectName(name);
    m_list->setObjectName(name + QStringLiteral(".list"));
    m_list->setFont(theme::monospace(theme::textFont()));
    m_list->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_list->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed);
    m_list->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_list->setFixedHeight(QFontMetrics(m_list->font()).height() * visibleRows + 26);
    m_field->setObjectName(name + QStringLiteral(".field"));
    m_field->setFont(m_list->font());
    m_edit->setObjectName(name + QStringLiteral(".edit"));
    m_edit->setAutoDefault(false);
    m_restore->setObjectName(name + QStringLiteral(".restore"));
    m_restore->setAutoDefault(false);

    auto* const entry = new QHBoxLayout;
    entry->addWidget(m_field, 1);
    entry->addWidget(m_add);
    auto* const actions = new QHBoxLayout;
    for (QPushButton* each : {m_edit, m_remove, m_undoButton})
        actions->addWidget(each);
    actions->addStretch(1);
    actions->addWidget(m_restore);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(0, 0, 0, 0);
    column->addLayout(entry);
    column->addWidget(m_list);
    column->addLayout(actions);

    connect(m_field, &QLineEdit::returnPressed, this, &CommandListEditor::add);
    connect(m_field, &QLineEdit::textChanged, this, &CommandListEditor::refreshButtons);
    connect(m_list, &QListWidget::itemSelectionChanged, this, &CommandListEditor::refreshButtons);
    connect(m_list, &QListWidget::itemChanged, this, &CommandListEditor::takeEdit);
    connect(m_edit, &QPushButton::clicked, this, [this] { m_list->editItem(m_list->currentItem()); });
    connect(m_restore, &QPushButton::clicked, this, [this] { put(m_defaults); });
    const auto shortcut = [this](const QKeySequence& keys, void (CommandListEditor::*action)()) {
        connect(new QShortcut(keys, m_list, nullptr, nullptr, Qt::WidgetShortcut), &QShortcut::activated,
                this, action);
    };
    shortcut(QKeySequence::Delete, &CommandListEditor::removeSelected);
    shortcut(QKeySequence::Undo, &CommandListEditor::undo);
    refreshButtons();
}

QPushButton* CommandListEditor::makeButton(const char* part, void (CommandListEditor::*action)())
{
    auto* const made = new QPushButton;
    made->setObjectName(m_name + QLatin1Char('.') + QLatin1String(part));
    made->setAutoDefault(false);
    connect(made, &QPushButton::clicked, this, action);
    return made;
}

void CommandListEditor::setLanguage(AppLanguage language)
{
    m_field->setPlaceholderText(text(language, u"New entry", u"新条目"));
    m_field->setAccessibleName(m_field->placeholderText());
    m_add->setText(text(language, u"Add", u"添加"));
    m_edit->setText(text(language, u"Edit", u"编辑"));
    m_remove->setText(text(language, u"Remove", u"移除"));
    m_undoButton->setText(text(language, u"Undo", u"撤销"));
    m_restore->setText(text(language, u"Restore Defaults", u"恢复默认"));
    for (QPushButton* each : {m_add, m_edit, m_remove, m_undoButton, m_restore})
        theme::makeRoomy(*each);
    m_list->setAccessibleName(accessibleName());
    m_list->setAccessibleDescription(accessibleDescription());
}

void CommandListEditor::setCommands(const QStringList& commands)
{
    if (commands == m_commands && m_list->count() == commands.size())
        return;
    m_commands = commands;
    const QSignalBlocker quiet(m_list);
    const int row = m_list->currentRow();
    m_list->clear();
    for (const QString& command : commands) {
        auto* const item = new QListWidgetItem(command, m_list);
        item->setFlags(item->flags() | Qt::ItemIsEditable);
    }
    m_list->setCurrentRow(std::min(row, m_list->count() - 1));
    refreshButtons();
}

void CommandListEditor::add()
{
    const QString command = m_field->text();
    if (command.isEmpty())
        return;
    m_field->clear();
    if (!m_commands.contains(command))
        put(m_commands + QStringList{command});
    m_list->setCurrentRow(static_cast<int>(m_commands.indexOf(command)));
    m_list->scrollToItem(m_list->currentItem());
}

void CommandListEditor::removeSelected()
{
    QStringList kept;
    for (int i = 0; i < m_list->count(); ++i) {
        if (!m_list->item(i)->isSelected())
            kept.append(m_list->item(i)->text());
    }
    if (kept.size() != m_list->count())
        put(kept);
}

void CommandListEditor::takeEdit(QListWidgetItem* item)
{
    const int row = m_list->row(item);
    if (row < 0 || row >= m_commands.size() || item->text() == m_commands.at(row))
        return;
    // An entry that says nothing matches nothing; the edit is taken back.
    if (item->text().isEmpty()) {
        item->setText(m_commands.at(row));
        return;
    }
    QStringList edited = m_commands;
    edited[row] = item->text();
    put(edited);
}

void CommandListEditor::undo()
{
    if (m_undo.empty())
        return;
    const QStringList before = m_undo.back();
    m_undo.pop_back();
    setCommands(before);
    refreshButtons();
    Q_EMIT edited(before);
}

void CommandListEditor::put(const QStringList& commands)
{
    if (commands == m_commands)
        return;
    m_undo.push_back(m_commands);
    if (m_undo.size() > undoLimit)
        m_undo.erase(m_undo.begin());
    setCommands(commands);
    Q_EMIT edited(commands);
}

void CommandListEditor::refreshButtons()
{
    m_add->setEnabled(!m_field->text().isEmpty());
    m_edit->setEnabled(m_list->selectedItems().size() == 1);
    m_remove->setEnabled(!m_list->selectedItems().isEmpty());
    m_undoButton->setEnabled(!m_undo.empty());
    m_restore->setEnabled(m_commands != m_defaults);
}

} // namespace nibbo
