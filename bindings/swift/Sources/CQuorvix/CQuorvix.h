// The installed C API; the include path comes from pkg-config (quorvix.pc).
#include <quorvix/c/quorvix.h>
