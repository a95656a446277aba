#pragma once

#include "base/Language.h"

#include <QStringList>
#include <QWidget>

#include <vector>

class QLineEdit;
class QListWidget;
class QListWidgetItem;
class QPushButton;

namespace nibbo {

/// A list of command texts that the user adds to, edits, removes from, takes steps back in and restores to
/// what it was at first. It keeps texts exactly as they are typed: blanks at their ends mean something. It
/// shows what it is given and asks for changes; it decides nothing by itself.
class CommandListEditor final : public QWidget
{
    Q_OBJECT
public:
    /// The parts are named after `name`, as in "trustedCommands.add".
    CommandListEditor(const QString& name, QStringList defaults, QWidget* parent = nullptr);

    void setCommands(const QStringList& commands);
    void setLanguage(AppLanguage language);

Q_SIGNALS:
    void edited(const QStringList& commands);

private:
    void add();
    void removeSelected();
    void takeEdit(QListWidgetItem* item);
    void undo();
    void put(const QStringList& commands);
    void refreshButtons();
    QPushButton* makeButton(const char* part, void (CommandListEditor::*action)());

    QString m_name;
    QStringList m_defaults;
    QStringList m_commands;
    std::vector<QStringList> m_undo;
    QListWidget* m_list;
    QLineEdit* m_field;
    QPushButton* m_add;
    QPushButton* m_edit;
    QPushButton* m_remove;
    QPushButton* m_undoButton;
    QPushButton* m_restore;
};

} // namespace nibbo
