#include "settings/view/PetPage.h"

#include "pet/packs/PackPicture.h"
#include "settings/view/Aside.h"

#include <QDragEnterEvent>
#include <QFileDialog>
#include <QFileInfo>
#include <QImageReader>
#include <QMimeData>
#include <QProgressBar>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace nibbo {
namespace {

const QString officialCard = QStringLiteral("official");
const QString customCard = QStringLiteral("custom");
const QString packCard = QStringLiteral("pack:");

QString cardOf(const Settings& settings)
{
    switch (settings.petSource) {
    case PetSource::custom:
        return customCard;
    case PetSource::pack:
        return packCard + settings.activePackPath.value_or(QString());
    case PetSource::official:
        break;
    }
    return officialCard;
}

/// A small still picture of a file; null when it cannot be drawn.
QImage still(const QString& path, double devicePixelRatio)
{
    if (path.isEmpty())
        return {};
    QImageReader reader(path);
    const int side = qRound(PetGallery::pictureSide * devicePixelRatio);
    if (const QSize natural = reader.size(); natural.isValid())
        reader.setScaledSize(natural.scaled(side, side, Qt::KeepAspectRatio));
    return reader.read();
}

QStringList droppedFiles(const QMimeData& data)
{
    QStringList files;
    for (const QUrl& url : data.urls()) {
        if (url.isLocalFile())
            files.append(url.toLocalFile());
    }
    return files;
}

} // namespace

PetPage::PetPage(const Context& context)
    : SettingsPage(context, {{u"Pet", u"宠物"}, {u"Who keeps you company.", u"谁来陪你。"}})
{
    addGallery();
    // A scroll area hears of drops through its viewport alone.
    viewport()->setAcceptDrops(true);
    SettingsGroup* const motion = group({u"Size and motion", u"大小与动作"});
    percentage(*motion, "petSizeScale", {{u"Size", u"大小"}}, &Settings::petSizeScale, 50, 200);
    percentage(*motion, "animationSpeed", {{u"Animation speed", u"动画速度"}}, &Settings::animationSpeed, 25,
               300);
    onSettings([this](const Settings& settings) {
        if (isVisible() && m_listedImage != settings.customPetPath)
            list();
        showChoice(settings);
    });
    onLanguage([this] {
        nameOurs();
        showChoice(this->settings().current());
    });
}

void PetPage::addGallery()
{
    SettingsGroup* const pets = group();
    choice(*pets, "petSource",
           {{u"Pet", u"宠物"}, {u"Or choose one by its picture below.", u"也可以在下面按图片选择。"}},
           &Settings::petSource);
    auto* const body = new QWidget;
    auto* const column = new QVBoxLayout(body);
    column->setContentsMargins(12, 10, 12, 14);
    column->setSpacing(8);
    m_gallery = new PetGallery;
    m_gallery->setObjectName(QStringLiteral("petGallery"));
    m_missing = new TextLabel(TextLabel::Tone::caution);
    m_missing->setObjectName(QStringLiteral("petMissing"));
    m_progress = new QProgressBar;
    m_progress->setRange(0, 0);
    m_progress->setTextVisible(false);
    m_progress->setMaximumHeight(6);
    m_progress->hide();
    QPushButton* const image = button("chooseImage", {u"Choose Image…", u"选择图片…"});
    QPushButton* const import = button("importPack", {u"Import Pack…", u"导入宠物包…"});
    QPushButton* const save = button("saveTemplate", {u"Save Template…", u"保存模板…"});
    m_delete = button("deletePack", {u"Delete Pack…", u"删除宠物包…"});
    column->addWidget(m_gallery);
    column->addWidget(m_missing);
    column->addWidget(m_progress);
    QWidget* const actions = buttons({image, import, save, m_delete});
    actions->setContentsMargins(4, 0, 4, 0);
    column->addWidget(actions);
    pets->add(body);
    note({u"Drop a picture, a pack folder or a ZIP file anywhere on this page. The template is a pack to "
          u"start your "
          u"own from.",
          u"可以把图片、宠物包文件夹或 ZIP 文件拖放到本页。模板是一个可供你自制宠物的起点。"});

    connect(m_gallery, &PetGallery::cardChosen, this, &PetPage::choose);
    connect(m_gallery, &PetGallery::deleteAsked, this, &PetPage::askDelete);
    connect(image, &QPushButton::clicked, this, &PetPage::chooseImage);
    connect(import, &QPushButton::clicked, this, &PetPage::choosePack);
    connect(save, &QPushButton::clicked, this, &PetPage::saveTemplate);
    connect(m_delete, &QPushButton::clicked, this, &PetPage::askDelete);
    onLanguage([this] {
        m_gallery->setAccessibleName(text(language(), u"Pets", u"宠物列表"));
        m_progress->setAccessibleName(text(language(), u"Importing", u"正在导入"));
    });
}

void PetPage::opened()
{
    list();
}

void PetPage::list()
{
    m_listedImage = settings().current().customPetPath;
    aside().run(
        this,
        [&packs = services().packs, image = m_listedImage.value_or(QString()), ratio = devicePixelRatioF()] {
            Listing found{packs.packs(), {}};
            const QString folder = packs.folderOf(QStringLiteral("bundled:nibbo"));
            found.cards.push_back(
                {officialCard, {}, {}, still(folder + QStringLiteral("/images/idle.svg"), ratio)});
            if (!image.isEmpty())
                found.cards.push_back({customCard, {}, image, still(image, ratio)});
            for (const PetPack& pack : found.packs) {
                QString detail = pack.author;
                if (!pack.description.isEmpty())
                    detail += (detail.isEmpty() ? QString() : QStringLiteral(": ")) + pack.description;
                found.cards.push_back({packCard + pack.key, pack.name, detail, still(pack.picture, ratio)});
            }
            return found;
        },
        [this](const Listing& found) {
            m_packs = found.packs;
            m_gallery->setCards(found.cards);
            nameOurs();
            showChoice(settings().current());
        });
}

void PetPage::nameOurs()
{
    m_gallery->rename(officialCard, nibbo::title(PetSource::official, language()));
    m_gallery->rename(customCard, nibbo::title(PetSource::custom, language()));
}

void PetPage::showChoice(const Settings& settings)
{
    m_gallery->setChosen(cardOf(settings));
    const PetPack* pack = chosenPack();
    m_delete->setEnabled(pack != nullptr && !pack->isBundled);
    // Before the first listing there is nothing to miss.
    const bool missing = m_gallery->count() > 0 && m_gallery->chosen().isEmpty();
    m_missing->setVisible(missing);
    m_missing->setText(settings.petSource == PetSource::custom
                           ? text(language(), u"No image is chosen yet. The official pet is shown.",
                                  u"尚未选择图片，当前显示官方宠物。")
                       : settings.activePackPath.value_or(QString()).isEmpty()
                           ? text(language(), u"No pack is chosen yet. The official pet is shown.",
                                  u"尚未选择宠物包，当前显示官方宠物。")
                           : text(language(),
                                  u"The chosen pack is not there any more. The official pet is shown.",
                                  u"所选宠物包已不存在，当前显示官方宠物。"));
}

void PetPage::choose(const QString& cardId)
{
    settings().change([&](Settings& settings) {
        if (cardId == officialCard) {
            settings.petSource = PetSource::official;
        } else if (cardId == customCard) {
            settings.petSource = PetSource::custom;
        } else {
            settings.petSource = PetSource::pack;
            settings.activePackPath = cardId.mid(packCard.size());
        }
    });
}

const PetPack* PetPage::chosenPack() const
{
    const Settings& now = settings().current();
    if (now.petSource != PetSource::pack)
        return nullptr;
    const auto pack =
        std::ranges::find_if(m_packs, [&](const PetPack& each) { return each.key == now.activePackPath; });
    return pack == m_packs.end() ? nullptr : &*pack;
}

void PetPage::chooseImage()
{
    QStringList patterns;
    for (const QString& ending : pictureEndings())
        patterns.append(QStringLiteral("*.") + ending);
    auto* const dialog = fileDialog("chooseImageDialog", {u"Choose an Image", u"选择图片"});
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(
        text(language(), u"Images (%1)", u"图片 (%1)").arg(patterns.join(QLatin1Char(' '))));
    connect(dialog, &QFileDialog::fileSelected, this, &PetPage::importImage);
    dialog->open();
}

void PetPage::choosePack()
{
    auto* const dialog = fileDialog("choosePackDialog", {u"Import a Pet Pack", u"导入宠物包"});
    dialog->setFileMode(QFileDialog::ExistingFile);
    dialog->setNameFilter(text(language(), u"Pet packs (*.zip)", u"宠物包 (*.zip)"));
    connect(dialog, &QFileDialog::fileSelected, this, &PetPage::importPack);
    dialog->open();
}

void PetPage::bringIn(const QString& path)
{
    const QFileInfo file(path);
    if (!file.isDir() && pictureEndings().contains(file.suffix().toLower()))
        importImage(path);
    else
        importPack(path);
}

void PetPage::importPack(const QString& path)
{
    setBusy(1);
    aside().run(
        this, [&packs = services().packs, path] { return packs.import(path); },
        [this](const Result<PetPack>& imported) {
            setBusy(-1);
            if (!imported) {
                tellFailure(text(language(), u"Could not import the pet pack", u"无法导入宠物包"),
                            imported.error());
                return;
            }
            list();
            choose(packCard + imported->key);
        });
}

void PetPage::importImage(const QString& path)
{
    setBusy(1);
    aside().run(
        this, [&packs = services().packs, path] { return packs.importImage(path); },
        [this](const Result<QString>& imported) {
            setBusy(-1);
            if (!imported) {
                tellFailure(text(language(), u"Could not use the image", u"无法使用该图片"),
                            imported.error());
                return;
            }
            settings().change([&](Settings& settings) {
                settings.petSource = PetSource::custom;
                settings.customPetPath = imported.value();
            });
        });
}

void PetPage::askDelete()
{
    const PetPack* const chosen = chosenPack();
    if (chosen == nullptr || chosen->isBundled)
        return;
    ask("askDeletePack",
        text(language(), u"Delete the pet pack “%1”?", u"删除宠物包“%1”？").arg(chosen->name),
        text(language(), u"Its folder is removed from this computer:\n%1", u"将从本机移除它的文件夹：\n%1")
            .arg(chosen->folder),
        text(language(), u"Delete", u"删除"), [this, pack = *chosen] {
            settings().change([&](Settings& settings) {
                if (settings.activePackPath != pack.key)
                    return;
                settings.petSource = PetSource::official;
                settings.activePackPath.reset();
            });
            aside().run(
                this, [&packs = services().packs, pack] { return packs.remove(pack); },
                [this](const Result<void>& removed) {
                    if (!removed)
                        tellFailure(text(language(), u"Could not delete the pet pack", u"无法删除宠物包"),
                                    removed.error());
                    list();
                });
        });
}

void PetPage::saveTemplate()
{
    auto* const dialog = fileDialog("saveTemplateDialog", {u"Save the Template In", u"将模板保存到"});
    dialog->setFileMode(QFileDialog::Directory);
    dialog->setOption(QFileDialog::ShowDirsOnly);
    connect(dialog, &QFileDialog::fileSelected, this, [this](const QString& folder) {
        setBusy(1);
        aside().run(
            this, [&packs = services().packs, folder] { return packs.saveTemplate(folder); },
            [this](const Result<QString>& saved) {
                setBusy(-1);
                if (saved)
                    tell("templateSaved", text(language(), u"The template is saved", u"模板已保存"), *saved);
                else
                    tellFailure(text(language(), u"Could not save the template", u"无法保存模板"),
                                saved.error());
            });
    });
    dialog->open();
}

void PetPage::setBusy(int by)
{
    m_busy += by;
    m_progress->setVisible(m_busy > 0);
}

void PetPage::dragEnterEvent(QDragEnterEvent* event)
{
    if (!droppedFiles(*event->mimeData()).isEmpty())
        event->acceptProposedAction();
}

void PetPage::dropEvent(QDropEvent* event)
{
    for (const QString& path : droppedFiles(*event->mimeData()))
        bringIn(path);
    event->acceptProposedAction();
}

} // namespace nibbo
