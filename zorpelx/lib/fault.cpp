// SPDX-License-Identifier: MIT
/* zorpelx/lib/fault.cpp: sentences. */
#include "fault.h"

#include <cstdarg>
#include <cstdio>
#include <cstring>

Fault fault(int status, const char *format, ...)
{
    char sentence[ZORPELX_MESSAGE_SIZE];
    va_list args;
    va_start(args, format);
    vsnprintf(sentence, sizeof sentence, format, args);
    va_end(args);
    return {status, sentence};
}

void put_message(char *message, const std::string &sentence)
{
    if (message == nullptr) return;
    const size_t length = sentence.copy(message, ZORPELX_MESSAGE_SIZE - 1);
    message[length] = '\0';
}
