// SPDX-License-Identifier: MIT
/* zorpelx/lib/leaving.cpp: ways out of a call other than its return. */
#include "leaving.h"

/* The list is older than pthread_cleanup_push() is a macro of two halves of a block; its routines
 * are still what the C library exports for it. */
extern "C" {
void _pthread_cleanup_push(_pthread_cleanup_buffer *buffer, void (*routine)(void *),
                           void *argument);
void _pthread_cleanup_pop(_pthread_cleanup_buffer *buffer, int execute);
}

JumpGuard::JumpGuard(void (*handler)(void *), void *argument)
{
    _pthread_cleanup_push(&frame, handler, argument);
}

JumpGuard::~JumpGuard()
{
    _pthread_cleanup_pop(&frame, 0);
}
