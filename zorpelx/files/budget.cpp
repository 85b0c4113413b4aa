// SPDX-License-Identifier: MIT
/* zorpelx/files/budget.cpp: the memory and the time that reading may take. */
#include "budget.h"

#include <algorithm>
#include <cassert>
#include <chrono>
#include <unistd.h>

#include "fileerror.h"
#include "zorpelx.h"

static size_t machine_memory()
{
    const long pages = sysconf(_SC_PHYS_PAGES), size = sysconf(_SC_PAGESIZE);
    if (pages <= 0 || size <= 0) return SIZE_MAX;
    return static_cast<size_t>(pages) * static_cast<size_t>(size);
}

double budget_clock()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

Budget make_budget(const std::string &name, size_t memory, double timeout, double began)
{
    return {name,       memory > 0 ? memory : machine_memory(), 0,
            memory > 0, timeout > 0 ? began + timeout : 0,      nullptr};
}

void charge(Budget *budget, size_t bytes)
{
    if (bytes > budget->most - budget->used)
        file_error(ZORPELX_NO_MEMORY, "%s: reading it takes more than %s of %zu bytes",
                   budget->name.c_str(), budget->capped ? "the cap" : "the machine's memory",
                   budget->most);
    budget->used += bytes;
}

void give_back(Budget *budget, size_t bytes)
{
    assert(bytes <= budget->used);
    budget->used -= bytes;
}

void check_time(const Budget &budget)
{
    if (budget.cancel != nullptr && __atomic_load_n(budget.cancel, __ATOMIC_RELAXED) != 0)
        file_error(ZORPELX_CANCELLED, "%s: reading it was cancelled", budget.name.c_str());
    if (budget.deadline > 0 && budget_clock() >= budget.deadline)
        file_error(ZORPELX_TIMEOUT, "%s: the deadline came while it was being read",
                   budget.name.c_str());
}

double time_left(const Budget &budget, double most)
{
    if (budget.deadline == 0) return most;
    return std::clamp(budget.deadline - budget_clock(), 0.0, most);
}
