// A library that is no handler library.

extern "C" __attribute__((visibility("default"))) int Unrelated();

int Unrelated() { return 0; }
