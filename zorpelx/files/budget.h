/* SPDX-License-Identifier: MIT */
/* zorpelx/files/budget.h: the memory and the time that reading may take.
 *
 * Everything whose size a file decides is charged before it is taken, from the first byte on: the
 * bytes read, what they expand to, and the arrays made of them.
 */
#ifndef ZORPELX_FILES_BUDGET_H
#define ZORPELX_FILES_BUDGET_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

/*   B1  used <= most */
struct Budget {
    std::string name; // of the file, for messages
    size_t most;      // bytes that may be held at once
    size_t used;
    bool capped;                // the caller chose most; otherwise it is the machine's memory
    double deadline;            // on the clock of budget_clock(), in seconds; 0: none
    const volatile int *cancel; // reading ends soon after it is not 0; or null
};

/* Seconds on a clock that only goes forward. */
double budget_clock();

/*   memory   most bytes held at once; 0: as many as the machine has
 *   timeout  seconds from began on; 0: no deadline */
Budget make_budget(const std::string &name, size_t memory, double timeout, double began);

/* Errors  ZORPELX_NO_MEMORY past the most */
void charge(Budget *budget, size_t bytes);
void give_back(Budget *budget, size_t bytes);

/* Errors  ZORPELX_TIMEOUT past the deadline, ZORPELX_CANCELLED once the flag is set */
void check_time(const Budget &budget);

/* Seconds until the deadline, at most `most`. */
double time_left(const Budget &budget, double most);

/* Doubles the room of a vector that is charged with its capacity. Meanwhile the old array and the
 * new one are both held. */
template <class T> __attribute__((noinline)) void grow_charged(Budget *budget, std::vector<T> *list)
{
    constexpr size_t FIRST_CAPACITY = 64;
    const size_t old = list->capacity(), larger = old < FIRST_CAPACITY ? FIRST_CAPACITY : 2 * old;
    charge(budget, larger * sizeof(T));
    list->reserve(larger);
    give_back(budget, old * sizeof(T));
}

/* Appends to such a vector. */
template <class T>
__attribute__((always_inline)) inline void push_charged(Budget *budget, std::vector<T> *list,
                                                        const T &value)
{
    if (list->size() == list->capacity()) grow_charged(budget, list);
    list->push_back(value);
}

/* Makes room for so many in all, where the number is known. */
template <class T> void reserve_charged(Budget *budget, std::vector<T> *list, size_t count)
{
    const size_t old = list->capacity();
    if (count <= old) return;
    charge(budget, count * sizeof(T));
    list->reserve(count);
    give_back(budget, old * sizeof(T));
}

#endif
