#pragma once

#include "settings/view/SettingsPage.h"

#include <QTimer>

class QListView;
class QStackedWidget;

namespace nibbo {

class SessionListModel;

/// Every agent at work: which, where, at what and for how long; those that wait for the user come first.
class SessionsPage final : public SettingsPage
{
    Q_OBJECT
public:
    explicit SessionsPage(const Context& context);

protected:
    void opened() override;
    void hideEvent(QHideEvent* event) override;

private:
    void refresh();

    SessionListModel* m_model;
    QListView* m_list;
    QStackedWidget* m_listOrNothing;
    /// Many events in a moment make one refresh.
    QTimer m_soon;
    QTimer m_ageing;
};

} // namespace nibbo
