#include "solver/largest_residuals.hpp"

#include <algorithm>
#include <cmath>
#include <limits>

namespace zx::solve {

namespace {

double magnitude(double v) {
    return std::isfinite(v) ? std::fabs(v) : std::numeric_limits<double>::infinity();
}

}  // namespace

std::vector<std::pair<int, double>> largest_residuals(const double* r, int n, int k) {
    std::vector<std::pair<int, double>> out;
    if (n <= 0 || k <= 0) return out;
    k = std::min(k, n);
    // "a ranks before b": larger magnitude, then smaller index.
    const auto before = [](const std::pair<int, double>& a, const std::pair<int, double>& b) {
        const double ma = magnitude(a.second), mb = magnitude(b.second);
        return ma != mb ? ma > mb : a.first < b.first;
    };
    // A heap of the k best seen so far, worst on top: O(n log k), k entries kept.
    out.reserve(k);
    for (int i = 0; i < n; ++i) {
        const std::pair<int, double> e{i, r[i]};
        if (static_cast<int>(out.size()) < k) {
            out.push_back(e);
            std::push_heap(out.begin(), out.end(), before);
        } else if (before(e, out.front())) {
            std::pop_heap(out.begin(), out.end(), before);
            out.back() = e;
            std::push_heap(out.begin(), out.end(), before);
        }
    }
    std::sort_heap(out.begin(), out.end(), before);
    return out;
}

}  // namespace zx::solve
