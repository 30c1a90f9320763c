// Property routines on one core, for a 20-component Peng-Robinson mixture:
//  - BM_LiquidEnthalpyWithDerivatives: PENTH_MOL_LIQ with its 22 derivatives, called through
//    its C entry point in libqelp.so as the runtime calls it, and in the same loop the thermo
//    library directly (the baseline); calls per second of each and their time ratio. The second
//    argument sets binary interaction parameters (1) or leaves them zero (0).
//  - BM_BubbleTemperature: PBUBT the same way against the library's bubble-point solver.
// The goal for the first is at least 100,000 routine calls per second.
#include <benchmark/benchmark.h>

#include <chrono>
#include <cmath>
#include <map>

#include "routine_harness.hpp"
#include "routine_paths.hpp"
#include "thermo/phase_equilibrium.hpp"
#include "thermo/property_model.hpp"
#include "thermo/units.hpp"

namespace {

using Clock = std::chrono::steady_clock;
using namespace zx::thermo;

const std::vector<std::string> kIds{"METHANE", "ETHANE",  "PROPANE",      "N-BUTANE",    "STYRENE",   "N-PENTANE", "N-HEXANE",
                                    "N-HEPTANE", "N-OCTANE", "ETHYLENE",   "PROPYLENE",   "1-BUTENE",  "BENZENE",   "TOLUENE",
                                    "ETHYLBENZENE", "CYCLOHEXANE", "N2",    "CO2",         "H2S",       "WATER"};

std::vector<double> Composition() {
    std::vector<double> x(kIds.size());
    double sum = 0.0;
    for (std::size_t i = 0; i < x.size(); ++i) sum += x[i] = 1.0 + static_cast<double>(i % 5);
    for (double& v : x) v /= sum;
    return x;
}

std::map<std::string, std::string> Options(bool kij) {
    std::map<std::string, std::string> o{{"PROPERTY-METHOD", "PENG-ROBINSON"}};
    if (kij) o["PR-KIJ"] = "CO2:METHANE=0.09; CO2:ETHANE=0.13; H2S:METHANE=0.08; N2:METHANE=0.03; WATER:CO2=0.2";
    return o;
}

std::string KijText(bool kij) { return kij ? Options(true)["PR-KIJ"] : ""; }

double Seconds(Clock::duration d) { return std::chrono::duration<double>(d).count(); }

// Skips the benchmark with the routine's own message.
void Fail(benchmark::State& state) {
    static std::string message;
    message = FakeHost::Reports().empty() ? "the routine failed" : FakeHost::Reports().back().message;
    state.SkipWithError(message.c_str());
}

void Report(benchmark::State& state, Clock::duration routine, Clock::duration library) {
    const double calls = static_cast<double>(state.iterations());
    state.counters["routine_calls_per_s"] = calls / Seconds(routine);
    state.counters["library_calls_per_s"] = calls / Seconds(library);
    state.counters["ratio"] = Seconds(routine) / Seconds(library);
}

void BM_LiquidEnthalpyWithDerivatives(benchmark::State& state) {
    const bool kij = state.range(0) != 0;
    FakeHost::Reset();
    RoutineLibrary qelp(QelpLibrary());
    const int list = FakeHost::AddList(kIds, Options(kij));
    const std::vector<double> x = Composition();
    PackedCall call(qelp.Entry("RX55IF_gpidlhx"), list, {Arg::R(40.0), Arg::R(30.0), Arg::V(x)}, {0});
    const ComponentDatabase db = ComponentDatabase::Load(DatabasePath(ZX_BUILD_PREFIX));
    auto model = PropertyModel::Create(MakeMixture(db, kIds, Method::PengRobinson, KijText(kij)));
    PhaseProperties p;
    p.Resize(kIds.size());
    if (call.Invoke().status != 1) return Fail(state);
    Clock::duration routine{}, library{};
    for (auto _ : state) {
        const auto t0 = Clock::now();
        call.Invoke();
        benchmark::ClobberMemory();
        const auto t1 = Clock::now();
        model->Evaluate(Phase::Liquid, 40.0 + kCelsiusOffset, 30e5, x.data(), kEnthalpy | kGradients, p);
        benchmark::ClobberMemory();
        const auto t2 = Clock::now();
        routine += t1 - t0;
        library += t2 - t1;
    }
    if (std::abs(call.Invoke().outputs[0] - p.h * 1e-6) > 1e-12) state.SkipWithError("the routine and the library disagree");
    Report(state, routine, library);
}

void BM_BubbleTemperature(benchmark::State& state) {
    FakeHost::Reset();
    RoutineLibrary qelp(QelpLibrary());
    const int list = FakeHost::AddList(kIds, Options(false));
    const std::vector<double> x = Composition();
    PackedCall call(qelp.Entry("RX55IF_gpibtx"), list, {Arg::R(30.0), Arg::V(x)}, {0});
    const ComponentDatabase db = ComponentDatabase::Load(DatabasePath(ZX_BUILD_PREFIX));
    auto model = PropertyModel::Create(MakeMixture(db, kIds, Method::PengRobinson));
    PhaseEquilibrium eq(*model);
    std::vector<double> y;
    if (call.Invoke(ZOREXP_CALL_VALUES).status != 1) return Fail(state);
    Clock::duration routine{}, library{};
    double t = 0.0;
    for (auto _ : state) {
        const auto t0 = Clock::now();
        call.Invoke(ZOREXP_CALL_VALUES);
        benchmark::ClobberMemory();
        const auto t1 = Clock::now();
        t = eq.BubbleTemperature(30e5, x.data(), y);
        benchmark::ClobberMemory();
        const auto t2 = Clock::now();
        routine += t1 - t0;
        library += t2 - t1;
    }
    if (std::abs(call.Invoke(ZOREXP_CALL_VALUES).outputs[0] - (t - kCelsiusOffset)) > 1e-9) state.SkipWithError("the routine and the library disagree");
    state.counters["bubble_C"] = t - kCelsiusOffset;
    Report(state, routine, library);
}

}  // namespace

BENCHMARK(BM_LiquidEnthalpyWithDerivatives)->Arg(0)->Arg(1)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_BubbleTemperature)->Unit(benchmark::kMicrosecond);

BENCHMARK_MAIN();
