// SPDX-License-Identifier: MIT
/* zorpelx/cli/machine.cpp: what kind of machine and program this is. */
#include "machine.h"

#include <algorithm>
#include <ctime>
#include <fstream>
#include <sys/utsname.h>
#include <thread>
#include <unistd.h>

#ifdef __clang__
static const char COMPILER[] = "clang " __clang_version__;
#else
static const char COMPILER[] = "g++ " __VERSION__;
#endif

/* What follows the colon of "model name : ...". */
static std::string processor_model()
{
    std::ifstream file("/proc/cpuinfo");
    for (std::string line; std::getline(file, line);) {
        const size_t colon = line.find(": ");
        if (line.rfind("model name", 0) == 0 && colon != std::string::npos)
            return line.substr(colon + 2);
    }
    return "";
}

static std::string without_end_blanks(std::string text)
{
    while (!text.empty() && text.back() == ' ') text.pop_back();
    return text;
}

Machine this_machine()
{
    utsname name = {};
    uname(&name);
    const long long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGESIZE);
    return {name.sysname,
            name.machine,
            without_end_blanks(processor_model()),
            std::max(1u, std::thread::hardware_concurrency()),
            std::max(0LL, pages) * size >> 20,
            without_end_blanks(COMPILER)};
}

std::string time_now()
{
    const time_t now = time(nullptr);
    tm parts = {};
    gmtime_r(&now, &parts);
    char text[32];
    strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts);
    return text;
}
