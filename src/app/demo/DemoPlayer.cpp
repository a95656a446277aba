#include "app/demo/DemoPlayer.h"

#include "app/demo/DemoStory.h"
#include "pet/PetViewModel.h"

#include <QDir>
#include <QJsonDocument>
#include <QJsonObject>
#include <QPainter>
#include <QProcessEnvironment>

#include <algorithm>
#include <cmath>
#include <utility>

namespace nibbo {
namespace {

constexpr Milliseconds betweenPictures{125};
/// Of so many pictures one is kept for the contact sheet.
constexpr int thumbnailEvery = 4;
constexpr Milliseconds thinkingItOver{4000};
constexpr int sheetColumns = 8;
constexpr int sheetPictures = 48;
constexpr int cellWidth = 240;
constexpr int cellHeight = 230;

Milliseconds at(double second)
{
    return Milliseconds(static_cast<qint64>(second * 1000));
}

} // namespace

DemoPlayer::DemoPlayer(Options options, PetViewModel& pet, QWidget& window, Scheduler& scheduler,
                       QObject* parent)
    : QObject(parent)
    , m_options(std::move(options))
    , m_pet(pet)
    , m_window(window)
    , m_scheduler(scheduler)
{}

DemoPlayer::~DemoPlayer()
{
    for (const std::unique_ptr<QProcess>& helper : m_helpers) {
        helper->disconnect(this);
        helper->kill();
        helper->waitForFinished(1000);
    }
}

void DemoPlayer::play()
{
    if (!m_options.pictures.isEmpty()) {
        if (!QDir().mkpath(m_options.pictures))
            return fail(QStringLiteral("cannot make the folder %1").arg(m_options.pictures));
        m_recording = m_scheduler.every(betweenPictures, [this] { record(); });
        // Nobody watches a recording: after a while the story's person says yes.
        connect(&m_pet, &PetViewModel::bubbleChanged, this, [this] {
            const auto& bubble = m_pet.bubble();
            if (bubble && m_pet.bubbleVisible() && std::holds_alternative<ApprovalBubble>(*bubble) &&
                !m_answer)
                m_answer = m_scheduler.after(thinkingItOver, [this] { answerCard(); });
        });
    }
    for (const DemoBeat& beat : demoStory())
        m_beats.push_back(m_scheduler.after(at(beat.second), [this, &beat] { call(beat); }));
    m_beats.push_back(m_scheduler.after(at(demoLength), [this] { end(); }));
}

void DemoPlayer::call(const DemoBeat& beat)
{
    const QString agent = QString::fromLatin1(beat.agent);
    QJsonObject payload = QJsonDocument::fromJson(beat.payload).object();
    const bool speaksCamelCase = agent == QLatin1String("copilot");
    payload.insert(speaksCamelCase ? QStringLiteral("sessionId") : QStringLiteral("session_id"),
                   QStringLiteral("demo-") + agent);
    payload.insert(QStringLiteral("cwd"), m_options.home + QStringLiteral("/shop"));
    payload.insert(QStringLiteral("hook_event_name"), QString::fromLatin1(beat.event));

    auto helper = std::make_unique<QProcess>();
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(QStringLiteral("HOME"), m_options.home);
    helper->setProcessEnvironment(environment);
    helper->setStandardOutputFile(QProcess::nullDevice());
    helper->setStandardErrorFile(QProcess::nullDevice());
    connect(helper.get(), &QProcess::errorOccurred, this, [this, process = helper.get()] {
        fail(QStringLiteral("the helper %1 does not run: %2").arg(m_options.helper, process->errorString()));
    });
    helper->start(m_options.helper, {QStringLiteral("--source"), agent, QStringLiteral("--event"),
                                     QString::fromLatin1(beat.event)});
    helper->write(QJsonDocument(payload).toJson(QJsonDocument::Compact));
    helper->closeWriteChannel();
    m_helpers.push_back(std::move(helper));
    if (const QString caption = QString::fromLatin1(beat.caption); !caption.isEmpty())
        Q_EMIT captioned(static_cast<int>(beat.second), caption);
}

void DemoPlayer::answerCard()
{
    m_pet.submitApproval(true);
}

void DemoPlayer::record()
{
    const QImage picture = m_window.grab().toImage();
    const QString path =
        QStringLiteral("%1/%2.png").arg(m_options.pictures).arg(++m_pictureCount, 4, 10, QLatin1Char('0'));
    if (!picture.save(path))
        return fail(QStringLiteral("cannot write %1").arg(path));
    if (m_pictureCount % thumbnailEvery == 1)
        m_thumbnails.push_back(
            picture.scaled(cellWidth, cellHeight, Qt::KeepAspectRatio, Qt::SmoothTransformation));
}

QString DemoPlayer::writeContactSheet() const
{
    const int count = std::min(sheetPictures, static_cast<int>(m_thumbnails.size()));
    if (count == 0)
        return {};
    const int rows = (count + sheetColumns - 1) / sheetColumns;
    QImage sheet(sheetColumns * cellWidth, rows * cellHeight, QImage::Format_RGB32);
    sheet.fill(QColor(0xe9, 0xed, 0xf2));
    QPainter painter(&sheet);
    for (int number = 0; number < count; ++number) {
        const auto index =
            static_cast<std::size_t>(number) * m_thumbnails.size() / static_cast<std::size_t>(count);
        const QImage& picture = m_thumbnails[index];
        const QRect cell((number % sheetColumns) * cellWidth, (number / sheetColumns) * cellHeight, cellWidth,
                         cellHeight);
        // They stand on one line, however high the bubble is.
        painter.drawImage(cell.center().x() - picture.width() / 2, cell.bottom() - picture.height(), picture);
    }
    painter.end();
    const QString path = m_options.pictures + QStringLiteral("/contact-sheet.png");
    return sheet.save(path) ? QString() : QStringLiteral("cannot write %1").arg(path);
}

void DemoPlayer::end()
{
    m_recording.reset();
    if (m_error.isEmpty() && !m_options.pictures.isEmpty())
        m_error = writeContactSheet();
    Q_EMIT finished(m_error);
}

void DemoPlayer::fail(const QString& error)
{
    if (!m_error.isEmpty())
        return;
    m_error = error;
    m_beats.clear();
    m_beats.push_back(m_scheduler.after(Milliseconds(0), [this] { end(); }));
}

} // namespace nibbo
