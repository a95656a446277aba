#include "base/Random.h"

#include <QRandomGenerator>

namespace nibbo {

SystemRandom::SystemRandom()
    : m_engine(QRandomGenerator::system()->generate64())
{}

int SystemRandom::below(int bound)
{
    return std::uniform_int_distribution<int>(0, bound - 1)(m_engine);
}

double SystemRandom::between(double from, double to)
{
    return std::uniform_real_distribution<double>(from, to)(m_engine);
}

} // namespace nibbo
