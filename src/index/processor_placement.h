// Starting a helper thread on another processor than the one of the thread that made it.
#pragma once

#include <thread>

#if defined(__linux__)
#include <pthread.h>
#include <sched.h>
#endif

// A new thread tends to start on its creator's processor and to move only
// when the scheduler next balances its load, which can be milliseconds
// later: a short job shared with a helper then runs on one processor, the
// two halves in turn. Keeping the helper off the creator's processor from
// the start, where the process may use another, lets both run at once. The
// creator keeps all its processors; on a single processor nothing changes.
inline void placeAwayFromCaller(std::thread &helper) {
#if defined(__linux__) && defined(CPU_COUNT)
  cpu_set_t allowed;
  CPU_ZERO(&allowed);
  if (sched_getaffinity(0, sizeof allowed, &allowed) != 0 || CPU_COUNT(&allowed) < 2) return;
  const int current = sched_getcpu();
  if (current < 0 || current >= CPU_SETSIZE || !CPU_ISSET(current, &allowed)) return;
  CPU_CLR(current, &allowed);
  // A refusal leaves the helper where the scheduler put it.
  (void)pthread_setaffinity_np(helper.native_handle(), sizeof allowed, &allowed);
#else
  (void)helper;
#endif
}
