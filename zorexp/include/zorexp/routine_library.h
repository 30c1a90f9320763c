/* zorexp/routine_library.h: what a routine library offers the modelling runtime, and what the
 * runtime offers it back. A routine library is a shared library lib<Name>.so holding the
 * routines that model equations of the form  call (outputs) = Proc(inputs)  evaluate.
 *
 * A library author includes this header (plain C, no other dependency) and exports:
 *   - zorexp_routine_interface(): 2 when the library offers dense routines only, 4 when it also
 *     offers sparse ones. A declaration of interface version v is served only by a library
 *     that reports at least v. A library without this export is refused.
 *   - optionally zorexp_routine_attach(services): called once right after loading; the table
 *     stays valid while the library is loaded. Routines that take a component list need it.
 *   - its routines, under the entry-point names of their declarations, with C linkage.
 *
 * Where the runtime looks. Library "Name" is the file lib<Name>.so, its name matched without
 * regard to case, in the directories of the environment variable ZOREXP_ROUTINE_PATH (separated
 * by ':'; only absolute directories count), then in the runtime's own directory
 * "routines" beside libzorexp.so. The current directory is never searched. Each file is
 * loaded once per process and stays loaded.
 *
 * Argument buffer. All arguments of one call live in one array of 8-byte words, inputs first,
 * outputs after them, each argument in the order of the declaration. Argument k starts at word
 * offsets[k] - 1 for declarations of the Fortran flavour (all but a few) and at word offsets[k]
 * for the C flavour (offsets count from 1 and from 0 respectively). In one call,
 *   - a real takes one word (a double);
 *   - an integer takes the first 4 bytes of a word; an integer array packs 4-byte integers one
 *     after the other, rounded up to whole words;
 *   - a string is a field of 40 characters: padded with blanks and not terminated in the
 *     Fortran flavour; ended by a NUL (at most 39 characters, NUL-padded) in the C flavour;
 *   - in the C flavour a string array starts with a table of pointers to its strings (one
 *     char* each, rounded up to whole words), the strings following the table;
 *   - an array's elements come in the order the model gives them: a matrix row by row, its
 *     first index outermost.
 * Outputs are always reals. Array sizes come in the dimension lists: one entry per array
 * dimension, in argument order, inputs' list (input_dims) and outputs' list (output_dims) apart.
 * output_elements and input_elements count the elements of all outputs and all inputs
 * (constants included).
 *
 * Values the routine leaves in input slots are ignored, unless the declaration marks that input
 * as written back and the runtime asks for it (it does not by default).
 *
 * Derivatives. On a call of type ZOREXP_CALL_DERIVATIVES a routine whose declaration says it
 * returns derivatives also fills derivatives[o * n_in + i] = d output element o / d input
 * element i, counting the elements of all outputs (o) and of all inputs (i) in argument order,
 * constants included, from 0. Entries for constants are never read.
 *
 * Work array. work holds *work_length reals (at least one per input and output element) that
 * the routine may use as scratch space; nothing in it survives from one call to the next.
 *
 * Status. *status is 1 on entry. A routine that cannot compute its outputs sets it to 0 or a
 * negative value and should say why through services->report(ZOREXP_REPORT_ERROR, ...).
 * ZOREXP_STATUS_BAD_INPUT says that the inputs name something the routine does not know (a
 * component missing from its database): no other value of the unknowns would help, so hosts
 * treat it as a fault of the user's input rather than of the solve.
 * Outputs and derivatives must be finite on success; the runtime refuses non-finite ones.
 *
 * The runtime calls a routine again only when one of its inputs changed (a NaN input always
 * counts as a change), or when the declaration has no inputs.
 */
#ifndef ZOREXP_ROUTINE_LIBRARY_H
#define ZOREXP_ROUTINE_LIBRARY_H

#ifdef __cplusplus
extern "C" {
#endif

/* Interface versions a library reports. */
#define ZOREXP_ROUTINE_INTERFACE_DENSE 2
#define ZOREXP_ROUTINE_INTERFACE_SPARSE 4

/* A routine's status when its inputs name something it does not know (see above). */
#define ZOREXP_STATUS_BAD_INPUT (-2)

/* Call types (the last argument of a dense routine, the first of a sparse one). */
#define ZOREXP_CALL_VALUES 0       /* outputs only */
#define ZOREXP_CALL_PREPARE 1      /* set-up call before a series of evaluations */
#define ZOREXP_CALL_INITIALISE 2   /* initialisation call */
#define ZOREXP_CALL_DERIVATIVES 4  /* outputs and derivatives */

/* Severities of services->report. */
#define ZOREXP_REPORT_NOTE 0     /* for the log, for example an extrapolation, said once per solve */
#define ZOREXP_REPORT_ERROR 1    /* why the routine failed; the host shows it with the declaration */

/* What services->solution_mode answers. */
#define ZOREXP_SOLUTION_STEADY_STATE 0
#define ZOREXP_SOLUTION_INITIALISATION 1
#define ZOREXP_SOLUTION_DYNAMIC 2

/* Revision of the services table; members are only ever added at its end. */
#define ZOREXP_HOST_SERVICES_VERSION 2

/* What the runtime offers a routine library. `list` is the value of the runtime-owned integer a
 * routine receives (argument 8 of a dense routine, 8 of a sparse one): a handle of the component
 * list of the model that calls, or 0 when the call has none. The strings returned stay valid
 * until the list is redefined; copy them to keep them longer. */
typedef struct zorexp_host_services {
    int version; /* ZOREXP_HOST_SERVICES_VERSION */
    /* Number of components of the list; 0 for an unknown handle. */
    int (*component_count)(int list);
    /* Id of component `index` (from 0) as the list names it; NULL when out of range. */
    const char* (*component_id)(int list, int index);
    /* A list option ("KBASE", "PROPERTY-METHOD", ...) as text; NULL when the list has no such
     * option. Option names compare without regard to case. */
    const char* (*list_option)(int list, const char* option);
    /* A message for the host: routine is the entry point's name. */
    void (*report)(int severity, const char* routine, const char* message);
    /* From version 2: what the simulator is solving now (ZOREXP_SOLUTION_...). */
    int (*solution_mode)(void);
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
