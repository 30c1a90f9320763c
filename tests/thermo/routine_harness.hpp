#pragma once
// Calls property routines as the runtime does: the library is loaded with dlopen and attached to
// a stand-in host whose component lists and options the test sets; arguments are packed into one
// buffer of 8-byte words with offsets from 1, and derivatives come back output-major.
#include <map>
#include <string>
#include <vector>

#include <zorexp/routine_library.h>

struct HostReport {
    int severity;
    std::string routine, message;
};

// The stand-in host: component lists by handle, and what routines reported.
struct FakeHost {
    static int AddList(const std::vector<std::string>& ids, const std::map<std::string, std::string>& options = {});
    static void Reset();
    static std::vector<HostReport>& Reports();
    static int Count(int severity, const std::string& containing = "");
    static const zorexp_host_services* Services();
};

class RoutineLibrary {
public:
    explicit RoutineLibrary(const std::string& path);  // dlopen + attach
    ~RoutineLibrary();
    RoutineLibrary(const RoutineLibrary&) = delete;
    RoutineLibrary& operator=(const RoutineLibrary&) = delete;
    zorexp_dense_routine* Entry(const char* name) const;  // nullptr when absent
    void Attach() const;

private:
    void* handle_;
};

// One input argument: a real, an integer or a real vector. An id is a real that names something
// (a parameter set) and is not varied by the derivative check.
struct Arg {
    enum Kind { Real, Integer, Vector } kind;
    double real = 0.0;
    int integer = 0;
    std::vector<double> vector;
    bool fixed = false;
    static Arg R(double v) { return {Real, v, 0, {}, false}; }
    static Arg Id(double v) { return {Real, v, 0, {}, true}; }
    static Arg I(int v) { return {Integer, 0.0, v, {}, false}; }
    static Arg V(std::vector<double> v) { return {Vector, 0.0, 0, std::move(v), false}; }
    int Elements() const { return kind == Vector ? static_cast<int>(vector.size()) : 1; }
};

struct CallResult {
    int status = 0;
    std::vector<double> outputs;
    std::vector<double> derivatives;  // outputs x input elements
    int inputs = 0;
    double D(int output, int input) const { return derivatives[output * inputs + input]; }
};

// One call packed once and made as often as wanted (benchmarks call it in a loop).
class PackedCall {
public:
    // output_sizes has one entry per output argument (0 = scalar).
    PackedCall(zorexp_dense_routine* routine, int list, const std::vector<Arg>& args, const std::vector<int>& output_sizes);
    // Makes the call; the result's outputs and derivatives are those of this call.
    const CallResult& Invoke(int call_type = ZOREXP_CALL_DERIVATIVES);

private:
    zorexp_dense_routine* routine_;
    int list_, n_in_ = 0, n_out_ = 0, first_output_ = 0;
    std::vector<double> buffer_, work_;
    std::vector<int> offsets_, in_dims_, out_dims_;
    CallResult result_;
};

// Calls `routine` with `args` once.
CallResult CallRoutine(zorexp_dense_routine* routine, int list, const std::vector<Arg>& args, const std::vector<int>& output_sizes,
                       int call_type = ZOREXP_CALL_DERIVATIVES);

// Largest mismatch between the analytic derivatives and central differences over every real
// input element that is not an id, relative to max(|analytic|, |difference|, floor, 1e-4 |output|).
double WorstDerivativeMismatch(zorexp_dense_routine* routine, int list, const std::vector<Arg>& args, const std::vector<int>& output_sizes,
                               double floor);
