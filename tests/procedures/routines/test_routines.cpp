// The routine library "ZxTestRoutines" the procedure tests bind to. Every routine counts its
// calls and remembers the last call type; zxt_set_failure makes the next calls fail in a chosen
// way, so that the runtime's handling of each failure can be watched.
#include <cmath>
#include <cstring>
#include <set>
#include <string>

#include "routine_support.hpp"

namespace {

using zx::routine_support::Call;

int g_calls = 0;
int g_lastCallType = -1;
int g_failure = 0;   // see zxt_set_failure
double g_lastInput = 0.0;
std::set<double> g_squared;   // every distinct input ZXT_square was called with

enum Failure { kNone = 0, kStatusZero = 1, kNanOutput = 2, kInfiniteDerivative = 3, kNegativeStatusQuiet = 4 };

// Counts the call and applies the failure mode; false when the routine must stop.
bool Begin(Call& c) {
    ++g_calls;
    g_lastCallType = c.CallType();
    if (g_failure == kStatusZero) {
        c.Fail("told to fail");
        return false;
    }
    if (g_failure == kNegativeStatusQuiet) {
        c.SetStatus(-7);
        return false;
    }
    return true;
}

void Finish(Call& c) {
    if (g_failure == kNanOutput) c.Out(0) = std::nan("");
    if (g_failure == kInfiniteDerivative && c.WantsDerivatives()) c.Derivative(0, 0, HUGE_VAL);
}

// y = x^2
void Square(Call& c) {
    if (!Begin(c)) return;
    const double x = c.In(0);
    g_lastInput = x;
    g_squared.insert(x);
    c.Out(0) = x * x;
    if (c.WantsDerivatives()) c.Derivative(0, 0, 2.0 * x);
    Finish(c);
}

// y1 = T * sum(x), y2(i) = x(i) * T^2
void Profile(Call& c) {
    if (!Begin(c)) return;
    const double t = c.In(0);
    const double* x = c.InArray(1);
    const int n = c.InputDim(0);
    double* y2 = c.OutArray(1);
    double sum = 0.0;
    for (int i = 0; i < n; ++i) sum += x[i];
    c.Out(0) = t * sum;
    for (int i = 0; i < c.OutputDim(0); ++i) y2[i] = x[i] * t * t;
    if (c.WantsDerivatives()) {
        c.ClearDerivatives();
        c.Derivative(0, 0, sum);
        for (int i = 0; i < n; ++i) {
            c.Derivative(0, 1 + i, t);
            c.Derivative(1 + i, 0, 2.0 * x[i] * t);
            c.Derivative(1 + i, 1 + i, t * t);
        }
    }
    Finish(c);
}

// y = i + r + (characters of s) + x
void Constants(Call& c) {
    if (!Begin(c)) return;
    c.Out(0) = c.InInteger(0) + c.In(1) + static_cast<double>(c.InString(2).size()) + c.In(3);
    Finish(c);
}

// y = number of calls so far (no inputs)
void CountCalls(Call& c) {
    if (!Begin(c)) return;
    c.Out(0) = g_calls;
}

// Writes 2x into its real input and "CHANGED" into its string input; y = x.
void WriteBack(Call& c) {
    if (!Begin(c)) return;
    const double x = c.In(0);
    c.Out(0) = x;
    *c.InputSlot(0) = 2.0 * x;
    char* field = reinterpret_cast<char*>(c.InputSlot(1));
    std::memset(field, ' ', 40);
    std::memcpy(field, "CHANGED", 7);
}

// y1 = number of components of the calling model's list, y2 = its option KBASE read as a number
// (-1 when absent), plus x so that the call has an input.
void Components(Call& c) {
    if (!Begin(c)) return;
    const zorexp_host_services* s = zx::routine_support::Services();
    const int list = c.List();
    c.Out(0) = s->component_count(list) + 0.0 * c.In(0);
    const char* kbase = s->list_option(list, "kbase");
    c.Out(1) = kbase ? std::atof(kbase) : -1.0;
    // The first component's id, as its length: shows the ids come through.
    const char* first = s->component_id(list, 0);
    c.Out(0) += first ? 100.0 * static_cast<double>(std::strlen(first)) : 0.0;
}

// y = (x1 > 0 ? 1e308 : 0) + x2: a cliff for the overflow rule of finite differences. Fails
// when an input lies below -0.5.
void Cliff(Call& c) {
    if (!Begin(c)) return;
    const double x1 = c.In(0), x2 = c.In(1);
    g_lastInput = x1;
    if (x1 < -0.5 || x2 < -0.5) return c.Fail("input below -0.5");
    c.Out(0) = (x1 > 0.0 ? 1e308 : 0.0) + x2;
}

// The sparse form of ZXT_square; it also checks the row and column numbers it is given.
void SparseSquare(Call& c) {
    if (c.InputElements() != 1 || c.OutputElements() != 1) return c.Fail("sparse entries are not (1, 1)");
    Square(c);
}

}  // namespace

ZX_DENSE_ROUTINE(ZXT_square, Square)
ZX_DENSE_ROUTINE(ZXT_profile, Profile)
ZX_DENSE_ROUTINE(ZXT_constants, Constants)
ZX_DENSE_ROUTINE(ZXT_count, CountCalls)
ZX_DENSE_ROUTINE(ZXT_writeback, WriteBack)
ZX_DENSE_ROUTINE(ZXT_components, Components)
ZX_DENSE_ROUTINE(ZXT_cliff, Cliff)
ZX_SPARSE_ROUTINE(ZORM13_zxt_square, SparseSquare)

// A C-flavour routine: inputs a string, a string array and an integer (offsets from 0). It checks
// that the array's pointer table points at its strings and that every string is NUL-ended;
// y = total characters of all strings + 1000 * (number of array strings) + the integer.
ZX_ROUTINE void ZXT_cstrings(double* in, int* id, double* out, int* od, int* io, int* oo, int* status, int* list, double* w,
                             int* wl, double* d, int* no, int* ni, int* ct) {
    (void)out, (void)w, (void)wl, (void)od, (void)list, (void)d, (void)no, (void)ni;
    ++g_calls;
    g_lastCallType = *ct;
    const char* scalar = reinterpret_cast<const char*>(in + io[0]);
    const char* const* table = reinterpret_cast<const char* const*>(in + io[1]);
    const int n = id[0];
    const char* strings = reinterpret_cast<const char*>(in + io[1]) + ((n * static_cast<int>(sizeof(char*)) + 7) / 8) * 8;
    if (memchr(scalar, '\0', 40) == nullptr) {
        *status = 0;
        return;
    }
    double total = static_cast<double>(std::strlen(scalar));
    for (int i = 0; i < n; ++i) {
        if (table[i] != strings + 40 * i || memchr(table[i], '\0', 40) == nullptr) {
            *status = 0;
            return;
        }
        total += static_cast<double>(std::strlen(table[i]));
    }
    int k;
    std::memcpy(&k, in + io[2], sizeof k);
    in[oo[0]] = total + 1000.0 * n + k;
}

// Told of the services as sources that join a library from elsewhere are (see routines/CMakeLists.txt).
namespace {
const zorexp_host_services* g_attached = nullptr;
}
extern "C" void zx_routine_library_attached(const zorexp_host_services* services) { g_attached = services; }
ZX_ROUTINE int zxt_attached_as_library(void) { return g_attached && g_attached == zx::routine_support::Services(); }

ZX_ROUTINE int zxt_calls(void) { return g_calls; }
ZX_ROUTINE int zxt_last_call_type(void) { return g_lastCallType; }
ZX_ROUTINE double zxt_last_input(void) { return g_lastInput; }
ZX_ROUTINE int zxt_distinct_inputs(void) { return static_cast<int>(g_squared.size()); }
// 0 none, 1 status 0 with a message, 2 NaN output, 3 infinite derivative, 4 status -7 without
// a message.
ZX_ROUTINE void zxt_set_failure(int mode) { g_failure = mode; }
ZX_ROUTINE void zxt_reset(void) {
    g_calls = 0;
    g_lastCallType = -1;
    g_failure = 0;
    g_squared.clear();
}
