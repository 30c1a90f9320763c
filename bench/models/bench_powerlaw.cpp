// POWERLAW (generated from its description) with 100 reactions over 50 components, molarities,
// two components with nonzero exponents per reaction: Residuals + Jacobian through the
// runtime's protocol driver, per reaction, against a hand-written loop over flat arrays that
// computes the same residuals and derivatives in the same entry order, in the same process.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <string>
#include <vector>

#include "models/reactions/powerlaw.hpp"

namespace {

using Clock = std::chrono::steady_clock;
constexpr int kReactions = 100, kComponents = 50;

double Seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// The block's numbers as flat arrays, two-index ones component-major as the block holds them.
struct Flat {
    int nc = 0, nr = 0;
    double rtol, hrToS, cToK, r, t;
    std::vector<double> conc, z, rho, conca, exponent, coef, ratep, v, preExp, tempExp, actEnergy, rate, qhr, qh;
    double qtot;
    double& At(std::vector<double>& a, int c, int rx) const { return a[static_cast<std::size_t>(c * nr + rx)]; }
};

// Residuals and Jacobian values of the five groups, in the block's row and entry order.
__attribute__((noinline)) void FlatEvaluate(Flat& f, double* res, double* jac) {
    const int nc = f.nc, nr = f.nr;
    const double tk = f.t + f.cToK;
    for (int rx = 0; rx < nr; ++rx)
        for (int c = 0; c < nc; ++c) {
            const double z = f.At(f.z, c, rx), rho = f.rho[static_cast<std::size_t>(rx)];
            *res++ = f.At(f.conc, c, rx) - rho * z;
            *jac++ = 1.0;
            *jac++ = -z;
            *jac++ = -rho;
        }
    for (int rx = 0; rx < nr; ++rx) {
        for (int c = 0; c < nc; ++c) {
            const bool shifted = f.At(f.exponent, c, rx) <= f.rtol;
            *res++ = f.At(f.conca, c, rx) - (shifted ? f.rtol + f.At(f.conc, c, rx) : f.At(f.conc, c, rx));
            *jac++ = 1.0;
            *jac++ = shifted ? -1.0 : 0.0;
            *jac++ = -1.0;
        }
        const auto x = static_cast<std::size_t>(rx);
        double product = 1.0;
        for (int c = 0; c < nc; ++c) product *= std::pow(std::max(f.At(f.conca, c, rx), 1e-35), f.At(f.exponent, c, rx));
        const double ea = f.actEnergy[x] * 1000000.0, n = f.tempExp[x];
        const double arrhenius = std::exp(-ea / (tk * f.r)), tkn = std::pow(tk, n);
        const double k = f.hrToS * f.v[x] * (f.preExp[x] * tkn) * arrhenius * product;
        *res++ = f.ratep[x] - k;
        *jac++ = 1.0;
        *jac++ = -k / f.hrToS;
        *jac++ = -k / f.v[x];
        *jac++ = -k / f.preExp[x];
        const double dT = -(k * n / tk + k * ea / (tk * tk * f.r));
        *jac++ = dT;
        *jac++ = dT;
        *jac++ = -k * std::log(tk);
        *jac++ = k * 1000000.0 / (tk * f.r);
        *jac++ = -k * ea / (tk * f.r * f.r);
        for (int c = 0; c < nc; ++c) {
            const double conca = f.At(f.conca, c, rx), e = f.At(f.exponent, c, rx);
            const double m = std::max(conca, 1e-35), body = std::pow(m, e);
            const double others = product / body;
            *jac++ = conca > 1e-35 ? -others * e * std::pow(m, e - 1.0) * f.hrToS * f.v[x] * f.preExp[x] * tkn * arrhenius : 0.0;
            *jac++ = -k * std::log(m);
        }
    }
    for (int c = 0; c < nc; ++c) {
        double sum = 0.0;
        for (int rx = 0; rx < nr; ++rx) sum += f.At(f.coef, c, rx) * f.ratep[static_cast<std::size_t>(rx)];
        *res++ = f.rate[static_cast<std::size_t>(c)] - sum;
        *jac++ = 1.0;
        for (int rx = 0; rx < nr; ++rx) {
            *jac++ = -f.ratep[static_cast<std::size_t>(rx)];
            *jac++ = -f.At(f.coef, c, rx);
        }
    }
    for (int rx = 0; rx < nr; ++rx) {
        *res++ = f.qhr[static_cast<std::size_t>(rx)] - f.qh[static_cast<std::size_t>(rx)];
        *jac++ = 1.0;
        *jac++ = -1.0;
    }
    double duty = 0.0;
    for (int rx = 0; rx < nr; ++rx) duty += f.qh[static_cast<std::size_t>(rx)] * f.ratep[static_cast<std::size_t>(rx)];
    *res++ = f.qtot - duty;
    *jac++ = 1.0;
    for (int rx = 0; rx < nr; ++rx) {
        *jac++ = -f.ratep[static_cast<std::size_t>(rx)];
        *jac++ = -f.qh[static_cast<std::size_t>(rx)];
    }
}

std::vector<double> Values(VX_Matrix& a) {
    std::vector<double> out;
    for (int k = 0; k < a.Size(); ++k) out.push_back(*static_cast<VX_VarParam*>(a.At(k))->RealSlot());
    return out;
}

double Worst(const std::vector<double>& a, const std::vector<double>& b) {
    double worst = 0.0;
    for (std::size_t k = 0; k < a.size(); ++k)
        worst = std::max(worst, std::fabs(a[k] - b[k]) / std::max(1.0, std::fabs(b[k])));
    return worst;
}

void BM_Evaluate(benchmark::State& state) {
    VX_Session session;
    VX_Session* previous = VX_Session::MakeCurrent(&session);
    {
        std::vector<std::string> names;
        for (int c = 1; c <= kComponents; ++c) names.push_back("C" + std::to_string(c));
        session.DefineComponentList("BENCH", names);
        VX_POWERLAW m(true);
        VX_ProtocolDriver driver;
        driver.AddBlock(m);
        driver.LinkExternals([](VX_ModelType&, VX_ExternalBase& reference, const char* name) {
            return VX_SessionGlobalFor(reference, name);
        });
        m.NR.AssignUser(VX_ATTR_VALUE, VX_Value(kReactions, 0));
        driver.SetDims();
        driver.ExecuteAssignments(10, VX_CTX_MODEL);
        driver.SetDims();
        for (int rx = 1; rx <= kReactions; ++rx) {
            const std::string a = "C" + std::to_string(rx % kComponents + 1), b = "C" + std::to_string((rx + 7) % kComponents + 1);
            m.EXPONENT(a.c_str(), rx).AssignUser(VX_ATTR_VALUE, VX_Value(1.0, 0));
            m.EXPONENT(b.c_str(), rx).AssignUser(VX_ATTR_VALUE, VX_Value(0.5, 0));
            m.COEF(a.c_str(), rx).AssignUser(VX_ATTR_VALUE, VX_Value(-1.0, 0));
            m.COEF(b.c_str(), rx).AssignUser(VX_ATTR_VALUE, VX_Value(1.0, 0));
            m.PRE_EXP(rx).AssignUser(VX_ATTR_VALUE, VX_Value(1000.0, 0));
            m.ACT_ENERGY(rx).AssignUser(VX_ATTR_VALUE, VX_Value(0.05, 0));
            m.RHO(rx).SetSolverValue(10.0);
            m.V(rx).SetSolverValue(2.0);
            for (int c = 1; c <= kComponents; ++c) {
                const std::string id = "C" + std::to_string(c);
                m.Z(id.c_str(), rx).SetSolverValue(1.0 / kComponents + 0.001 * c);
                m.CONC(id.c_str(), rx).SetSolverValue(0.2 + 0.01 * c);
                m.CONCA(id.c_str(), rx).SetSolverValue(0.2 + 0.01 * c);
            }
        }
        m.T.SetSolverValue(150.0);
        driver.ExecuteAssignments(10, VX_CTX_MODEL);
        driver.SetUpEquations();

        Flat f;
        f.nc = kComponents;
        f.nr = kReactions;
        f.rtol = m.RTOL.fv();
        f.hrToS = (*m.HR_TO_S).fv();
        f.cToK = (*m.C_TO_K).fv();
        f.r = (*m.R).fv();
        f.t = m.T.fv();
        f.conc = Values(m.CONC);
        f.z = Values(m.Z);
        f.rho = Values(m.RHO);
        f.conca = Values(m.CONCA);
        f.exponent = Values(m.EXPONENT);
        f.coef = Values(m.COEF);
        f.ratep = Values(m.RATEP);
        f.v = Values(m.V);
        f.preExp = Values(m.PRE_EXP);
        f.tempExp = Values(m.TEMP_EXP);
        f.actEnergy = Values(m.ACT_ENERGY);
        f.rate = Values(m.RATE);
        f.qhr = Values(m.QHR);
        f.qh = Values(m.QH);
        f.qtot = m.QTOT.fv();

        std::vector<double> r(static_cast<std::size_t>(driver.Rows())), v(static_cast<std::size_t>(driver.Entries()));
        std::vector<double> rFlat(r.size()), vFlat(v.size());
        Clock::duration model{}, flat{};
        for (auto _ : state) {
            auto t0 = Clock::now();
            driver.Residuals(r.data());
            driver.Jacobian(v.data());
            benchmark::ClobberMemory();
            auto t1 = Clock::now();
            FlatEvaluate(f, rFlat.data(), vFlat.data());
            benchmark::ClobberMemory();
            auto t2 = Clock::now();
            model += t1 - t0;
            flat += t2 - t1;
        }
        const double worst = std::max(Worst(r, rFlat), Worst(v, vFlat));
        if (worst > 1e-12) state.SkipWithError(("the model and the flat loop disagree by " + std::to_string(worst)).c_str());
        const double evals = static_cast<double>(state.iterations()) * kReactions;
        state.counters["model_ns_per_reaction"] = 1e9 * Seconds(model) / evals;
        state.counters["flat_ns_per_reaction"] = 1e9 * Seconds(flat) / evals;
        state.counters["ratio"] = Seconds(model) / Seconds(flat);
        state.counters["rows"] = static_cast<double>(r.size());
        state.counters["entries"] = static_cast<double>(v.size());
    }
    VX_Session::MakeCurrent(previous);
}

BENCHMARK(BM_Evaluate)->Unit(benchmark::kMicrosecond);

}  // namespace

BENCHMARK_MAIN();
