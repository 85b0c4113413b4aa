// SPDX-License-Identifier: MIT
/* zorpelx/cli/output.cpp: what a command writes, with failures for faults. */
#include "output.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "failure.h"

static void throw_fault(const OutputFault &fault)
{
    if (fault.status != 0) throw Failure{static_cast<Status>(fault.status), fault.text};
}

static void release(Outputs *outputs)
{
    close_outputs(outputs);
    delete outputs;
}

Writer open_writer(const std::vector<std::string> &names, const std::vector<std::string> &inputs)
{
    Writer writer(new Outputs, release);
    throw_fault(open_outputs(names, inputs, writer.get()));
    throw_fault(check_streams(*writer, inputs));
    return writer;
}

void write_together(const Writer &writer, const std::vector<std::string_view> &contents)
{
    flush_output();
    throw_fault(write_outputs(writer.get(), contents));
}

bool standard_output_taken(const Writer &writer)
{
    return std::any_of(writer->list.begin(), writer->list.end(), takes_standard_output);
}

void flush_output()
{
    if (fflush(stdout) != 0 || ferror(stdout))
        fail(STATUS_IO, "cannot write standard output: %s", strerror(errno));
}
