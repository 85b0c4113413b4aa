/* SPDX-License-Identifier: MIT */
/* mpi/leak_check.h: under the address sanitizer, leaks are looked for while MPI is still there.
 *
 * MPI_Finalize() unloads the plugins of Open MPI: what they have not freed would be reported with
 * no name of a library to suppress it by (tests/leaks_of_mpi.txt), and what they had in reach would
 * be lost. Elsewhere this does nothing.
 */
#ifndef ZORPEL_MPI_LEAK_CHECK_H
#define ZORPEL_MPI_LEAK_CHECK_H

#if defined(__SANITIZE_ADDRESS__)
#define ZORPEL_LEAKS_ARE_LOOKED_FOR 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZORPEL_LEAKS_ARE_LOOKED_FOR 1
#endif
#endif

#ifdef ZORPEL_LEAKS_ARE_LOOKED_FOR
#include <sanitizer/lsan_interface.h>

/* Ends the process with a report if there are any; the check at its end is left out. */
inline void check_leaks()
{
    __lsan_do_leak_check();
}
#else
inline void check_leaks() {}
#endif

#endif
