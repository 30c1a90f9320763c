/* zorexp/routine_library.h: what a routine library offers the modelling runtime, and what the
 * runtime offers it back. A routine library is a shared library lib<Name>.so holding the
 * routines that model equations of the form  call (outputs) = Proc(inputs)  evaluate.
 *
 * A library author includes this header (plain C, no other dependency) and exports:
 *   - zorexp_routine_interface(): 2 when the library offers dense routines only, 4 when it also
 *     offers sparse ones. A declaration of interface version v is served only by a library
 *     that reports at least v.
 *   - optionally zorexp_routine_attach(services): called once right after loading; the table
 *     stays valid while the library is loaded. Routines that take a component list need it.
 *   - its routines, under the entry-point names of their declarations, with C linkage.
 *
 * Argument buffer. All arguments of one call live in one array of 8-byte words. Argument k
 * starts at word offsets[k] - 1 (offsets count from 1). A real takes one word; an integer takes
 * the first 4 bytes of a word (an integer array packs 4-byte integers one after the other,
 * rounded up to whole words); a string is a field of 40 characters padded with blanks, not
 * terminated. Array sizes come in the dimension lists: one entry per array dimension, in
 * argument order, inputs' list and outputs' list apart.
 *
 * Derivatives. On a call of type ZOREXP_CALL_DERIVATIVES a routine whose declaration says it
 * returns derivatives also fills derivatives[o * n_in + i] = d output element o / d input
 * element i, counting the elements of all outputs (o) and of all inputs (i) in argument order,
 * constants included, from 0.
 *
 * Status. *status is 1 on entry. A routine that cannot compute its outputs sets it to 0 or a
 * negative value and should say why through services->report(ZOREXP_REPORT_ERROR, ...).
 * Outputs and derivatives must be finite on success; the runtime refuses non-finite ones.
 */
#ifndef ZOREXP_ROUTINE_LIBRARY_H
#define ZOREXP_ROUTINE_LIBRARY_H

#ifdef __cplusplus
extern "C" {
#endif

/* Interface versions a library reports. */
#define ZOREXP_ROUTINE_INTERFACE_DENSE 2
#define ZOREXP_ROUTINE_INTERFACE_SPARSE 4

/* Call types (the last argument of a dense routine, the first of a sparse one). */
#define ZOREXP_CALL_VALUES 0       /* outputs only */
#define ZOREXP_CALL_PREPARE 1      /* set-up call before a series of evaluations */
#define ZOREXP_CALL_INITIALISE 2   /* initialisation call */
#define ZOREXP_CALL_DERIVATIVES 4  /* outputs and derivatives */

/* Severities of services->report. */
#define ZOREXP_REPORT_NOTE 0     /* for the log, for example an extrapolation, said once per solve */
#define ZOREXP_REPORT_ERROR 1    /* why the routine failed; the host shows it with the declaration */

/* What the runtime offers a routine library. `list` is the value of the runtime-owned integer a
 * routine receives (argument 8 of a dense routine, 8 of a sparse one): a handle of the component
 * list of the model that calls, or 0 when the call has none. */
typedef struct zorexp_host_services {
    int version; /* 1 */
    /* Number of components of the list; 0 for an unknown handle. */
    int (*component_count)(int list);
    /* Id of component `index` (from 0) as the list names it; NULL when out of range. */
    const char* (*component_id)(int list, int index);
    /* A list option ("KBASE", "PROPERTY-METHOD", ...) as text; NULL when the list has no such
     * option. Option names compare without regard to case. */
    const char* (*list_option)(int list, const char* option);
    /* A message for the host: routine is the entry point's name. */
    void (*report)(int severity, const char* routine, const char* message);
} zorexp_host_services;

/* A dense routine: 14 arguments, all by address. */
typedef void zorexp_dense_routine(double* inputs, int* input_dims, double* outputs, int* output_dims,
                                  int* input_offsets, int* output_offsets, int* status, int* list,
                                  double* work, int* work_length, double* derivatives, int* output_elements,
                                  int* input_elements, int* call_type);

/* A sparse routine (entry points named "ZORM13_..."): 16 arguments, all by address. rows and
 * columns hold (o + 1, i + 1) for every output element o and input element i, o-major; the
 * routine writes derivative k into derivatives[k]. `own` is a cell of the call's own. */
typedef void zorexp_sparse_routine(int* call_type, double* inputs, int* input_dims, double* outputs,
                                   int* output_dims, int* input_offsets, int* output_offsets, int* list,
                                   double* work, int* work_length, int* entries, int* rows, int* columns,
                                   int* own, double* derivatives, int* status);

/* Exported by every routine library. */
typedef int zorexp_routine_interface_function(void);
/* Exported by libraries that want the host services. */
typedef void zorexp_routine_attach_function(const zorexp_host_services* services);

#ifdef __cplusplus
}
#endif

#endif /* ZOREXP_ROUTINE_LIBRARY_H */
