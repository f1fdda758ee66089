#pragma once

#include <sys/types.h>

// Processes and services.

// Forks.  0 in the child, the child's id in the parent, negative with `errno`
// set on failure.  The standard streams are flushed before, so that nothing is
// written twice.  Descriptors 0, 1 and 2 of the child are /dev/null: a web
// server waits until every holder of its pipes is gone.  No lock may be held
// across the call.
pid_t QLIBCProcFork();

inline constexpr unsigned int kNetServiceHttpd = 0x80000000U;
inline constexpr int kNetServiceRestart = 3;

// Performs `action` on the network service `service`; with the two values above
// it restarts the web server.  0 on success, else negative.
int QLIBNetService(unsigned int service, int action, int flags);
