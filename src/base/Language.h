#pragma once

#include <QString>

namespace nibbo {

/// The language that the user chose; `effectiveLanguage` never gives `system`.
enum class AppLanguage
{
    system,
    en,
    zh
};

/// What is meant when the user chose `chosen` and the system's preferred languages begin with
/// `firstPreferred`.
AppLanguage effectiveLanguage(AppLanguage chosen, const QString& firstPreferred);
/// The first of the system's preferred languages; "en" when there is none.
QString firstPreferredLanguage();

/// One user-visible text in both languages.
struct TextPair
{
    const char16_t* english;
    const char16_t* chinese;

    QString in(AppLanguage language) const
    {
        return QString::fromUtf16(language == AppLanguage::zh ? chinese : english);
    }
};

/// The text of the pair that fits; both literals are u"...".
inline QString text(AppLanguage language, const char16_t* english, const char16_t* chinese)
{
    return TextPair{english, chinese}.in(language);
}

} // namespace nibbo
