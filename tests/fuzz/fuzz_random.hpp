#pragma once
// The fuzz harness's random choices: one 64-bit generator seeded by the run's seed, so that a
// seed names the same cases on every machine (std::mt19937_64 is specified exactly; the
// standard distributions are not, so none is used).
#include <cstddef>
#include <cstdint>
#include <random>
#include <string>
#include <vector>

namespace zx::fuzz {

class FuzzRandom {
public:
    explicit FuzzRandom(std::uint64_t seed) : m_engine(seed) {}

    std::uint64_t Next() { return m_engine(); }
    // 0 .. n-1 (n > 0).
    std::size_t Below(std::size_t n) { return static_cast<std::size_t>(m_engine() % n); }
    bool Chance(unsigned percent) { return Below(100) < percent; }
    template <class T>
    const T& Pick(const std::vector<T>& items) {
        return items[Below(items.size())];
    }

private:
    std::mt19937_64 m_engine;
};

}  // namespace zx::fuzz
