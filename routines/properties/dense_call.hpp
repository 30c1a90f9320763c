#pragma once
// The 14 arguments of a dense routine call, with readers for the packed argument buffer: a real
// takes one word, an integer the first 4 bytes of one, an array starts at its offset. Offsets
// count from 1. Derivatives are d output element o / d input element i at [o * n_in + i].
#include <cstring>

#include <zorexp/routine_library.h>

namespace zx::routines {

struct DenseCall {
    double* inputs;
    int* input_dims;
    double* outputs;
    int* output_dims;
    int* input_offsets;
    int* output_offsets;
    int* status;
    int* list;
    double* work;
    int* work_length;
    double* derivatives;
    int* output_elements;
    int* input_elements;
    int* call_type;

    double Real(int arg) const { return inputs[input_offsets[arg] - 1]; }
    int Integer(int arg) const {
        int value;
        std::memcpy(&value, &inputs[input_offsets[arg] - 1], sizeof value);
        return value;
    }
    const double* Array(int arg) const { return &inputs[input_offsets[arg] - 1]; }
    double* Output(int arg) const { return &outputs[output_offsets[arg] - 1]; }
    bool WantsDerivatives() const { return *call_type == ZOREXP_CALL_DERIVATIVES; }
    // Start of a new series of evaluations: a prepare or initialise call.
    bool StartsSeries() const { return *call_type == ZOREXP_CALL_PREPARE || *call_type == ZOREXP_CALL_INITIALISE; }
    double* DerivativeRow(int output_element) const { return &derivatives[output_element * *input_elements]; }
};

}  // namespace zx::routines

// Defines an exported dense routine `name`; the body sees its arguments as `call`.
#define ZX_DENSE_ROUTINE(name)                                                                                                          \
    static void name##_body(const zx::routines::DenseCall& call);                                                                       \
    extern "C" __attribute__((visibility("default"))) void name(double* inputs, int* input_dims, double* outputs, int* output_dims,      \
                                                                int* input_offsets, int* output_offsets, int* status, int* list,        \
                                                                double* work, int* work_length, double* derivatives,                    \
                                                                int* output_elements, int* input_elements, int* call_type) {            \
        name##_body({inputs, input_dims, outputs, output_dims, input_offsets, output_offsets, status, list, work, work_length,          \
                     derivatives, output_elements, input_elements, call_type});                                                         \
    }                                                                                                                                   \
    static void name##_body(const zx::routines::DenseCall& call)
