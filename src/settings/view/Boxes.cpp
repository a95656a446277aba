#include "settings/view/Boxes.h"

#include "settings/view/Theme.h"

#include <QApplication>
#include <QIcon>
#include <QLabel>
#include <QMessageBox>
#include <QPushButton>

#include <utility>

namespace nibbo {
namespace {

constexpr int pictureSide = 48;

QMessageBox* plainBox(const QWidget* over, const QString& name, const BoxTexts& texts)
{
    auto* const box = new QMessageBox(over->window());
    box->setAttribute(Qt::WA_DeleteOnClose);
    // A window takes neither of them over from its parent.
    box->setPalette(over->window()->palette());
    box->setFont(theme::textFont());
    box->setIconPixmap(QApplication::windowIcon().pixmap(pictureSide));
    box->setObjectName(name);
    box->setWindowTitle(QStringLiteral("Nibbo"));
    box->setTextFormat(Qt::PlainText);
    box->setText(texts.title);
    box->setInformativeText(texts.message);
    if (auto* const label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_label")))
        label->setFont(theme::heading(1.1));
    if (auto* const label = box->findChild<QLabel*>(QStringLiteral("qt_msgbox_informativelabel")))
        label->setTextFormat(Qt::PlainText);
    return box;
}

} // namespace

void askUser(QWidget* asker, const QString& name, const BoxTexts& texts, const QString& agree,
             AppLanguage language, std::function<void()> yes)
{
    QMessageBox* const question = plainBox(asker, name, texts);
    QPushButton* const agreed = question->addButton(agree, QMessageBox::AcceptRole);
    agreed->setObjectName(QStringLiteral("agree"));
    QPushButton* const cancel =
        question->addButton(text(language, u"Cancel", u"取消"), QMessageBox::RejectRole);
    cancel->setObjectName(QStringLiteral("cancel"));
    question->setEscapeButton(cancel);
    question->setDefaultButton(cancel);
    QObject::connect(agreed, &QPushButton::clicked, asker, std::move(yes));
    question->open();
}

void tellUser(QWidget* teller, const QString& name, const BoxTexts& texts, AppLanguage language)
{
    QMessageBox* const notice = plainBox(teller, name, texts);
    notice->addButton(text(language, u"OK", u"好"), QMessageBox::AcceptRole)
        ->setObjectName(QStringLiteral("ok"));
    notice->open();
}

} // namespace nibbo
