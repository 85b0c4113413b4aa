// SPDX-License-Identifier: MIT
/* zorpelx/cli/failure.cpp: formatted texts and failures. */
#include "failure.h"

#include <cstdarg>
#include <cstdio>
#include <new>
#include <stdexcept>

#include "escaped.h"

const std::vector<StatusRow> STATUS_ROWS = {
    {"0", "done; for verify: all that was claimed is so"},
    {"1", "the run failed, or something that verify was to check is not so"},
    {"2", "the command line is wrong"},
    {"3", "a file does not hold what it should; the message names file, line and column"},
    {"4", "no partition can be within the bounds, or none was found; what was found is "
          "delivered"},
    {"5", "a file cannot be opened, read or written, or the system refused a process"},
    {"6", "out of memory, or past --memory"},
    {"124", "the deadline passed; the best finished start, if any, was delivered"},
    {"130, 143", "interrupted or terminated; the best finished start, if any, was delivered"},
};

void fail(Status status, const char *format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::string text = formatted(format, arguments);
    va_end(arguments);
    throw Failure{status, std::move(text)};
}

Failure current_failure()
{
    try {
        throw;
    } catch (const Failure &failure) {
        return failure;
    } catch (const std::bad_alloc &) {
        return {STATUS_MEMORY, "out of memory"};
    } catch (const std::length_error &) {
        return {STATUS_MEMORY, "out of memory"};
    } catch (const std::exception &error) {
        return {STATUS_FAILED, error.what()};
    }
}

void tell(const std::string &text)
{
    fflush(stdout);
    fprintf(stderr, "zorpelx: %s\n", escaped(text, "\n").c_str());
}
