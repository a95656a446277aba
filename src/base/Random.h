#pragma once

#include <QtGlobal>

#include <random>

namespace nibbo {

/// Chance, handed in so that a test can hold it in its hand. One thread.
class Random
{
public:
    virtual ~Random() = default;
    /// Uniform in [0, bound); bound > 0.
    virtual int below(int bound) = 0;
    /// Uniform in [from, to).
    virtual double between(double from, double to) = 0;
};

class SystemRandom final : public Random
{
public:
    SystemRandom();
    int below(int bound) override;
    double between(double from, double to) override;

private:
    std::mt19937_64 m_engine;
};

} // namespace nibbo
