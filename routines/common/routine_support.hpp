#pragma once
// What the routines of this project's libraries share: the export macro, the runtime's services,
// and Call, a view of one call's arguments in the layout of zorexp/routine_library.h (Fortran
// flavour: offsets count from 1).
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "zorexp/routine_library.h"

#define ZX_ROUTINE extern "C" __attribute__((visibility("default")))

namespace zx::routine_support {

// The runtime's services; null when the library was loaded without them.
const zorexp_host_services* Services();

// A number as messages show it, to full precision.
inline std::string Number(double x) {
    char text[32];
    std::snprintf(text, sizeof text, "%.17g", x);
    return text;
}

class Call {
public:
    Call(const char* routine, double* buffer, const int* inputDims, const int* outputDims, const int* inputOffsets,
         const int* outputOffsets, int* status, int list, double* derivatives, int outputElements, int inputElements,
         int callType)
        : m_routine(routine), m_buffer(buffer), m_inputDims(inputDims), m_outputDims(outputDims), m_inputOffsets(inputOffsets),
          m_outputOffsets(outputOffsets), m_status(status), m_list(list), m_derivatives(derivatives),
          m_outputElements(outputElements), m_inputElements(inputElements), m_callType(callType) {}

    double In(int arg) const { return m_buffer[m_inputOffsets[arg] - 1]; }
    const double* InArray(int arg) const { return m_buffer + m_inputOffsets[arg] - 1; }
    int InInteger(int arg) const {
        int v;
        std::memcpy(&v, m_buffer + m_inputOffsets[arg] - 1, sizeof v);
        return v;
    }
    // A string input without its padding blanks.
    std::string_view InString(int arg) const {
        const char* field = reinterpret_cast<const char*>(m_buffer + m_inputOffsets[arg] - 1);
        std::size_t n = 40;
        while (n > 0 && (field[n - 1] == ' ' || field[n - 1] == '\0')) --n;
        return {field, n};
    }
    // The slot of an input, for the rare routine that leaves a value there for the model.
    double* InputSlot(int arg) { return m_buffer + m_inputOffsets[arg] - 1; }
    double& Out(int arg) { return m_buffer[m_outputOffsets[arg] - 1]; }
    double* OutArray(int arg) { return m_buffer + m_outputOffsets[arg] - 1; }
    // Sizes from the dimension lists: d counts the dimensions of all inputs (or outputs) from 0.
    int InputDim(int d) const { return m_inputDims[d]; }
    int OutputDim(int d) const { return m_outputDims[d]; }
    int InputElements() const { return m_inputElements; }
    int OutputElements() const { return m_outputElements; }
    int List() const { return m_list; }
    int CallType() const { return m_callType; }

    bool WantsDerivatives() const { return m_callType == ZOREXP_CALL_DERIVATIVES; }
    // d output element o / d input element i (elements counted over all outputs and inputs).
    void Derivative(int o, int i, double value) { m_derivatives[o * m_inputElements + i] = value; }
    // Clears all derivatives of a derivative call (the routines then set the nonzero ones).
    void ClearDerivatives() {
        if (WantsDerivatives()) std::memset(m_derivatives, 0, sizeof(double) * static_cast<std::size_t>(m_outputElements * m_inputElements));
    }
    // Marks the call as failed with a status of the routine's own (0 or negative), saying nothing.
    void SetStatus(int status) { *m_status = status; }
    // Marks the call as failed and says why.
    void Fail(const std::string& why) {
        *m_status = 0;
        if (const zorexp_host_services* s = Services()) s->report(ZOREXP_REPORT_ERROR, m_routine, why.c_str());
    }

private:
    const char* m_routine;
    double* m_buffer;
    const int* m_inputDims;
    const int* m_outputDims;
    const int* m_inputOffsets;
    const int* m_outputOffsets;
    int* m_status;
    int m_list;
    double* m_derivatives;
    int m_outputElements;
    int m_inputElements;
    int m_callType;
};

}  // namespace zx::routine_support

// The exported dense routine ENTRY, calling void BODY(zx::routine_support::Call&).
#define ZX_DENSE_ROUTINE(ENTRY, BODY)                                                                              \
    ZX_ROUTINE void ENTRY(double* inputs, int* inputDims, double*, int* outputDims, int* inputOffsets,             \
                          int* outputOffsets, int* status, int* list, double*, int*, double* derivatives,          \
                          int* outputElements, int* inputElements, int* callType) {                                \
        zx::routine_support::Call call(#ENTRY, inputs, inputDims, outputDims, inputOffsets, outputOffsets, status, *list,  \
                                derivatives, *outputElements, *inputElements, *callType);                          \
        BODY(call);                                                                                                \
    }

// The exported sparse routine ENTRY ("ZORM13_..."): its derivative k is the entry (rows[k],
// columns[k]), which the runtime lays out o-major over all output and input elements, so the
// dense numbering o * inputs + i holds, and the last entry names the element counts.
#define ZX_SPARSE_ROUTINE(ENTRY, BODY)                                                                             \
    ZX_ROUTINE void ENTRY(int* callType, double* inputs, int* inputDims, double*, int* outputDims, int* inputOffsets, \
                          int* outputOffsets, int* list, double*, int*, int* entries, int* rows, int* columns, int*, \
                          double* derivatives, int* status) {                                                       \
        const int last = *entries - 1;                                                                             \
        zx::routine_support::Call call(#ENTRY, inputs, inputDims, outputDims, inputOffsets, outputOffsets, status, *list,  \
                                derivatives, last >= 0 ? rows[last] : 0, last >= 0 ? columns[last] : 0, *callType); \
        BODY(call);                                                                                                \
    }
