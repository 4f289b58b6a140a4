// Seeded cases: PRODUCT_SERVICES_CASES of them (1000), from seed PRODUCT_SERVICES_SEED (1) on. A failing case
// names its seed; with that seed and one case it is replayed.
#pragma once

#include <cstdlib>
#include <gtest/gtest.h>
#include <random>
#include <string>

class Random
{
public:
    explicit Random(unsigned seed) : m_engine(seed) {}

    /// A number from 0 up to, not including, `bound`.
    unsigned Below(unsigned bound) { return static_cast<unsigned>(m_engine() % bound); }
    bool Once(unsigned in) { return Below(in) == 0; }

    template <typename Choices>
    auto Pick(const Choices& choices)
    {
        return choices[Below(static_cast<unsigned>(std::size(choices)))];
    }

    std::string Bytes(unsigned count)
    {
        std::string bytes;
        while (bytes.size() < count) {
            bytes += static_cast<char>(Below(256));
        }
        return bytes;
    }

private:
    std::mt19937 m_engine;
};

inline unsigned FromEnvironment(const char* name, unsigned otherwise)
{
    const char* value = std::getenv(name);
    return value ? static_cast<unsigned>(std::strtoul(value, nullptr, 10)) : otherwise;
}

/// Runs `test` for every seed and stops at the first that fails.
template <typename Test>
void ForEachSeed(const Test& test)
{
    const unsigned first = FromEnvironment("PRODUCT_SERVICES_SEED", 1);
    const unsigned cases = FromEnvironment("PRODUCT_SERVICES_CASES", 1000);
    for (unsigned seed = first; seed < first + cases && !testing::Test::HasFailure(); ++seed) {
        SCOPED_TRACE("PRODUCT_SERVICES_SEED=" + std::to_string(seed) + " PRODUCT_SERVICES_CASES=1");
        Random random(seed);
        test(random);
    }
}
