#include "app/onboarding/PetSelectionPage.h"

#include "app/ShareFolder.h"
#include "app/onboarding/OnboardingButton.h"
#include "app/onboarding/PetPreview.h"
#include "pet/packs/PackLibrary.h"
#include "pet/packs/PackPicture.h"
#include "settings/view/Aside.h"
#include "settings/view/Theme.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QDropEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QMimeData>
#include <QPainter>
#include <QVBoxLayout>

namespace nibbo {
namespace {

constexpr int previewSide = 150;

struct SourceRow
{
    PetSource source;
    const char* name;
    TextPair title;
};

constexpr std::array<SourceRow, 3> sources{{
    {PetSource::official, "official", {u"Official Nibbo", u"官方 Nibbo"}},
    {PetSource::custom, "custom", {u"Choose Image", u"选择图片"}},
    {PetSource::pack, "pack", {u"Import Pack", u"导入宠物包"}},
}};

QString symbolOf(PetSource source)
{
    switch (source) {
    case PetSource::custom:
        return onboardingSymbol(QStringLiteral("photo"));
    case PetSource::pack:
        return onboardingSymbol(QStringLiteral("square.and.arrow.down"));
    case PetSource::official:
        break;
    }
    return shareFolder() + QStringLiteral("/icons/nibbo-symbolic.svg");
}

/// The ground that the pet stands on while it is looked at.
class Stage final : public QWidget
{
public:
    using QWidget::QWidget;

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter(this);
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(QPen(theme::hairline(palette()), 1));
        painter.setBrush(theme::mixed(theme::raised(palette()),
                                      palette().color(QPalette::Active, QPalette::Highlight), 0.06));
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 18, 18);
    }
};

QString droppedFile(const QMimeData& data)
{
    const QList<QUrl> urls = data.urls();
    return urls.size() == 1 ? urls.front().toLocalFile() : QString();
}

} // namespace

PetSelectionPage::PetSelectionPage(const Context& context)
    : OnboardingPage(context)
    , m_preview(new PetPreview(previewSide, shareFolder() + QStringLiteral("/pets/nibbo")))
    , m_name(new TextLabel)
    , m_sourceLabel(new TextLabel)
    , m_sources()
    , m_note(new TextLabel(TextLabel::Tone::quiet))
{
    setAcceptDrops(true);
    auto* const column = new QVBoxLayout(this);
    column->setContentsMargins(36, 26, 36, 0);
    column->setSpacing(0);
    addHeading(*column);
    column->addSpacing(14);

    auto* const stage = new Stage;
    auto* const standing = new QVBoxLayout(stage);
    standing->setContentsMargins(28, 16, 28, 10);
    standing->setSpacing(6);
    standing->addWidget(m_preview, 0, Qt::AlignHCenter);
    m_name->setAlignment(Qt::AlignHCenter);
    m_name->setObjectName(QStringLiteral("petName"));
    m_name->setFont(theme::heading(1.0));
    standing->addWidget(m_name);
    stage->setMinimumWidth(260);
    column->addWidget(stage, 0, Qt::AlignHCenter);
    column->addStretch(1);

    m_sourceLabel->setFont(theme::heading(1.0));
    m_sourceLabel->setObjectName(QStringLiteral("sourceLabel"));
    column->addWidget(m_sourceLabel);
    column->addSpacing(6);
    auto* const row = new QHBoxLayout;
    row->setSpacing(8);
    for (std::size_t i = 0; i < sources.size(); ++i) {
        auto* const button = new OnboardingButton(OnboardingButton::Kind::card);
        button->setObjectName(QLatin1String(sources[i].name));
        button->setSymbol(symbolOf(sources[i].source));
        connect(button, &OnboardingButton::clicked, this,
                [this, source = sources[i].source] { choose(source); });
        row->addWidget(button, 1);
        m_sources[i] = button;
    }
    column->addLayout(row);
    column->addSpacing(8);
    m_note->setObjectName(QStringLiteral("note"));
    m_note->setAlignment(Qt::AlignHCenter);
    m_note->setFont(theme::scaled(theme::textFont(), 0.95));
    column->addWidget(m_note);
    column->addStretch(1);

    connect(&settings(), &SettingsStore::changed, this, &PetSelectionPage::presentPet);
    retranslate();
}

void PetSelectionPage::retranslate()
{
    setHeading(say(u"Select Your Pet", u"选择你的宠物"),
               say(u"Choose the companion that fits your style.", u"选择适合你风格的伙伴。"));
    m_sourceLabel->setText(say(u"Pet Source", u"宠物来源"));
    for (std::size_t i = 0; i < sources.size(); ++i) {
        m_sources[i]->setText(sources[i].title.in(language()));
        m_sources[i]->setAccessibleName(m_sources[i]->text());
    }
    m_preview->setAccessibleName(say(u"Preview of your pet", u"宠物预览"));
    presentPet();
}

void PetSelectionPage::showEvent(QShowEvent* event)
{
    OnboardingPage::showEvent(event);
    m_preview->setReducedMotion(reducesMotion(services(), *this));
}

void PetSelectionPage::presentPet()
{
    const Settings& now = settings().current();
    m_preview->present(now);
    m_name->setText(petName());
    for (std::size_t i = 0; i < sources.size(); ++i)
        m_sources[i]->setChecked(sources[i].source == now.petSource);
    if (m_busy)
        m_note->setText(say(u"Importing…", u"正在导入…"));
    else if (!m_refusal.isEmpty())
        m_note->setText(say(u"This file cannot be used: %1", u"无法使用该文件：%1").arg(m_refusal));
    else
        m_note->setText(say(u"You can also drop a picture or a pack here, and change your mind in Settings.",
                            u"也可以把图片或宠物包拖到这里，之后可在设置里更改。"));
    m_note->setTone(m_refusal.isEmpty() || m_busy ? TextLabel::Tone::quiet : TextLabel::Tone::caution);
}

QString PetSelectionPage::petName() const
{
    const Settings& now = settings().current();
    if (const std::optional<QString> image = now.effectiveCustomPetPath())
        return say(u"Your own picture", u"你的图片");
    if (const std::optional<QString> key = now.effectivePackPath()) {
        for (const PetPack& pack : services().packs.packs()) {
            if (pack.key == *key)
                return pack.name;
        }
    }
    return QStringLiteral("Nibbo");
}

void PetSelectionPage::choose(PetSource source)
{
    if (m_busy)
        return presentPet();
    m_refusal.clear();
    if (source == PetSource::official)
        settings().change([](Settings& settings) { settings.petSource = PetSource::official; });
    else
        openDialog(source);
    // A click checks its button; what is really chosen is for the settings to say.
    presentPet();
}

void PetSelectionPage::openDialog(PetSource source)
{
    auto* const dialog = new QFileDialog(window());
    dialog->setAttribute(Qt::WA_DeleteOnClose);
    dialog->setObjectName(QStringLiteral("fileDialog"));
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setDirectory(services().paths.home());
    if (source == PetSource::custom) {
        QStringList patterns;
        for (const QString& ending : pictureEndings())
            patterns += QStringLiteral("*.") + ending;
        dialog->setWindowTitle(say(u"Choose Image", u"选择图片"));
        dialog->setNameFilter(say(u"Pictures (%1)", u"图片 (%1)").arg(patterns.join(QLatin1Char(' '))));
        connect(dialog, &QFileDialog::fileSelected, this, &PetSelectionPage::importImage);
    } else {
        dialog->setWindowTitle(say(u"Import Pack", u"导入宠物包"));
        dialog->setNameFilter(say(u"Pet packs (*.zip)", u"宠物包 (*.zip)"));
        connect(dialog, &QFileDialog::fileSelected, this, &PetSelectionPage::importPack);
    }
    dialog->open();
}

void PetSelectionPage::import(const QString& path)
{
    if (pictureEndings().contains(QFileInfo(path).suffix().toLower()))
        importImage(path);
    else
        importPack(path);
}

void PetSelectionPage::importImage(const QString& path)
{
    setBusy(true);
    aside().run(
        this, [&packs = services().packs, path] { return packs.importImage(path); },
        [this](const Result<QString>& copy) {
            setBusy(false);
            if (!copy)
                return refuse(copy.error());
            settings().change([&copy](Settings& settings) {
                settings.petSource = PetSource::custom;
                settings.customPetPath = *copy;
            });
        });
}

void PetSelectionPage::importPack(const QString& path)
{
    setBusy(true);
    aside().run(
        this, [&packs = services().packs, path] { return packs.import(path); },
        [this](const Result<PetPack>& pack) {
            setBusy(false);
            if (!pack)
                return refuse(pack.error());
            settings().change([&pack](Settings& settings) {
                settings.petSource = PetSource::pack;
                settings.activePackPath = pack->key;
            });
        });
}

void PetSelectionPage::setBusy(bool busy)
{
    m_busy = busy;
    m_refusal.clear();
    presentPet();
    Q_EMIT busyChanged(busy);
}

void PetSelectionPage::refuse(const QString& why)
{
    m_refusal = why;
    presentPet();
}

void PetSelectionPage::dragEnterEvent(QDragEnterEvent* event)
{
    if (!m_busy && !droppedFile(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void PetSelectionPage::dropEvent(QDropEvent* event)
{
    event->acceptProposedAction();
    import(droppedFile(*event->mimeData()));
}

} // namespace nibbo
