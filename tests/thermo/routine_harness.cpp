#include "routine_harness.hpp"

#include <dlfcn.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <stdexcept>

namespace {

struct ListData {
    std::vector<std::string> ids;
    std::map<std::string, std::string> options;
};
std::map<int, ListData> g_lists;
std::vector<HostReport> g_reports;
int g_next = 100;

int ComponentCount(int list) {
    const auto it = g_lists.find(list);
    return it == g_lists.end() ? 0 : static_cast<int>(it->second.ids.size());
}
const char* ComponentId(int list, int index) {
    const auto it = g_lists.find(list);
    if (it == g_lists.end() || index < 0 || index >= static_cast<int>(it->second.ids.size())) return nullptr;
    return it->second.ids[index].c_str();
}
const char* ListOption(int list, const char* option) {
    const auto it = g_lists.find(list);
    if (it == g_lists.end()) return nullptr;
    for (const auto& [name, value] : it->second.options)
        if (strcasecmp(name.c_str(), option) == 0) return value.c_str();
    return nullptr;
}
void Report(int severity, const char* routine, const char* message) { g_reports.push_back({severity, routine, message}); }

const zorexp_host_services kServices{1, ComponentCount, ComponentId, ListOption, Report, nullptr};   // version 1: no solution_mode

}  // namespace

int FakeHost::AddList(const std::vector<std::string>& ids, const std::map<std::string, std::string>& options) {
    g_lists[++g_next] = {ids, options};
    return g_next;
}
void FakeHost::Reset() {
    g_lists.clear();
    g_reports.clear();
}
std::vector<HostReport>& FakeHost::Reports() { return g_reports; }
int FakeHost::Count(int severity, const std::string& containing) {
    return static_cast<int>(std::count_if(g_reports.begin(), g_reports.end(), [&](const HostReport& r) {
        return r.severity == severity && r.message.find(containing) != std::string::npos;
    }));
}
const zorexp_host_services* FakeHost::Services() { return &kServices; }

RoutineLibrary::RoutineLibrary(const std::string& path) : handle_(dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw std::runtime_error(dlerror());
    Attach();
}
RoutineLibrary::~RoutineLibrary() { dlclose(handle_); }
zorexp_dense_routine* RoutineLibrary::Entry(const char* name) const { return reinterpret_cast<zorexp_dense_routine*>(dlsym(handle_, name)); }
void RoutineLibrary::Attach() const {
    auto* attach = reinterpret_cast<zorexp_routine_attach_function*>(dlsym(handle_, "zorexp_routine_attach"));
    attach(FakeHost::Services());
}

PackedCall::PackedCall(zorexp_dense_routine* routine, int list, const std::vector<Arg>& args, const std::vector<int>& output_sizes)
    : routine_(routine), list_(list), work_(16, 0.0) {
    for (const Arg& a : args) {
        offsets_.push_back(static_cast<int>(buffer_.size()) + 1);
        if (a.kind == Arg::Real) buffer_.push_back(a.real);
        if (a.kind == Arg::Integer) {
            double word = 0.0;
            std::memcpy(&word, &a.integer, sizeof a.integer);
            buffer_.push_back(word);
        }
        if (a.kind == Arg::Vector) {
            in_dims_.push_back(static_cast<int>(a.vector.size()));
            buffer_.insert(buffer_.end(), a.vector.begin(), a.vector.end());
        }
        n_in_ += a.Elements();
    }
    first_output_ = static_cast<int>(offsets_.size());
    for (int size : output_sizes) {
        offsets_.push_back(static_cast<int>(buffer_.size()) + 1);
        if (size > 0) out_dims_.push_back(size);
        buffer_.resize(buffer_.size() + std::max(size, 1), 0.0);
        n_out_ += std::max(size, 1);
    }
    in_dims_.push_back(0);
    out_dims_.push_back(0);
    result_.inputs = n_in_;
    result_.derivatives.assign(static_cast<std::size_t>(n_out_) * n_in_, 0.0);
    result_.outputs.assign(n_out_, 0.0);
}

const CallResult& PackedCall::Invoke(int call_type) {
    result_.status = 1;
    int work_length = static_cast<int>(work_.size()), n_out = n_out_, n_in = n_in_;
    routine_(buffer_.data(), in_dims_.data(), buffer_.data(), out_dims_.data(), offsets_.data(), offsets_.data() + first_output_,
             &result_.status, &list_, work_.data(), &work_length, result_.derivatives.data(), &n_out, &n_in, &call_type);
    const double* out = &buffer_[offsets_[first_output_] - 1];
    std::copy(out, out + n_out_, result_.outputs.begin());
    return result_;
}

CallResult CallRoutine(zorexp_dense_routine* routine, int list, const std::vector<Arg>& args, const std::vector<int>& output_sizes, int call_type) {
    PackedCall call(routine, list, args, output_sizes);
    return call.Invoke(call_type);
}

double WorstDerivativeMismatch(zorexp_dense_routine* routine, int list, const std::vector<Arg>& args, const std::vector<int>& output_sizes,
                               double floor) {
    const CallResult base = CallRoutine(routine, list, args, output_sizes);
    if (base.status != 1) return INFINITY;
    double worst = 0.0;
    int column = 0;
    for (std::size_t a = 0; a < args.size(); ++a) {
        for (int e = 0; e < args[a].Elements(); ++e, ++column) {
            if (args[a].kind == Arg::Integer || args[a].fixed) continue;
            auto plus = args, minus = args;
            double& xp = plus[a].kind == Arg::Vector ? plus[a].vector[e] : plus[a].real;
            double& xm = minus[a].kind == Arg::Vector ? minus[a].vector[e] : minus[a].real;
            const double h = 1e-6 * std::max(1.0, std::abs(xp));
            xp += h;
            xm -= h;
            const CallResult up = CallRoutine(routine, list, plus, output_sizes, ZOREXP_CALL_VALUES);
            const CallResult down = CallRoutine(routine, list, minus, output_sizes, ZOREXP_CALL_VALUES);
            if (up.status != 1 || down.status != 1) return INFINITY;
            for (std::size_t o = 0; o < base.outputs.size(); ++o) {
                const double fd = (up.outputs[o] - down.outputs[o]) / (2.0 * h);
                const double an = base.D(static_cast<int>(o), column);
                const double scale = std::max({std::abs(an), std::abs(fd), floor, 1e-4 * std::abs(base.outputs[o])});
                worst = std::max(worst, std::abs(fd - an) / scale);
            }
        }
    }
    return worst;
}
