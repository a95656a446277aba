#include "pet/PetBubbleKind.h"

namespace nibbo {
namespace {

QString joined(const QString& before, QLatin1String separator, const QString& after)
{
    return before.isEmpty() || after.isEmpty() ? before + after : before + separator + after;
}

QString plain(const MessageBubble& bubble)
{
    return bubble.text;
}

QString plain(const NarrationBubble& bubble)
{
    return joined(bubble.detail.value_or(QString()), QLatin1String(" - "), bubble.text);
}

QString plain(const ApprovalBubble& bubble)
{
    return joined(bubble.prompt.title, QLatin1String(": "), bubble.prompt.command);
}

} // namespace

QString plainText(const PetBubbleKind& kind)
{
    return std::visit([](const auto& bubble) { return plain(bubble); }, kind).simplified();
}

} // namespace nibbo
