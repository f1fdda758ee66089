/* measure RUNS {[NAME=VALUE]... [NAME=<FILE] PROGRAM}...
 *
 * Runs the programs in turn, RUNS rounds, each with the variables before it set
 * from there on, in each round to the next line of the one FILE, and reads what it prints through a pipe until its end.  Prints
 * a line for each: the medians of its time and its processor time, both in
 * microseconds, of its page faults and of its peak memory in KiB.  Ends with 1
 * when a run fails or prints nothing.
 *
 * The rounds alternate so that a busy machine slows all programs alike.  This is
 * C because a child's peak memory is never below that of the process which
 * started it.
 */

#define _GNU_SOURCE

#include <fcntl.h>
#include <spawn.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

extern char** environ;

enum { kTime, kProcessorTime, kFaults, kMemory, kMeasures, kMostPrograms = 8 };

static double Now(void) {
  struct timespec now;
  clock_gettime(CLOCK_MONOTONIC, &now);
  return (double)now.tv_sec * 1e6 + (double)now.tv_nsec / 1e3;
}

static double Microseconds(struct timeval time) {
  return (double)time.tv_sec * 1e6 + (double)time.tv_usec;
}

static size_t ReadAll(int descriptor) {
  char buffer[65536];
  size_t total = 0;
  ssize_t count;
  while ((count = read(descriptor, buffer, sizeof buffer)) > 0) {
    total += (size_t)count;
  }
  return total;
}

static int RunOnce(char* program, double measures[kMeasures]) {
  int ends[2];
  posix_spawn_file_actions_t actions;
  if (pipe2(ends, O_CLOEXEC) != 0 || posix_spawn_file_actions_init(&actions) != 0) {
    return 0;
  }
  posix_spawn_file_actions_addopen(&actions, 0, "/dev/null", O_RDONLY, 0);
  posix_spawn_file_actions_adddup2(&actions, ends[1], 1);
  char* arguments[] = {program, NULL};
  pid_t child;
  const double start = Now();
  const int failure = posix_spawn(&child, program, &actions, NULL, arguments, environ);
  posix_spawn_file_actions_destroy(&actions);
  close(ends[1]);
  const size_t printed = failure == 0 ? ReadAll(ends[0]) : 0;
  close(ends[0]);
  int status = -1;
  struct rusage usage;
  if (failure != 0 || wait4(child, &status, 0, &usage) != child) {
    return 0;
  }
  measures[kTime] = Now() - start;
  measures[kProcessorTime] = Microseconds(usage.ru_utime) + Microseconds(usage.ru_stime);
  measures[kFaults] = (double)(usage.ru_minflt + usage.ru_majflt);
  measures[kMemory] = (double)usage.ru_maxrss;
  return printed > 0 && WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

static int Compare(const void* left, const void* right) {
  const double difference = *(const double*)left - *(const double*)right;
  return (difference > 0) - (difference < 0);
}

static double Median(double* values, size_t count) {
  qsort(values, count, sizeof *values, Compare);
  return values[count / 2];
}

/* Sets the variable of "NAME=VALUE", or of "NAME=<FILE" to the next line of the one file. */
static int SetVariable(char* argument) {
  static FILE* file;
  static char line[4096];
  char* const value = strchr(argument, '=') + 1;
  if (*value != '<') {
    return putenv(argument) == 0;
  }
  file = file != NULL ? file : fopen(value + 1, "re");
  if (file == NULL || fgets(line, sizeof line, file) == NULL) {
    fprintf(stderr, "measure: %s has no more lines\n", value + 1);
    return 0;
  }
  line[strcspn(line, "\n")] = '\0';
  value[-1] = '\0';
  const int is_set = setenv(argument, line, 1) == 0;
  value[-1] = '=';
  return is_set;
}

/* Runs every program once; the programs' results stand one after the other. */
static int Round(int count, char** arguments, double* samples, size_t runs, size_t run) {
  size_t program = 0;
  for (int i = 0; i < count; ++i) {
    if (strchr(arguments[i], '=') != NULL) {
      if (!SetVariable(arguments[i])) {
        return 0;
      }
      continue;
    }
    double measures[kMeasures];
    if (!RunOnce(arguments[i], measures)) {
      fprintf(stderr, "measure: %s failed or printed nothing\n", arguments[i]);
      return 0;
    }
    for (size_t measure = 0; measure < kMeasures; ++measure) {
      samples[(program * kMeasures + measure) * runs + run] = measures[measure];
    }
    ++program;
  }
  return 1;
}

int main(int argc, char** argv) {
  const size_t runs = argc > 2 ? strtoul(argv[1], NULL, 10) : 0;
  size_t programs = 0;
  for (int i = 2; i < argc; ++i) {
    programs += strchr(argv[i], '=') == NULL;
  }
  if (runs == 0 || runs > 100000 || programs == 0 || programs > kMostPrograms) {
    fprintf(stderr, "usage: %s RUNS {[NAME=VALUE]... PROGRAM}...\n", argv[0]);
    return 2;
  }
  double* samples = calloc(programs * kMeasures * runs, sizeof *samples);
  if (samples == NULL) {
    return 1;
  }
  for (size_t run = 0; run < runs; ++run) {
    if (!Round(argc - 2, argv + 2, samples, runs, run)) {
      free(samples);
      return 1;
    }
  }
  for (size_t program = 0; program < programs; ++program) {
    for (size_t measure = 0; measure < kMeasures; ++measure) {
      double* values = samples + (program * kMeasures + measure) * runs;
      printf("%.0f%c", Median(values, runs), measure + 1 < kMeasures ? ' ' : '\n');
    }
  }
  free(samples);
  return 0;
}
