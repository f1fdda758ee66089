/* Loaded before a program (LD_PRELOAD): makes one call of one function fail.
 *
 *   FAULT_CALL  malloc or dlopen
 *   FAULT_AT    which of its calls fails in a process, counted from 1
 *   FAULT_FILE  a file that is made when it has failed
 *
 * What is no system call cannot be made to fail from outside.  This is C, and makes
 * system calls itself, because everything else may allocate. */

#define _GNU_SOURCE

#include <dlfcn.h>
#include <errno.h>
#include <fcntl.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

/* The C library's own, which need not be looked up. */
extern void* __libc_malloc(size_t size);
extern void* __libc_calloc(size_t count, size_t size);
extern void* __libc_realloc(void* block, size_t size);

static const char* call;
static const char* file;
static long left;

__attribute__((constructor)) static void Read(void) {
  const char* const at = getenv("FAULT_AT");
  call = getenv("FAULT_CALL");
  file = getenv("FAULT_FILE");
  left = at != NULL ? strtol(at, NULL, 10) : 0;
}

static int Fails(const char* name) {
  if (call == NULL || strcmp(call, name) != 0 || left <= 0 || --left != 0) {
    return 0;
  }
  const int mark = open(file, O_WRONLY | O_CREAT | O_CLOEXEC, 0600);
  if (mark >= 0) {
    close(mark);
  }
  errno = ENOMEM;
  return 1;
}

void* malloc(size_t size) { return Fails("malloc") ? NULL : __libc_malloc(size); }

void* calloc(size_t count, size_t size) {
  return Fails("malloc") ? NULL : __libc_calloc(count, size);
}

void* realloc(void* block, size_t size) {
  return Fails("malloc") ? NULL : __libc_realloc(block, size);
}

void* dlopen(const char* name, int flags) {
  static void* (*next)(const char*, int);
  if (next == NULL) {
    *(void**)&next = dlsym(RTLD_NEXT, "dlopen");
  }
  /* So that dlerror has something to say, as after every failure. */
  return next(Fails("dlopen") ? "/nonexistent/library.so" : name, flags);
}
