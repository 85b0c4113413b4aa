// SPDX-License-Identifier: MIT
/* zorpelx/output/export.cpp: outputs for other languages; nothing is thrown past this file. */
#include <algorithm>
#include <cstring>
#include <new>
#include <stdexcept>

#include "outputs.h"
#include "zorpelx_output.h"

static_assert(OUTPUT_REFUSED == ZORPELX_BAD_OPTION && OUTPUT_FAILED == ZORPELX_SYSTEM);

struct zorpelx_outputs {
    Outputs outputs;
};

static int told(const OutputFault &fault, char *message)
{
    if (message != nullptr) {
        const size_t length =
            std::min(fault.text.size(), static_cast<size_t>(ZORPELX_MESSAGE_SIZE) - 1);
        memcpy(message, fault.text.data(), length);
        message[length] = '\0';
    }
    return fault.status;
}

template <typename Work> static int guarded(char *message, Work work)
{
    try {
        return told(work(), message);
    } catch (const std::bad_alloc &) {
        return told({ZORPELX_NO_MEMORY, "out of memory"}, message);
    } catch (const std::length_error &) {
        return told({ZORPELX_NO_MEMORY, "out of memory"}, message);
    }
}

static OutputFault fault_of_list(const char *what, const char *const *list, int count)
{
    if (count < 0)
        return {ZORPELX_BAD_OPTION, std::string("the number of ") + what + " is negative"};
    if (count > 0 && list == nullptr) return {ZORPELX_BAD_OPTION, std::string(what) + " is null"};
    for (int i = 0; i < count; i++)
        if (list[i] == nullptr || list[i][0] == '\0')
            return {ZORPELX_BAD_OPTION, std::string(what) + " has an empty name"};
    return {};
}

static OutputFault open_lists(zorpelx_outputs **outputs, const char *const *names, int count,
                              const char *const *inputs, int ninputs)
{
    if (OutputFault fault = fault_of_list("names", names, count); fault.status != 0) return fault;
    if (OutputFault fault = fault_of_list("inputs", inputs, ninputs); fault.status != 0)
        return fault;
    zorpelx_outputs *const made = new zorpelx_outputs;
    OutputFault fault;
    try {
        fault = open_outputs(std::vector<std::string>(names, names + count),
                             std::vector<std::string>(inputs, inputs + ninputs), &made->outputs);
    } catch (...) {
        zorpelx_outputs_close(made);
        throw;
    }
    if (fault.status == 0)
        *outputs = made;
    else
        zorpelx_outputs_close(made);
    return fault;
}

int zorpelx_outputs_open(zorpelx_outputs **outputs, const char *const *names, int count,
                         const char *const *inputs, int ninputs, char *message)
{
    if (outputs == nullptr) return told({ZORPELX_BAD_OPTION, "outputs is null"}, message);
    *outputs = nullptr;
    return guarded(message, [&] { return open_lists(outputs, names, count, inputs, ninputs); });
}

static OutputFault write_arrays(zorpelx_outputs *outputs, const void *const *bytes,
                                const size_t *sizes)
{
    if (outputs == nullptr || bytes == nullptr || sizes == nullptr)
        return {ZORPELX_BAD_OPTION, "outputs, bytes or sizes is null"};
    std::vector<std::string_view> contents;
    for (size_t i = 0; i < outputs->outputs.list.size(); i++)
        contents.push_back(bytes[i] == nullptr
                               ? std::string_view()
                               : std::string_view(static_cast<const char *>(bytes[i]), sizes[i]));
    return write_outputs(&outputs->outputs, contents);
}

int zorpelx_outputs_write(zorpelx_outputs *outputs, const void *const *bytes, const size_t *sizes,
                          char *message)
{
    return guarded(message, [&] { return write_arrays(outputs, bytes, sizes); });
}

void zorpelx_outputs_close(zorpelx_outputs *outputs)
{
    if (outputs == nullptr) return;
    close_outputs(&outputs->outputs);
    delete outputs;
}
