#pragma once

#include "base/Time.h"

#include <QImage>
#include <QObject>
#include <QProcess>
#include <QString>
#include <QWidget>

#include <memory>
#include <vector>

namespace nibbo {

class PetViewModel;
struct DemoBeat;

/// Plays the demo's story through the real helper and the real socket, in a home of its own: nothing of the
/// user's is touched. Optionally draws what is seen into numbered pictures and a contact sheet, and then
/// answers the story's request by itself. Main thread.
class DemoPlayer final : public QObject
{
    Q_OBJECT
public:
    struct Options
    {
        /// The home that the helper is given.
        QString home;
        QString helper;
        /// Where pictures go; empty for none.
        QString pictures;
    };

    /// All must outlive the player.
    DemoPlayer(Options options, PetViewModel& pet, QWidget& window, Scheduler& scheduler,
               QObject* parent = nullptr);
    ~DemoPlayer() override;

    void play();

Q_SIGNALS:
    void captioned(int second, const QString& caption);
    /// Once, at the end; the message is empty when all went well.
    void finished(const QString& error);

private:
    void call(const DemoBeat& beat);
    void record();
    void answerCard();
    void end();
    void fail(const QString& error);
    QString writeContactSheet() const;

    Options m_options;
    PetViewModel& m_pet;
    QWidget& m_window;
    Scheduler& m_scheduler;
    std::vector<ScheduledHandle> m_beats;
    ScheduledHandle m_recording;
    ScheduledHandle m_answer;
    std::vector<std::unique_ptr<QProcess>> m_helpers;
    std::vector<QImage> m_thumbnails;
    int m_pictureCount = 0;
    QString m_error;
};

} // namespace nibbo
