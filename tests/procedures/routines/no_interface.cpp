// A routine library that does not say which routine interface it offers: the runtime refuses it.
extern "C" __attribute__((visibility("default"))) void ZXT_square(double*, int*, double*, int*, int*, int*, int* status, int*,
                                                                  double*, int*, double*, int*, int*, int*) {
    *status = 1;
}
