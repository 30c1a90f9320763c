/* libExampleRoutines.so: a routine library with two routines.
 *
 *   EX_heat_duty       Q = F * cp * (T_out - T_in), with derivatives
 *                      declaration: "R*, R*, R*, R* -> R", derivatives yes
 *   EX_mixture_average a = sum(x_i v_i) / sum(x_i) over the calling model's components,
 *                      with derivatives
 *                      declaration: "R[1]*, R[1]* -> R", derivatives yes, component list yes
 */
#include <stdio.h>

#include "zorexp/routine_library.h"

#define EXPORT __attribute__((visibility("default")))

static const zorexp_host_services* services = 0;

EXPORT int zorexp_routine_interface(void) { return ZOREXP_ROUTINE_INTERFACE_DENSE; }

EXPORT void zorexp_routine_attach(const zorexp_host_services* s) { services = s; }

/* Marks the call as failed and tells the host why. */
static void fail(int* status, const char* routine, const char* why) {
    *status = 0;
    if (services) services->report(ZOREXP_REPORT_ERROR, routine, why);
}

/* Inputs: flow F, heat capacity cp, inlet and outlet temperatures. Output: duty Q. */
EXPORT void EX_heat_duty(double* in, int* in_dims, double* out, int* out_dims, int* in_offsets, int* out_offsets,
                         int* status, int* list, double* work, int* work_length, double* derivatives,
                         int* output_elements, int* input_elements, int* call_type) {
    (void)in_dims, (void)out_dims, (void)list, (void)work, (void)work_length, (void)output_elements;
    /* Fortran flavour: argument k starts at word offsets[k] - 1. */
    const double f = in[in_offsets[0] - 1], cp = in[in_offsets[1] - 1];
    const double t_in = in[in_offsets[2] - 1], t_out = in[in_offsets[3] - 1];
    if (cp <= 0.0) {
        fail(status, "EX_heat_duty", "the heat capacity must be positive");
        return;
    }
    out[out_offsets[0] - 1] = f * cp * (t_out - t_in);
    if (*call_type == ZOREXP_CALL_DERIVATIVES) {
        /* derivatives[o * input_elements + i]: one output, four input elements. */
        const int n = *input_elements;
        derivatives[0 * n + 0] = cp * (t_out - t_in);
        derivatives[0 * n + 1] = f * (t_out - t_in);
        derivatives[0 * n + 2] = -f * cp;
        derivatives[0 * n + 3] = f * cp;
    }
}

/* Inputs: composition x and values v, both over the calling model's components. Output: the
 * composition-weighted average of v. */
EXPORT void EX_mixture_average(double* in, int* in_dims, double* out, int* out_dims, int* in_offsets,
                               int* out_offsets, int* status, int* list, double* work, int* work_length,
                               double* derivatives, int* output_elements, int* input_elements, int* call_type) {
    (void)out_dims, (void)work, (void)work_length, (void)output_elements, (void)input_elements;
    const int n = in_dims[0]; /* the size of x; in_dims[1] is the size of v */
    const double* x = in + in_offsets[0] - 1;
    const double* v = in + in_offsets[1] - 1;
    char why[160];
    if (in_dims[1] != n) {
        snprintf(why, sizeof why, "x has %d elements, v has %d", n, in_dims[1]);
        fail(status, "EX_mixture_average", why);
        return;
    }
    /* The list handle names the calling model's component list. */
    if (services && services->component_count(*list) != n) {
        snprintf(why, sizeof why, "%d values for the %d components of the list", n, services->component_count(*list));
        fail(status, "EX_mixture_average", why);
        return;
    }
    double sx = 0.0, sxv = 0.0;
    for (int i = 0; i < n; ++i) {
        sx += x[i];
        sxv += x[i] * v[i];
    }
    if (sx == 0.0) {
        fail(status, "EX_mixture_average", "the composition sums to zero");
        return;
    }
    const double a = sxv / sx;
    out[out_offsets[0] - 1] = a;
    if (*call_type == ZOREXP_CALL_DERIVATIVES) {
        /* One output; the input elements are x_1 .. x_n, then v_1 .. v_n. */
        for (int i = 0; i < n; ++i) {
            derivatives[i] = (v[i] - a) / sx; /* d a / d x_i */
            derivatives[n + i] = x[i] / sx;   /* d a / d v_i */
        }
    }
}
