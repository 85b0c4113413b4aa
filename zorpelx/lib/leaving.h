/* SPDX-License-Identifier: MIT */
/* zorpelx/lib/leaving.h: ways out of a call other than its return.
 *
 * A callback of the caller's may leave by a C++ exception, by the end of its thread, or by
 * longjmp(). The first two unwind the stack, so destructors see them. A jump does not; but the C
 * library keeps a list of the frames that want to be told of one, and runs their handlers before it
 * jumps.
 */
#ifndef ZORPELX_LIB_LEAVING_H
#define ZORPELX_LIB_LEAVING_H

#include <exception>
#include <pthread.h>

/* What a callback threw, on its way through code that catches its own exceptions. */
struct LeftByException {
    std::exception_ptr thrown;
};

/* While this stands on the stack, a jump over it runs handler(argument) first. */
class JumpGuard
{
  public:
    JumpGuard(void (*handler)(void *), void *argument);
    ~JumpGuard();
    JumpGuard(const JumpGuard &) = delete;
    JumpGuard &operator=(const JumpGuard &) = delete;

  private:
    [[maybe_unused]] _pthread_cleanup_buffer frame; // its address is what tells which jumps pass it
};

#endif
