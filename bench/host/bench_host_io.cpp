// The host's reading and writing: a flowsheet file read into its document and set up, and the
// results written, at 10^4, 10^5 and 10^6 keys or values. Each is timed against a baseline in
// the same process that does the least work giving the same answer, so that the ratio means
// the same on any machine; time per key at the three sizes shows whether cost grows linearly.
//
//   BM_ReadListOfValues   one block, its cell temperatures as one list of N numbers;
//                         baseline: from_chars over the same numbers in the text.
//   BM_ReadElementKeys    one block, N keys "T_CELL(i)": value, read and set up (Build);
//                         baseline: the same as a list, read and set up.
//   BM_ReadBlocks         N / 4 blocks of 4 keys each, read and set up;
//                         baseline: reading alone (the per-key share of the set-up shows).
//   BM_WriteJson/Csv/Text the results of one block of N cells;
//                         baseline: to_chars of the value vector into a buffer, no names.
#include <benchmark/benchmark.h>

#include <charconv>
#include <chrono>
#include <cstring>
#include <ostream>
#include <streambuf>
#include <string>
#include <vector>

#include "flowsheet/flowsheet.hpp"
#include "flowsheet/flowsheet_document.hpp"
#include "flowsheet/results_output.hpp"
#include "models/unitops/rplug_tcool.hpp"
#include "models/unitops/rplug_tcool1.hpp"

namespace {

using namespace zx::flowsheet;
using Clock = std::chrono::steady_clock;

double SecondsSince(Clock::time_point t0) { return std::chrono::duration<double>(Clock::now() - t0).count(); }

VX_Type* Create(const std::string& type, std::string& error) {
    VX_Type* made = nullptr;
    if (VX_EqualCI(type.c_str(), "RPLUG_TCOOL")) made = new VX_RPLUG_TCOOL(true);
    else if (VX_EqualCI(type.c_str(), "RPLUG_TCOOL1")) made = new VX_RPLUG_TCOOL1(true);
    if (!made) {
        error = "the benchmark makes the coolant models only";
        return nullptr;
    }
    made->AddRef();
    return made;
}

double Temperature(long i, long n) { return 300.0 + 100.0 * (1.0 - static_cast<double>(i) / static_cast<double>(n)) + 0.0001 * (i % 7); }

std::string Number(double v) {
    char buf[32];
    return std::string(buf, std::to_chars(buf, buf + sizeof buf, v).ptr);
}

std::string CoolerHead(long cells) {
    return R"({"globals": {"PI": 3.141592653589793}, "blocks": {"COOLER": {"type": "RPLUG_TCOOL", "set": {"NPTS": )" +
           std::to_string(cells) + R"(, "T_CELL0": {"value": 400.0, "spec": "Fixed"}, "DIAM": {"value": 0.05, "spec": "Fixed"},
           "NTUBE": {"value": 500.0, "spec": "Fixed"}, "L": {"value": 12.0, "spec": "Fixed"}, )";
}

std::string ListText(long cells) {
    std::string text = CoolerHead(cells) + "\"T_CELL\": {\"value\": [";
    for (long i = 1; i <= cells; ++i) text += (i > 1 ? ", " : "") + Number(Temperature(i, cells));
    return text + "], \"spec\": \"Fixed\"}}}}}";
}

std::string ElementKeysText(long cells) {
    std::string text = CoolerHead(cells) + "\"T_CELL\": {\"spec\": \"Fixed\"}";
    for (long i = 1; i <= cells; ++i) text += ", \"T_CELL(" + std::to_string(i) + ")\": " + Number(Temperature(i, cells));
    return text + "}}}}";
}

std::string BlocksText(long blocks) {
    std::string text = R"({"blocks": {)";
    for (long b = 0; b < blocks; ++b)
        text += (b ? ", \"W" : "\"W") + std::to_string(b) + R"(": {"type": "RPLUG_TCOOL1", "set": {"NPTS": 1, "CTYPE": "TCool-Spec", )"
                R"("U": {"value": 0.35, "spec": "Fixed"}, "T_COOL": )" + Number(Temperature(b, blocks)) + "}}";
    return text + "}}";
}

// The least a reader must do: find the list and convert its numbers.
double ScanNumbers(const std::string& text) {
    const char* p = std::strstr(text.c_str(), "\"T_CELL\": {\"value\": [") + 22;
    const char* end = text.data() + text.size();
    double sum = 0.0, v = 0.0;
    while (p < end && *p != ']') {
        p = std::from_chars(p, end, v).ptr;
        sum += v;
        while (p < end && (*p == ',' || *p == ' ')) ++p;
    }
    return sum;
}

void SetCounters(benchmark::State& state, double seconds, double baseline, long keys) {
    using C = benchmark::Counter;
    state.counters["keys"] = static_cast<double>(keys);
    state.counters["ns_per_key"] = C(seconds * 1e9 / static_cast<double>(keys), C::kAvgIterations);
    state.counters["baseline_ns_per_key"] = C(baseline * 1e9 / static_cast<double>(keys), C::kAvgIterations);
    state.counters["ratio"] = baseline > 0 ? seconds / baseline : 0.0;
}

void BM_ReadListOfValues(benchmark::State& state) {
    const long cells = state.range(0);
    const std::string text = ListText(cells);
    double seconds = 0, baseline = 0;
    for (auto _ : state) {
        auto t = Clock::now();
        FlowsheetDocument doc = ReadFlowsheetText(text);
        seconds += SecondsSince(t);
        state.SetIterationTime(SecondsSince(t));
        benchmark::DoNotOptimize(doc);
        t = Clock::now();
        benchmark::DoNotOptimize(ScanNumbers(text));
        baseline += SecondsSince(t);
    }
    SetCounters(state, seconds, baseline, cells);
}

// Read and set up; the time of both, and of the baseline text read and set up the same way.
void ReadAndBuild(benchmark::State& state, const std::string& text, const std::string* baselineText, long keys) {
    double seconds = 0, baseline = 0;
    for (auto _ : state) {
        auto t = Clock::now();
        {
            const FlowsheetDocument doc = ReadFlowsheetText(text);
            auto sheet = Flowsheet::Build(doc, Create);
            benchmark::DoNotOptimize(sheet);
        }
        const double once = SecondsSince(t);
        seconds += once;
        state.SetIterationTime(once);
        t = Clock::now();
        if (baselineText) {
            const FlowsheetDocument doc = ReadFlowsheetText(*baselineText);
            auto sheet = Flowsheet::Build(doc, Create);
            benchmark::DoNotOptimize(sheet);
        } else {
            benchmark::DoNotOptimize(ReadFlowsheetText(text));
        }
        baseline += SecondsSince(t);
    }
    SetCounters(state, seconds, baseline, keys);
}

void BM_ReadElementKeys(benchmark::State& state) {
    const long cells = state.range(0);
    const std::string list = ListText(cells);
    ReadAndBuild(state, ElementKeysText(cells), &list, cells);
}

void BM_ReadBlocks(benchmark::State& state) {
    const long keys = state.range(0);
    ReadAndBuild(state, BlocksText(keys / 4), nullptr, keys);
}

// A stream that only counts what it is given: the writers are timed, not a string's growth.
class CountingBuffer : public std::streambuf {
public:
    std::size_t bytes = 0;

protected:
    std::streamsize xsputn(const char*, std::streamsize n) override {
        bytes += static_cast<std::size_t>(n);
        return n;
    }
    int_type overflow(int_type c) override {
        ++bytes;
        return c;
    }
};

enum class Format { Json, Csv, Text };

void Write(benchmark::State& state, Format format) {
    const long cells = state.range(0);
    const FlowsheetDocument doc = ReadFlowsheetText(ListText(cells));
    const auto sheet = Flowsheet::Build(doc, Create);
    const auto& model = static_cast<VX_RPLUG_TCOOL&>(*sheet->Blocks()[0].model);
    const double* values = model.T_CELL.Values();
    std::vector<char> buffer(static_cast<std::size_t>(cells) * 2 * 40);   // two values per cell, at most 40 bytes each
    double seconds = 0, baseline = 0;
    std::size_t bytes = 0;
    for (auto _ : state) {
        CountingBuffer sink;
        std::ostream out(&sink);
        auto t = Clock::now();
        if (format == Format::Json) WriteResultsJson(*sheet, RunSummary{"converged", 1, 0.0}, out);
        else if (format == Format::Csv) WriteResultsCsv(*sheet, out);
        else WriteResultsText(*sheet, out);
        const double once = SecondsSince(t);
        seconds += once;
        state.SetIterationTime(once);
        bytes = sink.bytes;
        t = Clock::now();
        char* p = buffer.data();
        for (int pass = 0; pass < 2; ++pass)   // T_CELL and Q: two values per cell
            for (long i = 0; i < cells; ++i) {
                p = std::to_chars(p, p + 39, values[i], std::chars_format::general, 17).ptr;
                *p++ = ',';
            }
        benchmark::DoNotOptimize(p);
        baseline += SecondsSince(t);
    }
    SetCounters(state, seconds, baseline, 2 * cells);
    state.counters["MB"] = static_cast<double>(bytes) / 1e6;
}

void BM_WriteJson(benchmark::State& state) { Write(state, Format::Json); }
void BM_WriteCsv(benchmark::State& state) { Write(state, Format::Csv); }
void BM_WriteText(benchmark::State& state) { Write(state, Format::Text); }

#define ZX_SIZES ->ArgName("n")->Arg(10000)->Arg(100000)->Arg(1000000)->UseManualTime()->Unit(benchmark::kMillisecond)
BENCHMARK(BM_ReadListOfValues) ZX_SIZES;
BENCHMARK(BM_ReadElementKeys) ZX_SIZES->Iterations(2);
BENCHMARK(BM_ReadBlocks)->ArgName("n")->Arg(10000)->Arg(100000)->Arg(400000)->UseManualTime()->Unit(benchmark::kMillisecond)->Iterations(2);
BENCHMARK(BM_WriteJson) ZX_SIZES;
BENCHMARK(BM_WriteCsv) ZX_SIZES;
BENCHMARK(BM_WriteText) ZX_SIZES;

}  // namespace

BENCHMARK_MAIN();
