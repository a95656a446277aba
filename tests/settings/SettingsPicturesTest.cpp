// Pictures of every page, for people to look at: in both languages and themes, at scale 1 and 2.
#include "settings/SettingsWindowFixture.h"
#include "settings/view/SettingsPage.h"

#include <QApplication>
#include <QListWidget>
#include <QPainter>
#include <QPalette>
#include <QStackedWidget>

namespace nibbo::test {
namespace {

QPalette darkPalette()
{
    QPalette dark(QColor(0x2b, 0x2d, 0x33), QColor(0x2b, 0x2d, 0x33));
    dark.setColor(QPalette::Base, QColor(0x1f, 0x20, 0x25));
    dark.setColor(QPalette::Button, QColor(0x3a, 0x3d, 0x45));
    return dark;
}

class SettingsPicturesTest : public SettingsWindowFixture
{
protected:
    void SetUp() override
    {
        m_folder = qEnvironmentVariable("NIBBO_PICTURES");
        if (m_folder.isEmpty())
            GTEST_SKIP() << "NIBBO_PICTURES names no folder";
        QDir().mkpath(m_folder);
    }
    void TearDown() override { QApplication::setPalette(QPalette()); }

    void apply(const char* id, AgentEventType type, const char* session, const char* cwd, const char* say,
               const char* command = nullptr)
    {
        AgentEvent event;
        event.provider = AgentProvider(QString::fromUtf8(id));
        event.type = type;
        event.sessionId = QString::fromUtf8(session);
        event.cwd = QString::fromUtf8(cwd);
        event.say = QString::fromUtf8(say);
        if (command != nullptr)
            event.command = QString::fromUtf8(command);
        sessions.apply(event);
    }

    void photograph(const QString& theme)
    {
        for (const AppLanguage chosen : {AppLanguage::en, AppLanguage::zh}) {
            const QString tongue = language(chosen);
            auto& sidebar = part<QListWidget>("sidebar");
            for (int i = 0; i < sidebar.count(); ++i) {
                sidebar.setCurrentRow(i);
                for (int turn = 0; turn < 30; ++turn)
                    QCoreApplication::processEvents(QEventLoop::AllEvents, 5);
                auto* const pages = controller.window()->findChild<QStackedWidget*>();
                const QString name = pages->currentWidget()->objectName();
                const double scale = controller.window()->devicePixelRatioF();
                const QString path =
                    QStringLiteral("%1/%2-%3-%4@%5.png").arg(m_folder, name, tongue, theme).arg(scale);
                EXPECT_TRUE(controller.window()->grab().save(path));
                // The whole of a page that scrolls.
                auto* const page = qobject_cast<SettingsPage*>(pages->currentWidget());
                if (page != nullptr && page->widget()->height() > page->height()) {
                    QPixmap whole(page->widget()->size() * scale);
                    whole.setDevicePixelRatio(scale);
                    whole.fill(page->palette().color(QPalette::Window));
                    page->widget()->render(&whole, {}, {}, QWidget::DrawChildren);
                    EXPECT_TRUE(whole.save(
                        QString(path).replace(QStringLiteral(".png"), QStringLiteral("-whole.png"))));
                }
            }
        }
    }

    QString m_folder;
};

TEST_F(SettingsPicturesTest, everyPage)
{
    sessions.start();
    apply("codex", AgentEventType::coding, "b", "/home/me/src/parser", "Rewriting the tokenizer",
          "make test");
    time.advance(Seconds(250));
    apply("gemini", AgentEventType::thinking, "c", "/home/me/site",
          "Looking for the cause of the slow query");
    apply("claude", AgentEventType::approvalRequired, "a", "/home/me/src/nibbo",
          "I want to clean the build folder.", "rm -rf build");
    time.advance(Seconds(12));
    settings.setStatus(QStringLiteral("claude"), AgentStatus::running);
    settings.setStatus(QStringLiteral("codex"), AgentStatus::connected);
    settings.setStatus(QStringLiteral("gemini"), AgentStatus::connected);
    settings.setStatus(QStringLiteral("kimi"), AgentStatus::notFound);
    ASSERT_TRUE(writeAtomically(home.filePath(QStringLiteral(".claude/settings.json")), "{}\n"));
    ASSERT_TRUE(installer().install());
    settings.setEnabled(QStringLiteral("qwen"), true);

    controller.show();
    photograph(QStringLiteral("light"));
    QApplication::setPalette(darkPalette());
    photograph(QStringLiteral("dark"));
}

} // namespace
} // namespace nibbo::test
