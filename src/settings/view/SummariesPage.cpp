#include "settings/view/SummariesPage.h"

#include "sessions/SmartSummarizer.h"

#include <QHBoxLayout>
#include <QHostAddress>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QUrl>
#include <QVBoxLayout>

namespace nibbo {
namespace {

bool isThisMachine(const QString& host)
{
    return host == QLatin1String("localhost") || QHostAddress(host).isLoopback();
}

} // namespace

template <typename Answer>
auto SummariesPage::newest(int& serial, Answer answer)
{
    const int asked = ++serial;
    return [page = QPointer<SummariesPage>(this), asked, &serial, answer](const auto& result) {
        if (page && asked == serial)
            answer(result);
    };
}

SummariesPage::SummariesPage(const Context& context)
    : SettingsPage(context, {{u"Summaries", u"摘要"},
                             {u"One short line instead of an agent's long words.",
                              u"用一句短话代替 agent 的长篇大论。"}})
{
    SettingsGroup* const master = group();
    toggle(*master, "smartSummary",
           {{u"Smart summaries", u"智能摘要"},
            {u"An AI model of your choice sums up what an agent says, at most once in 4 seconds and session.",
             u"由你选择的 AI 模型概括 agent 说的话，每个会话最多 4 秒一次。"}},
           &Settings::smartSummary);
    note({u"Privacy: while this is on, what your agents say is sent to the provider below, with your own "
          u"key. While it "
          u"is off, nothing is sent.",
          u"隐私：开启后，agent 说的话会用你自己的密钥发送给下面的服务商；关闭时不发送任何内容。"});
    addProvider();
    addKey();
    addTest();
    onSettings([this](const Settings& settings) {
        if (m_shownProvider == settings.summaryProvider)
            return;
        m_shownProvider = settings.summaryProvider;
        m_key->clear();
        m_testAnswer->hide();
        ++m_testSerial;
        m_test->setEnabled(true);
        showOverrides();
        if (isVisible())
            readKey();
    });
    onLanguage([this] {
        showOverrides();
        if (isVisible())
            readKey();
    });
    connect(&this->settings(), &SettingsStore::summaryOverridesChanged, this, &SummariesPage::showOverrides);
}

void SummariesPage::addProvider()
{
    SettingsGroup* const place = group({u"Provider", u"服务商"});
    choice(*place, "summaryProvider", {{u"Provider", u"服务商"}}, &Settings::summaryProvider);
    m_model = new QLineEdit;
    m_model->setObjectName(QStringLiteral("summaryModel"));
    m_model->setMinimumWidth(230);
    row(*place, m_model, {{u"Model", u"模型"}, {u"Empty means the default.", u"留空则使用默认模型。"}});
    m_address = new QLineEdit;
    m_address->setObjectName(QStringLiteral("summaryBaseURL"));
    m_address->setPlaceholderText(QStringLiteral("https://example.com/v1"));
    auto* const holder = new QWidget;
    auto* const column = new QVBoxLayout(holder);
    column->setContentsMargins(0, 0, 0, 0);
    m_addressWarning = new TextLabel(TextLabel::Tone::caution);
    m_addressWarning->setObjectName(QStringLiteral("summaryBaseURL.warning"));
    column->addWidget(m_address);
    column->addWidget(m_addressWarning);
    holder->setFocusProxy(m_address);
    m_addressRow = row(*place, holder,
                       {{u"Base address", u"服务地址"},
                        {u"Of a service that speaks the OpenAI chat completions form.",
                         u"兼容 OpenAI chat completions 接口的服务。"}},
                       SettingRow::Place::below);
    onLanguage([this] { m_address->setAccessibleName(text(language(), u"Base address", u"服务地址")); });
    connect(m_model, &QLineEdit::textEdited, this,
            [this](const QString& model) { settings().setSummaryModel(provider(), model.trimmed()); });
    connect(m_address, &QLineEdit::textEdited, this, [this](const QString& address) {
        settings().setSummaryBaseURL(SummaryProvider::custom, address.trimmed());
        showAddressWarning();
    });
}

void SummariesPage::addKey()
{
    SettingsGroup* const place = group({u"API key", u"API 密钥"});
    auto* const holder = new QWidget;
    auto* const column = new QVBoxLayout(holder);
    column->setContentsMargins(0, 0, 0, 0);
    auto* const line = new QHBoxLayout;
    m_key = new QLineEdit;
    m_key->setObjectName(QStringLiteral("apiKey"));
    m_key->setEchoMode(QLineEdit::Password);
    m_saveKey = button("saveKey", {u"Save", u"保存"});
    m_removeKey = button("removeKey", {u"Remove", u"移除"});
    m_keyState = new TextLabel;
    m_keyState->setObjectName(QStringLiteral("keyState"));
    line->addWidget(m_key, 1);
    line->addWidget(m_saveKey);
    line->addWidget(m_removeKey);
    column->addLayout(line);
    column->addWidget(m_keyState);
    holder->setFocusProxy(m_key);
    row(*place, holder,
        {{u"", u""},
         {u"Kept in your desktop's keyring and nowhere else. It is never exported or logged.",
          u"只保存在桌面系统的密钥环里，绝不会被导出或写入日志。"}},
        SettingRow::Place::below);
    m_saveKey->setEnabled(false);
    onLanguage([this] {
        m_key->setAccessibleName(text(language(), u"API key", u"API 密钥"));
        m_key->setPlaceholderText(text(language(), u"Paste a key", u"粘贴密钥"));
    });
    connect(m_key, &QLineEdit::textChanged, this,
            [this](const QString& key) { m_saveKey->setEnabled(!key.trimmed().isEmpty()); });
    connect(m_key, &QLineEdit::returnPressed, this, &SummariesPage::saveKey);
    connect(m_saveKey, &QPushButton::clicked, this, &SummariesPage::saveKey);
    connect(m_removeKey, &QPushButton::clicked, this, &SummariesPage::removeKey);
}

void SummariesPage::addTest()
{
    SettingsGroup* const place = group({u"Test", u"测试"});
    auto* const body = new QWidget;
    auto* const column = new QVBoxLayout(body);
    column->setContentsMargins(16, 12, 16, 12);
    column->setSpacing(8);
    m_test = button("testSummary", {u"Send a Test Request", u"发送测试请求"});
    m_testAnswer = new TextLabel;
    m_testAnswer->setObjectName(QStringLiteral("testAnswer"));
    m_testAnswer->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_testAnswer->hide();
    column->addWidget(buttons({m_test}));
    column->addWidget(m_testAnswer);
    place->add(body);
    connect(m_test, &QPushButton::clicked, this, &SummariesPage::test);
}

void SummariesPage::opened()
{
    readKey();
}

void SummariesPage::showOverrides()
{
    // What the user is typing is the newest there is.
    if (!m_model->hasFocus() || m_shownProvider != provider()) {
        const QString model = settings().summaryModel(provider());
        m_model->setText(model == defaultSummaryModel(provider()) ? QString() : model);
    }
    m_model->setPlaceholderText(defaultSummaryModel(provider()));
    if (!m_address->hasFocus())
        m_address->setText(settings().summaryBaseURL(SummaryProvider::custom));
    m_addressRow->setVisible(provider() == SummaryProvider::custom);
    showAddressWarning();
}

void SummariesPage::showAddressWarning()
{
    const QString address = settings().summaryBaseURL(SummaryProvider::custom);
    const QUrl url(address, QUrl::StrictMode);
    QString warning;
    if (!address.isEmpty()) {
        const bool isWeb = url.scheme() == QLatin1String("https") || url.scheme() == QLatin1String("http");
        if (!url.isValid() || !isWeb || url.host().isEmpty())
            warning = text(language(), u"This is no web address.", u"这不是有效的网址。");
        else if (url.scheme() == QLatin1String("http") && !isThisMachine(url.host()))
            warning = text(language(),
                           u"Without https, others on the way can read your key and your agents' words.",
                           u"不使用 https 时，途中的他人可以看到你的密钥和 agent 说的话。");
    }
    m_addressWarning->setText(warning);
    m_addressWarning->setVisible(!warning.isEmpty());
}

// Only where it is looked at: a keyring may ask the user to unlock it.
void SummariesPage::readKey()
{
    services().secrets.read(
        keyName(), newest(m_keySerial, [this](const Result<std::optional<QString>>& key) {
            const bool isThere = key && *key && !(**key).isEmpty();
            m_keyState->setTone(key ? TextLabel::Tone::ordinary : TextLabel::Tone::caution);
            m_keyState->setText(!key      ? key.error()
                                : isThere ? text(language(), u"A key is stored.", u"已保存密钥。")
                                          : text(language(), u"No key is stored.", u"未保存密钥。"));
            m_removeKey->setEnabled(isThere);
        }));
}

SecretStore::Done SummariesPage::thenForgetKeys(SecretStore::Done done)
{
    // Whatever the page shows by then: a key that was changed must not stay in use.
    return [&summarizer = services().summarizer, page = QPointer<SummariesPage>(this),
            done = std::move(done)](const Result<void>& result) {
        if (page)
            summarizer.forgetKeys();
        done(result);
    };
}

void SummariesPage::saveKey()
{
    const QString key = m_key->text().trimmed();
    if (key.isEmpty())
        return;
    const auto done = newest(m_keySerial, [this](const Result<void>& written) {
        if (!written) {
            m_keyState->setTone(TextLabel::Tone::caution);
            m_keyState->setText(
                text(language(), u"The key was not stored: %1", u"密钥未保存：%1").arg(written.error()));
            return;
        }
        m_key->clear();
        readKey();
    });
    services().secrets.write(keyName(), key, thenForgetKeys(done));
}

void SummariesPage::removeKey()
{
    const auto done = newest(m_keySerial, [this](const Result<void>& removed) {
        if (removed) {
            readKey();
            return;
        }
        m_keyState->setTone(TextLabel::Tone::caution);
        m_keyState->setText(
            text(language(), u"The key was not removed: %1", u"密钥未移除：%1").arg(removed.error()));
    });
    services().secrets.remove(keyName(), thenForgetKeys(done));
}

void SummariesPage::test()
{
    m_test->setEnabled(false);
    m_testAnswer->setTone(TextLabel::Tone::quiet);
    m_testAnswer->setText(text(language(), u"Asking…", u"正在请求…"));
    m_testAnswer->show();
    services().summarizer.test(newest(m_testSerial, [this](const Result<QString>& line) {
        m_test->setEnabled(true);
        m_testAnswer->setTone(line ? TextLabel::Tone::ordinary : TextLabel::Tone::caution);
        m_testAnswer->setText(line ? text(language(), u"It works: %1", u"成功：%1").arg(*line)
                                   : line.error());
    }));
}

} // namespace nibbo
