#include "agents/AgentProvider.h"

#include "agents/ProviderRegistry.h"

namespace nibbo {

std::vector<AgentProvider> AgentProvider::allCases()
{
    std::vector<AgentProvider> result;
    for (const ProviderSpec& spec : ProviderRegistry::all())
        result.emplace_back(spec.id);
    return result;
}

const ProviderSpec* AgentProvider::spec() const
{
    return ProviderRegistry::byID().value(m_rawValue, nullptr);
}

QString AgentProvider::displayName() const
{
    if (const ProviderSpec* known = spec())
        return known->title;
    QString name = m_rawValue;
    bool atStart = true;
    for (QChar& letter : name) {
        if (atStart)
            letter = letter.toUpper();
        atStart = !letter.isLetterOrNumber() && letter != QLatin1Char('\'');
    }
    return name;
}

} // namespace nibbo
