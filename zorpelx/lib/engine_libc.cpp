/* zorpelx/lib/engine_libc.cpp: the C library as the engine inside libzorpelx sees it.
 *
 * The linker sends the engine's calls of rand(), srand() and exit() here. In a child of a program
 * with several threads the generator's lock may be held by a thread that does not exist there, and
 * exit() would run the caller's handlers and write what its streams have buffered. The numbers are
 * those of rand(): the same generator, with a state of its own.
 */
#include <cstdio>
#include <cstdlib>
#include <unistd.h>

static random_data generator;
static char state[128]; // the size that rand() uses, which decides the numbers

extern "C" {
void __wrap_srand(unsigned seed);
int __wrap_rand(void);
[[noreturn]] void __wrap_exit(int status);
}

void __wrap_srand(unsigned seed)
{
    generator = {};
    initstate_r(seed, state, sizeof state, &generator);
}

int __wrap_rand(void)
{
    if (generator.state == nullptr) __wrap_srand(1);
    int value;
    random_r(&generator, &value);
    return value;
}

void __wrap_exit(int status)
{
    fflush(stdout);
    fflush(stderr);
    _exit(status);
}
