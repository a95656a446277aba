#pragma once

#include <QHashFunctions>
#include <QString>

#include <vector>

namespace nibbo {

struct ProviderSpec;

/// Who an event comes from: a lower-case id. One that the registry does not know is still valid.
class AgentProvider final
{
public:
    explicit AgentProvider(const QString& rawValue)
        : m_rawValue(rawValue.toLower())
    {}

    const QString& rawValue() const { return m_rawValue; }
    /// The ids of the registry, in its order.
    static std::vector<AgentProvider> allCases();
    /// Null for an id that the registry does not know.
    const ProviderSpec* spec() const;
    /// The registry's title; for an unknown id, the id with the first letter of each word in upper case.
    QString displayName() const;

    bool operator==(const AgentProvider&) const = default;

private:
    QString m_rawValue;
};

inline size_t qHash(const AgentProvider& provider, size_t seed = 0)
{
    return ::qHash(provider.rawValue(), seed);
}

} // namespace nibbo
