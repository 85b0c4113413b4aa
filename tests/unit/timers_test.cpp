// SPDX-License-Identifier: MIT
/* tests/unit/timers_test.cpp: the CPU clock and the timers of a run. */
#include "core/timers.h"

#include <ctime>

#include <gtest/gtest.h>

#include <thread>

#include "partition/halves.h"
#include "support.h"

static PartCtrl numbered_timers()
{
    PartCtrl ctrl = {};
    for (int t = 0; t < NTIMERS; t++) ctrl.timers[t] = t + 0.125;
    return ctrl;
}

static const char HEAD[] =
    "\nTiming Information ---------------------------------------------------------"
    "\n Multilevel: \t\t   6.125"
    "\n     Coarsening: \t\t   1.125"
    "\n     Initial Partition: \t   7.125"
    "\n     Uncoarsening: \t\t  10.125"
    "\n             Aux1: \t\t  11.125"
    "\n             Aux2: \t\t  12.125"
    "\n             Aux3: \t\t  13.125"
    "\n             Aux4: \t\t  14.125";
static const char BREAKDOWN[] = "\n        Refinement: \t\t\t   2.125"
                                "\n            Initialize: \t\t\t   3.125"
                                "\n            Iterate: \t\t\t\t   4.125"
                                "\n            Wrap Up: \t\t\t\t   5.125";
static const char TAIL[] =
    "\n Total: \t\t   0.125"
    "\n----------------------------------------------------------------------------";

TEST(Timers, the_report_shows_each_timer_under_its_name)
{
    const PartCtrl ctrl = numbered_timers();
    EXPECT_EQ(capture_stdout([&] { PrintTimers__(&ctrl, 0); }), std::string(HEAD) + TAIL);
}

TEST(Timers, the_full_report_adds_the_breakdown_of_refinement)
{
    const PartCtrl ctrl = numbered_timers();
    EXPECT_EQ(capture_stdout([&] { PrintTimers__(&ctrl, 1); }),
              std::string(HEAD) + BREAKDOWN + TAIL);
}

TEST(Timers, starting_clears_them_all)
{
    PartCtrl ctrl = numbered_timers();
    InitTimers__(&ctrl);
    for (double timer : ctrl.timers) EXPECT_EQ(timer, 0.0);
}

TEST(Timers, nothing_is_charged_without_the_timing_bit)
{
    PartCtrl ctrl = numbered_timers();
    ctrl.dbglvl = ~DBG_TIME;
    start_timer(&ctrl, TIME_TOTAL);
    stop_timer(&ctrl, TIME_AUX3);
    for (int t = 0; t < NTIMERS; t++) EXPECT_EQ(ctrl.timers[t], t + 0.125);
}

TEST(Timers, with_the_timing_bit_the_clock_is_taken_off_at_the_start_and_added_at_the_end)
{
    PartCtrl ctrl = {};
    ctrl.dbglvl = DBG_TIME;
    const double before = seconds__();
    start_timer(&ctrl, TIME_AUX1);
    EXPECT_LE(ctrl.timers[TIME_AUX1], -before);
    stop_timer(&ctrl, TIME_AUX1);
    EXPECT_GE(ctrl.timers[TIME_AUX1], 0.0);
    EXPECT_LE(ctrl.timers[TIME_AUX1], seconds__() - before);
    EXPECT_EQ(ctrl.timers[TIME_AUX2], 0.0);
}

TEST(Timers, the_clock_is_the_processor_time_of_the_process)
{
    const double before = seconds__();
    const clock_t begin = clock();
    volatile unsigned work = 0;
    while (clock() - begin < CLOCKS_PER_SEC / 10) work = work + 1;
    const double worked = static_cast<double>(clock() - begin) / CLOCKS_PER_SEC;
    EXPECT_NEAR(seconds__() - before, worked, 0.03);
}

/* Charges a timer while another thread works for a while. */
static double charged(Timer timer, Crew *crew)
{
    PartCtrl ctrl = {};
    ctrl.dbglvl = DBG_TIME;
    ctrl.crew = crew;
    start_timer(&ctrl, timer);
    std::thread other([] {
        const double end = seconds__() + 0.2;
        volatile unsigned work = 0;
        while (seconds__() < end) work = work + 1;
    });
    other.join();
    stop_timer(&ctrl, timer);
    return ctrl.timers[timer];
}

TEST(Timers, with_threads_a_stage_is_charged_its_own_thread_and_the_whole_all_of_them)
{
    Crew crew = {};
    EXPECT_GE(charged(TIME_COARSENING, nullptr), 0.15);
    EXPECT_LT(charged(TIME_COARSENING, &crew), 0.1);
    EXPECT_GE(charged(TIME_MULTILEVEL, &crew), 0.15);
    EXPECT_GE(charged(TIME_TOTAL, &crew), 0.15);
}
