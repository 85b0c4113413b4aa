// SPDX-License-Identifier: MIT
/* fuzz/hook.cpp: a fatal exit that jumps back, files in memory, and tracked allocations. */
#include "hook.h"

#include <cerrno>
#include <csetjmp>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <sys/mman.h>
#include <unistd.h>
#include <unordered_set>

#include "core/errors.h"

constexpr size_t MOST_BYTES = size_t{1} << 26; // of one allocation

static bool guarded = false;
static jmp_buf back;
static char message[1024];

/* Both never shrink, so that a jump leaves them whole. */
static std::unordered_set<void *> &live_blocks()
{
    static auto *const blocks = new std::unordered_set<void *>;
    return *blocks;
}

static std::unordered_set<FILE *> &open_files()
{
    static auto *const files = new std::unordered_set<FILE *>;
    return *files;
}

void fuzz_finding(const char *what)
{
    fprintf(stderr, "finding: %s\n", what);
    abort();
}

/* Linkers that wrap what shared libraries call too must find the replacements. */
#pragma GCC visibility push(default)
extern "C" {
void *__wrap_malloc(size_t size);
void __wrap_free(void *block);
[[noreturn]] void __wrap_exit(int status);
int __wrap_fclose(FILE *file);
}
#pragma GCC visibility pop

/* ---- allocation ---------------------------------------------------------------------------- */

extern "C" void *__real_malloc(size_t size);
extern "C" void __real_free(void *block);
extern "C" int __real_fclose(FILE *file);

extern "C" void *__wrap_malloc(size_t size)
{
    if (guarded && size > MOST_BYTES) {
        errno = ENOMEM;
        return nullptr;
    }
    void *const block = __real_malloc(size);
    if (guarded && block != nullptr) live_blocks().insert(block);
    return block;
}

extern "C" void __wrap_free(void *block)
{
    live_blocks().erase(block);
    __real_free(block);
}

static void free_leftovers()
{
    for (void *const block : live_blocks()) __real_free(block);
    live_blocks().clear();
    for (FILE *const file : open_files()) __real_fclose(file);
    open_files().clear();
}

/* ---- the fatal exit ------------------------------------------------------------------------ */

[[noreturn]] static void jump_back()
{
    if (!guarded) fuzz_finding("a fatal exit outside a guarded run");
    longjmp(back, 1);
}

void errexit__(const char *format, ...)
{
    va_list args;
    va_start(args, format);
    const int length = vsnprintf(message, sizeof message, format, args);
    va_end(args);
    if (length <= 0) fuzz_finding("a fatal exit without a message");
    jump_back();
}

FILE *QXfopen__(const char *name, const char *mode, const char *text)
{
    FILE *const file = fopen(mode[0] == 'w' ? "/dev/null" : name, mode);
    if (file == nullptr) errexit__("%s: %s", text, strerror(errno));
    open_files().insert(file);
    return file;
}

void QXfclose__(FILE *file)
{
    open_files().erase(file);
    fclose(file);
}

extern "C" int __wrap_fclose(FILE *file)
{
    open_files().erase(file);
    return __real_fclose(file);
}

/* The program's own early end. */
extern "C" [[noreturn]] void __real_exit(int status);
extern "C" [[noreturn]] void __wrap_exit(int status)
{
    if (!guarded) __real_exit(status);
    snprintf(message, sizeof message, "exit %d", status);
    if (status != 0) fuzz_finding("a status that is not 0");
    jump_back();
}

const char *fuzz_message()
{
    return message;
}

bool fuzz_survives(void (*work)(void *argument), void *argument)
{
    message[0] = '\0';
    guarded = true;
    const bool survived = setjmp(back) == 0;
    if (survived) work(argument);
    guarded = false;
    if (!survived) free_leftovers();
    if (!live_blocks().empty()) fuzz_finding("memory kept after a run that came to its end");
    return survived;
}

/* ---- files and output ---------------------------------------------------------------------- */

const char *fuzz_file(int number, const uint8_t *bytes, size_t size)
{
    static int files[2] = {-1, -1};
    static char names[2][32];
    if (files[number] < 0) {
        files[number] = memfd_create("input", 0);
        if (files[number] < 0) abort();
        snprintf(names[number], sizeof names[number], "/proc/self/fd/%d", files[number]);
    }
    if (ftruncate(files[number], 0) != 0 ||
        pwrite(files[number], bytes, size, 0) != static_cast<ssize_t>(size))
        abort();
    return names[number];
}

/* Its files go with it, when the process ends in order. */
static char folder_name[] = "/dev/shm/fuzz-XXXXXX";

static void remove_folder()
{
    std::error_code ignored;
    std::filesystem::remove_all(folder_name, ignored);
}

const char *fuzz_folder()
{
    static const bool made = mkdtemp(folder_name) != nullptr && atexit(remove_folder) == 0;
    if (!made) abort();
    return folder_name;
}

void fuzz_silence()
{
    static const bool done = freopen("/dev/null", "w", stdout) != nullptr;
    if (!done) abort();
}
